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
    if (a.pos.size() != 1) throw Error("name one PFX file", 2);
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
    if (!a.pos.empty()) throw Error("unexpected argument " + a.pos[0], 2);
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

}  // namespace

namespace cmd {

int pfx(int argc, char** argv, int first) {
    std::string sub = first < argc ? argv[first] : "";
    if (cli::wants_sub_help(sub, argc, argv, first)) {
        std::printf(
            "usage: korvex pfx read FILE [--pass SOURCE] [-o KEY.pem] [--cert-out CERTS.pem]\n"
            "       korvex pfx write --key KEY --cert CERT [--key-pass SOURCE] [--pass SOURCE]\n"
            "                        -o OUT.pfx\n\n"
            "read opens a PFX exported by CryptoPro CSP (GOST R 34.10-2001, 2012-256 or\n"
            "2012-512 keys) or a GOST PKCS#12 file made by OpenSSL's GOST engine, checks\n"
            "its MAC and the key against its certificate, and writes the key as PKCS#8\n"
            "PEM (openssl pkey -engine gost loads it; stdout unless -o) and the\n"
            "certificates as PEM, the key's own first.\n"
            "write makes standard GOST PKCS#12 of a key (PKCS#8, container, ...) and its\n"
            "certificate (PEM may hold the chain): PBES2 with PBKDF2-HMAC-Streebog-512,\n"
            "GOST 28147-89 CFB (parameter set Z, key meshing), Streebog-512 MAC; open it\n"
            "with openssl pkcs12 -engine gost.\n"
            "Passwords: --pass env:VAR | pass:TEXT | file:PATH, --pass-file FILE, or a prompt.\n"
            "Exit codes: 1 key and certificate differ, 3 wrong password, 4 damaged file,\n"
            "5 refused (unsupported curve, iteration count above 10,000,000).\n");
        return sub.empty() ? 2 : 0;
    }
    cli::Args a = cli::parse(argc, argv, first + 1,
                             {"-o", "--pass", "--pass-file", "--cert-out", "--key", "--cert", "--key-pass", "--curve"}, {});
    if (sub == "read") return read(a);
    if (sub == "write") return write(a);
    throw Error("unknown pfx command '" + sub + "' (read, write)", 2);
}

}  // namespace cmd
