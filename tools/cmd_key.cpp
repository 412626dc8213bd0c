// korvex key export / import: private keys to and from PKCS#8 PEM in the form
// OpenSSL's GOST engine writes and reads (tools/formats/pkcs8).
#include <cstdio>

#include "cli.h"
#include "commands.h"
#include "containers.h"

namespace {

using cli::Bytes;
using cli::Error;

}  // namespace

namespace cmd {

int key(int argc, char** argv, int first) {
    std::string sub = first < argc ? argv[first] : "";
    if (cli::wants_sub_help(sub, argc, argv, first)) {
        std::printf(
            "usage: korvex key export SOURCE [-o KEY.pem] [--curve C] [--cert CERT] [--pass ...]\n"
            "       korvex key import KEY.pem -o OUT [--format pkcs15|pkcs15-2012|pkcs12|pem]\n"
            "                         [--pass ...]\n\n"
            "export writes the private key of a PKCS#8 file, PFX, PKCS#15 or PKCS#12\n"
            "container, CryptoPro container folder or korvex key file as an unencrypted\n"
            "PKCS#8 PEM that 'openssl pkey -engine gost' loads (mode 0600). import reads\n"
            "a PKCS#8 key (PEM or DER, from openssl genpkey -engine gost) into a new\n"
            "container, PKCS#15 by default (the 2012 generation for 2012 keys).\n"
            "Containers that do not record the curve need --curve or --cert; the\n"
            "curves the library lacks (TC26 256-bit A, 512-bit C) are refused (exit 5).\n"
            "Passwords: --pass env:VAR | pass:TEXT, --pass-file FILE, or a prompt.\n");
        return sub.empty() ? 2 : 0;
    }
    cli::Args a = cli::parse(argc, argv, first + 1, {"-o", "--curve", "--cert", "--pass", "--pass-file", "--format"}, {});
    if (a.pos.size() != 1) throw Error("name one source", 2);
    if (sub == "export") {
        cli::KeyPair k = cli::load_private_key(a.pos[0], a);
        if (k.d.empty()) throw Error(a.pos[0] + ": holds no private key", 4);
        std::string pem = cli::private_pem(k);
        cli::write_file(a.get("-o", "-"), pem, {a.pos[0]}, 0600);
        cli::wipe(pem);
        return 0;
    }
    if (sub == "import") {
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
    throw Error("unknown key command '" + sub + "' (export, import)", 2);
}

}  // namespace cmd
