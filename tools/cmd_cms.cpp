// korvex cms sign / verify: CMS SignedData (RFC 5652) with GOST R 34.10-2001
// and GOST R 34.10-2012.
#include <cstdio>
#include <optional>
#include <ctime>

#include "cert_info.h"
#include "cli.h"
#include "cms_ops.h"
#include "commands.h"
#include "containers.h"

namespace {

using cli::Bytes;
using cli::Error;

int sign_command(int argc, char** argv, int first) {
    cli::Args a = cli::parse(argc, argv, first, {"--key", "--cert", "--attr", "--unsigned-attr", "-o", "--pass", "--pass-file", "--curve"},
                             {"--detached", "--no-cert", "--pem"});
    if (a.pos.size() != 1) throw Error("name one file to sign", 2);
    cli::Cert cert = cli::read_cert(a.need("--cert"));
    cli::KeyPair k = cli::load_private_key(a.need("--key"), a);
    if (k.d.empty()) throw Error("--key holds no private key", 2);
    cli::CmsSignRequest req;
    req.content_path = a.pos[0];
    req.attrs = a.all("--attr");
    req.uattrs = a.all("--unsigned-attr");
    req.detached = a.has("--detached");
    req.include_cert = !a.has("--no-cert");
    cli::seed_generator();
    Bytes msg = cli::cms_sign(k.d, k.curve.sel, cert, req);
    if (a.has("--pem")) cli::write_file(a.get("-o", "-"), cli::pem_encode("CMS", msg), {a.pos[0]});
    else cli::write_file(a.get("-o", "-"), msg, {a.pos[0]});
    return 0;
}

int verify_command(int argc, char** argv, int first) {
    cli::Args a = cli::parse(argc, argv, first, {"--content", "--cert", "--CAfile"}, {});
    if (a.pos.size() != 1) throw Error("name one message", 2);
    std::string text = cli::read_text(a.pos[0]);
    Bytes msg = text.find("-----BEGIN") != std::string::npos
                    ? cli::pem_decode(text, text.find("BEGIN PKCS7") != std::string::npos ? "PKCS7" : "CMS")
                    : Bytes(text.begin(), text.end());
    std::optional<cli::Cert> cert;
    if (a.has("--cert")) cert = cli::read_cert(a.get("--cert"));
    std::vector<cli::Cert> anchors;
    if (a.has("--CAfile")) anchors = cli::read_cert_bundle(a.get("--CAfile"));
    std::string content = a.get("--content");
    cli::CmsCheck c = cli::cms_verify(msg, cert ? &*cert : nullptr, a.has("--content") ? &content : nullptr,
                                      a.has("--CAfile") ? &anchors : nullptr, std::time(nullptr));
    std::printf("signer: %s\n", c.signer.c_str());
    if (!c.digest_ok) std::printf("messageDigest: does not match the content\n");
    std::printf("signature: %s\n", c.sig_ok && c.digest_ok ? "valid" : "INVALID");
    if (!c.cert_time.empty()) std::printf("certificate: INVALID, %s\n", c.cert_time.c_str());
    if (!c.chain_error.empty()) std::printf("signer: NOT verified: %s\n", c.chain_error.c_str());
    else if (c.anchored) std::printf("signer: verified up to %s\n", c.chain_text.c_str());
    else std::printf("signer: not verified (no --CAfile given)\n");
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
            "       korvex cms verify [--content FILE] [--cert CERT] [--CAfile CERTS] MESSAGE\n\n"
            "sign makes a CMS SignedData message (DER, or PEM with --pem) over FILE;\n"
            "the certificate's key decides the algorithm: GOST R 34.10-2001 with\n"
            "GOST R 34.11-94, or GOST R 34.10-2012 with GOST R 34.11-2012 (256 or 512\n"
            "bits; signed attributes contentType, messageDigest and signingTime). The\n"
            "key must be the certificate's. --attr adds a signed attribute: OID, a\n"
            "colon, and the Base64 of the DER attribute value.\n"
            "verify prints the signer and checks the signature, the messageDigest\n"
            "attribute against the content and the signer certificate's validity\n"
            "period; with --CAfile, the certificate chain up to one of its\n"
            "certificates. Exit 0 when all hold, 1 when one does not, 4 when the\n"
            "message is unreadable.\n");
        return sub.empty() ? 2 : 0;
    }
    if (sub == "sign") return sign_command(argc, argv, first + 1);
    if (sub == "verify") return verify_command(argc, argv, first + 1);
    throw Error("unknown cms command '" + sub + "' (sign, verify)", 2);
}

}  // namespace cmd
