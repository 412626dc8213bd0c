// korvex cms sign / verify: CMS SignedData (RFC 5652) with GOST R 34.11-94 and
// GOST R 34.10-2001.
#include <algorithm>
#include <cstdio>

#include "CMS.h"
#include "GOST_34_11_94.h"
#include "certs.h"
#include "cli.h"
#include "commands.h"
#include "containers.h"
#include "cms_ops.h"
#include "x_509.h"

namespace {

using cli::Bytes;
using cli::Error;

int sign_command(int argc, char** argv, int first) {
    cli::Args a = cli::parse(argc, argv, first, {"--key", "--cert", "--attr", "--unsigned-attr", "-o", "--pass", "--pass-file", "--curve"},
                             {"--detached", "--no-cert", "--pem"});
    if (a.pos.size() != 1) throw Error("name one file to sign");
    Bytes cert = cli::load_cert(a.need("--cert"));
    cli::KeyPair k = cli::load_private_key(a.need("--key"), a);
    Bytes content = cli::read_file(a.pos[0]);
    std::string attrs, uattrs;
    for (auto& s : a.all("--attr")) attrs += (attrs.empty() ? "" : "&") + s;
    for (auto& s : a.all("--unsigned-attr")) uattrs += (uattrs.empty() ? "" : "&") + s;
    cli::seed_generator();
    Bytes msg = cli::cms_sign(content, k, cert, attrs, uattrs, a.has("--detached"), !a.has("--no-cert"));
    if (a.has("--pem")) cli::write_file(a.get("-o", "-"), cli::pem_encode("CMS", msg), {a.pos[0]});
    else cli::write_file(a.get("-o", "-"), msg, {a.pos[0]});
    return 0;
}

int verify_command(int argc, char** argv, int first) {
    cli::Args a = cli::parse(argc, argv, first, {"--content", "--cert"}, {});
    if (a.pos.size() != 1) throw Error("name one message");
    std::string text = cli::read_text(a.pos[0]);
    Bytes msg = text.find("-----BEGIN") != std::string::npos
                    ? cli::pem_decode(text, text.find("BEGIN PKCS7") != std::string::npos ? "PKCS7" : "CMS")
                    : Bytes(text.begin(), text.end());
    Bytes cert = a.has("--cert") ? cli::load_cert(a.get("--cert")) : Bytes();
    Bytes content = a.has("--content") ? cli::read_file(a.get("--content")) : Bytes();
    cli::CmsCheck c = cli::cms_verify(msg, a.has("--cert") ? &cert : nullptr, a.has("--content") ? &content : nullptr);
    std::printf("signer: %s\n", c.signer.c_str());
    if (!c.digest_ok) std::printf("messageDigest: does not match the content\n");
    std::printf("signature: %s\n", c.valid() ? "valid" : "INVALID");
    return c.valid() ? 0 : 1;
}

}  // namespace

namespace cmd {

int cms(int argc, char** argv, int first) {
    std::string sub = first < argc ? argv[first] : "";
    if (cli::wants_sub_help(sub, argc, argv, first)) {
        std::printf(
            "usage: korvex cms sign --key SOURCE --cert CERT [--detached] [--no-cert]\n"
            "                       [--attr OID:BASE64]... [--unsigned-attr OID:BASE64]...\n"
            "                       [--pem] [-o OUT] FILE\n"
            "       korvex cms verify [--content FILE] [--cert CERT] MESSAGE\n\n"
            "sign makes a CMS SignedData message (DER, or PEM with --pem) over FILE with\n"
            "GOST R 34.11-94 and GOST R 34.10-2001 on the CryptoPro-A curve; the key\n"
            "comes from a korvex key file or a container (asks for its password).\n"
            "--attr adds a signed attribute: OID, a colon, and the Base64 of the DER\n"
            "attribute value. verify prints the signer and 'valid' (exit 0) or\n"
            "'INVALID' (exit 1); it checks the messageDigest attribute against the\n"
            "content as well as the signature. Exit 4 when the message is unreadable.\n");
        return sub.empty() ? 2 : 0;
    }
    if (sub == "sign") return sign_command(argc, argv, first + 1);
    if (sub == "verify") return verify_command(argc, argv, first + 1);
    throw Error("unknown cms command '" + sub + "' (sign, verify)");
}

}  // namespace cmd
