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

int sign_run(const cli::Args& a) {
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

int verify_run(const cli::Args& a) {
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

const cli::Command cms_sign = {
    "sign", "sign a file as CMS SignedData", "FILE",
    "Makes a CMS SignedData message (DER, or PEM with --pem) over FILE; the\n"
    "certificate's key decides the algorithm: GOST R 34.10-2001 with\n"
    "GOST R 34.11-94, or GOST R 34.10-2012 with GOST R 34.11-2012 (256 or 512\n"
    "bits; signed attributes contentType, messageDigest and signingTime). The\n"
    "key must be the certificate's.\n",
    cli::with_password({
        {"--key", "SOURCE", "a PKCS#8 file, PFX, container or korvex key file", cli::kRequired},
        {"--cert", "CERT", "the signer's certificate", cli::kRequired},
        {"--curve", "C", "the key's curve when the source does not record it"},
        {"--detached", "", "leave the content out of the message"},
        {"--no-cert", "", "leave the certificate out of the message"},
        {"--attr", "OID:BASE64", "a signed attribute: OID, a colon, the Base64 of the DER value", cli::kRepeat},
        {"--unsigned-attr", "OID:BASE64", "an unsigned attribute, in the same form", cli::kRepeat},
        {"--pem", "", "write PEM instead of DER"},
        {"-o", "OUT", "the message file (default: stdout)"},
    }),
    sign_run};

const cli::Command cms_verify = {
    "verify", "check a CMS SignedData message", "MESSAGE",
    "Prints the signer and checks the signature, the messageDigest attribute\n"
    "against the content and the signer certificate's validity period; with\n"
    "--CAfile, the certificate chain up to one of its certificates. Exit 0 when\n"
    "all hold, 1 when one does not, 4 when the message is unreadable.\n",
    {{"--content", "FILE", "the content of a detached message"},
     {"--cert", "CERT", "the signer's certificate, when the message holds none"},
     {"--CAfile", "CERTS", "trust anchors (PEM): check the signer's chain up to one of them"}},
    verify_run};

}  // namespace

namespace cmd {
const cli::Command cms = {"cms", "CMS SignedData: sign, verify", "",
                          "CMS SignedData messages (RFC 5652) with GOST R 34.10-2001 and GOST R 34.10-2012.\n", {},
                          nullptr, {&cms_sign, &cms_verify}};
}  // namespace cmd
