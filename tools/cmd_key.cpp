// korvex key export / import: private keys to and from PKCS#8 PEM in the form
// OpenSSL's GOST engine writes and reads (tools/formats/pkcs8).
#include <cstdio>

#include "cli.h"
#include "commands.h"
#include "containers.h"

namespace {

using cli::Bytes;
using cli::Error;

int export_run(const cli::Args& a) {
    cli::KeyPair k = cli::load_private_key(a.pos[0], a);
    if (k.d.empty()) throw Error(a.pos[0] + ": holds no private key", 4);
    std::string pem = cli::private_pem(k);
    cli::write_file(a.get("-o", "-"), pem, {a.pos[0]}, 0600);
    cli::wipe(pem);
    return 0;
}

int import_run(const cli::Args& a) {
    cli::KeyPair k = cli::read_key(a.pos[0]);
    if (k.d.empty()) throw Error(a.pos[0] + ": holds no private key", 4);
    std::string out = a.need("-o");
    std::string fmt = a.get("--format", k.is2012() ? "pkcs15-2012" : "pkcs15");
    if (fmt == "pem") {
        std::string pem = cli::private_pem(k);
        cli::write_file(out, pem, {a.pos[0]}, 0600);
        cli::wipe(pem);
        return 0;
    }
    if (fmt != "pkcs12" && fmt != "pkcs15" && fmt != "pkcs15-2012") throw Error("unknown format '" + fmt + "'", 2);
    std::string pw = cli::password(a, "New container password: ", true);
    cli::seed_generator();
    Bytes c = fmt == "pkcs12" ? cli::pkcs12_make(k, pw) : cli::pkcs15_make(k, pw, fmt == "pkcs15-2012", 0);
    cli::wipe(pw);
    cli::write_file(out, c, {a.pos[0]}, 0600);
    std::fprintf(stderr, "stored a %s key (curve %s) in %s\n", formats::gen_name(k.gen), k.curve.name.c_str(),
                 out.c_str());
    return 0;
}

const cli::Command export_cmd = {
    "export", "write a key as PKCS#8 PEM", "SOURCE",
    "Writes the private key of a PKCS#8 file, PFX, PKCS#15 or PKCS#12\n"
    "container, CryptoPro container folder or korvex key file as an unencrypted\n"
    "PKCS#8 PEM that 'openssl pkey -engine gost' loads (mode 0600). Containers\n"
    "that do not record the curve need --curve or --cert; the curves the\n"
    "library lacks (TC26 256-bit A, 512-bit C) are refused (exit 5).\n",
    cli::with_password({{"-o", "KEY.pem", "the PEM file (default: stdout)"},
                        {"--curve", "C", "the key's curve when the source does not record it"},
                        {"--cert", "CERT", "the key's certificate (gives the curve, checks the key)"}}),
    export_run};

const cli::Command import_cmd = {
    "import", "store a PKCS#8 key in a new container", "KEY.pem",
    "Reads a PKCS#8 key (PEM or DER, from openssl genpkey -engine gost) into a\n"
    "new container, PKCS#15 by default (the 2012 generation for 2012 keys).\n",
    cli::with_password({{"-o", "OUT", "the container to write", cli::kRequired},
                        {"--format", "F", "pkcs15, pkcs15-2012, pkcs12 or pem"}}),
    import_run};

}  // namespace

namespace cmd {
const cli::Command key = {"key", "move keys between containers and PKCS#8 PEM (OpenSSL)", "", "", {}, nullptr,
                          {&export_cmd, &import_cmd}};
}  // namespace cmd
