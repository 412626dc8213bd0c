// korvex pfx read / write: PFX (PKCS#12) files with GOST keys, as CryptoPro
// CSP exports them and as OpenSSL's GOST engine writes them
// (tools/formats/pfx).
#include <cstdio>
#include <unistd.h>

#include <openssl/x509.h>

#include "cli.h"
#include "commands.h"
#include "containers.h"
#include "formats/pfx.h"

namespace {

using cli::Bytes;
using cli::Error;

std::string subject(const Bytes& cert) {
    const unsigned char* p = cert.data();
    X509* x = d2i_X509(nullptr, &p, static_cast<long>(cert.size()));
    char buf[512] = "?";
    if (x) X509_NAME_oneline(X509_get_subject_name(x), buf, sizeof buf);
    X509_free(x);
    return buf;
}

// All certificates of a PEM file (or one DER certificate).
std::vector<Bytes> load_certs(const std::string& path) {
    Bytes f = cli::read_file(path);
    std::vector<Bytes> certs = formats::pem_decode_all(f, "CERTIFICATE");
    if (certs.empty()) certs.push_back(f);
    return certs;
}

int read(const cli::Args& a) {
    Bytes f = cli::read_file(a.pos[0]);
    std::string pw = cli::password(a, "Password for " + a.pos[0] + ": ");
    formats::Pfx p = formats::pfx_read(f, pw);
    cli::wipe(pw);
    const formats::CurveInfo& c = p.key.curve();
    std::fprintf(stderr, "%s PFX: %s key on %s, matching %s\n", p.kind.c_str(), formats::gen_name(p.key.gen), c.title,
                 subject(p.certs[0]).c_str());
    std::string certs;
    for (const Bytes& cert : p.certs) certs += formats::pem_encode("CERTIFICATE", cert);
    formats::Secret pem = formats::pkcs8_pem(p.key);
    std::string key_out = a.get("-o", "-");
    cli::write_file(key_out, pem, {a.pos[0]}, 0600);
    if (a.has("--cert-out")) {
        try {
            cli::write_file(a.get("--cert-out"), certs, {a.pos[0], key_out});
        } catch (...) {
            if (key_out != "-") ::unlink(key_out.c_str());  // nothing is left behind on failure
            throw;
        }
    }
    return 0;
}

int write(const cli::Args& a) {
    // The key source's own password, when it is a container, is --key-pass.
    cli::Args ka;
    for (const char* o : {"--curve"})
        if (a.has(o)) ka.opts[o] = a.all(o);
    if (a.has("--key-pass")) ka.opts["--pass"] = a.all("--key-pass");
    std::string out = a.need("-o");
    std::vector<Bytes> certs = load_certs(a.need("--cert"));
    cli::KeyPair k = cli::load_private_key(a.need("--key"), ka);
    if (k.d.empty()) throw Error(a.get("--key") + ": holds no private key", 4);
    std::string pw = cli::password(a, "PFX password: ", true);
    Bytes pfx = formats::pfx_write(cli::to_pkcs8(k), certs, pw);
    cli::wipe(pw);
    cli::write_file(out, pfx, {a.get("--key"), a.get("--cert")}, 0600);
    return 0;
}

const cli::Command pfx_read = {
    "read", "write a PFX file's key and certificates as PEM", "FILE",
    "Opens a PFX exported by CryptoPro CSP (GOST R 34.10-2001, 2012-256 or\n"
    "2012-512 keys) or a GOST PKCS#12 file made by OpenSSL's GOST engine, checks\n"
    "its MAC and the key against its certificate, and writes the key as PKCS#8\n"
    "PEM (openssl pkey -engine gost loads it; stdout unless -o) and the\n"
    "certificates as PEM, the key's own first. Exit 4 when the key matches no\n"
    "certificate in the file; 5 for an unsupported curve or an iteration count\n"
    "above 10,000,000.\n",
    cli::with_password({{"-o", "KEY.pem", "the key file (default: stdout)"},
                        {"--cert-out", "CERTS.pem", "write the certificates here"}}),
    read};

const cli::Command pfx_write = {
    "write", "make a GOST PKCS#12 file of a key and its certificate", "",
    "Makes standard GOST PKCS#12 of a key (PKCS#8, container, ...) and its\n"
    "certificate (PEM may hold the chain): PBES2 with PBKDF2-HMAC-Streebog-512,\n"
    "GOST 28147-89 CFB (parameter set Z, key meshing), Streebog-512 MAC; open it\n"
    "with openssl pkcs12 -engine gost.\n",
    cli::with_password({{"--key", "KEY", "the key: PKCS#8 file, container or korvex key file", cli::kRequired},
                        {"--cert", "CERT", "its certificate (PEM may hold the chain)", cli::kRequired},
                        {"--key-pass", "SPEC", "the key container's password, as --pass takes it"},
                        {"--curve", "C", "the key's curve when the source does not record it"},
                        {"-o", "OUT.pfx", "the PFX file to write", cli::kRequired}}),
    write};

}  // namespace

namespace cmd {
const cli::Command pfx = {"pfx", "PFX files (CryptoPro CSP, GOST PKCS#12): read, write", "", "", {}, nullptr,
                          {&pfx_read, &pfx_write}};
}  // namespace cmd
