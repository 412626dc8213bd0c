// korvex: the command-line face of libKorvex.
#include <cstdio>
#include <cstring>
#include <string>

#include "cli.h"
#include "commands.h"

namespace {

struct Entry {
    const char* name;
    cmd::Fn fn;
    const char* what;
};

const Entry kCommands[] = {
    {"hash", cmd::hash, "GOST R 34.11-94 / 34.11-2012 digests of files (gost12sum style)"},
    {"hmac", cmd::hmac, "HMAC with a GOST hash"},
    {"enc", cmd::enc, "encrypt with GOST 28147-89 (ecb, ctr, cfb, cbc)"},
    {"dec", cmd::dec, "decrypt with GOST 28147-89"},
    {"keygen", cmd::keygen, "make a GOST R 34.10 key pair"},
    {"sign", cmd::sign, "raw GOST R 34.10 signature of a file's hash"},
    {"verify", cmd::verify, "check a raw GOST R 34.10 signature"},
    {"x509", cmd::x509, "show a certificate, make a self-signed one"},
    {"cms", cmd::cms, "CMS SignedData: sign, verify"},
    {"pkcs15", cmd::pkcs15, "PKCS#15 key containers: create, read, update, info"},
    {"pkcs12", cmd::pkcs12, "PKCS#12 key containers: create, open, passwd"},
    {"cryptopro", cmd::cryptopro, "CryptoPro key containers: read, update"},
    {"key", cmd::key, "move keys between containers and PKCS#8 PEM (OpenSSL)"},
    {"demo", cmd::demo, "run the library end to end on built-in defaults"},
};

void usage(FILE* out) {
    std::fprintf(out, "usage: korvex COMMAND [OPTIONS] [ARGS]\n\ncommands:\n");
    for (const Entry& e : kCommands) std::fprintf(out, "  %-10s %s\n", e.name, e.what);
    std::fprintf(out,
                 "\n'korvex COMMAND --help' describes a command. Output files (-o) are never\n"
                 "written over an existing file unless --force is given, and never over a\n"
                 "device, folder or symbolic link; -o - writes to standard output.\n");
}

}  // namespace

int main(int argc, char** argv) {
    // --force (replace existing output files) is taken by every command.
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--force") == 0) cli::g_force = true;
        else argv[kept++] = argv[i];
    }
    argc = kept;
    argv[argc] = nullptr;
    if (argc < 2) {
        usage(stderr);
        return 2;
    }
    std::string name = argv[1];
    if (name == "--help" || name == "-h" || name == "help") {
        usage(stdout);
        return 0;
    }
    for (const Entry& e : kCommands) {
        if (name != e.name) continue;
        try {
            return e.fn(argc, argv, 2);
        } catch (const cli::Error& err) {
            std::fprintf(stderr, "korvex %s: %s\n", e.name, err.what());
            return err.code;
        } catch (const std::exception& err) {
            std::fprintf(stderr, "korvex %s: %s\n", e.name, err.what());
            return 1;
        }
    }
    std::fprintf(stderr, "korvex: unknown command '%s' (try korvex --help)\n", name.c_str());
    return 2;
}
