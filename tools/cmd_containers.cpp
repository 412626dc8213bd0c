// korvex pkcs15 / pkcs12 / cryptopro.
#include <cstdio>
#include <memory>

#include "cli.h"
#include "commands.h"
#include "certs.h"
#include "containers.h"
#include "pkcs12.h"
#include "pkcs15.h"

namespace {

using cli::Bytes;
using cli::Error;

const std::vector<std::string> kPassOpts = {"--pass", "--pass-file"};

std::vector<std::string> with(std::vector<std::string> v, const std::vector<std::string>& more) {
    v.insert(v.end(), more.begin(), more.end());
    return v;
}

void print_key(const cli::KeyPair& k, const cli::Args& a, const std::string& src) {
    std::string text = cli::private_pem(k);
    cli::write_file(a.get("-o", "-"), text, {src}, 0600);
    cli::wipe(text);
}

// The curve named by --curve or by the certificate of --cert.
std::unique_ptr<cli::Curve> curve_opt(const cli::Args& a) {
    if (a.has("--curve")) return std::make_unique<cli::Curve>(cli::curve_by_name(a.get("--curve")));
    if (a.has("--cert"))
        return std::make_unique<cli::Curve>(cli::curve_by_name(formats::cert_key(cli::load_cert(a.get("--cert"))).curve_oid));
    return nullptr;
}

int pkcs15(const std::string& sub, int argc, char** argv, int first) {
    if (sub == "create") {
        cli::Args a = cli::parse(argc, argv, first, with(kPassOpts, {"--key", "-o", "--usage", "--curve", "--cert"}), {"--2012"});
        cli::KeyPair k = cli::load_private_key(a.need("--key"), a);
        std::string pw = cli::password(a, "New container password: ", true);
        cli::seed_generator();
        Bytes c = cli::pkcs15_make(k, pw, a.has("--2012") || k.curve.is512,
                                   static_cast<unsigned short>(std::stoul(a.get("--usage", "0"))));
        cli::wipe(pw);
        cli::write_file(a.need("-o"), c, {a.get("--key")}, 0600);
        return 0;
    }
    cli::Args a = cli::parse(argc, argv, first, with(kPassOpts, {"-o", "--curve", "--cert"}), {});
    if (a.pos.size() != 1) throw Error("name one container");
    Bytes c = cli::read_file(a.pos[0]);
    cli::require_der(c, a.pos[0], true);
    if (sub == "info") {
        unsigned v = c[0] != 0x30 ? 0 : pkcs15_get_version(c.data());
        if (!v) throw Error(a.pos[0] + ": not a PKCS#15 container", 4);
        std::printf("PKCS#15 container, %s generation, %zu bytes\n", v == 1 ? "2001" : "2012", c.size());
        unsigned char* content = pkcs15_get_pkcs15content(c.data());
        std::printf("token content at offset %ld\n", content ? static_cast<long>(content - c.data()) : -1L);
        return 0;
    }
    std::string pw = cli::password(a, "Password for " + a.pos[0] + ": ");
    if (sub == "read") {
        auto curve = curve_opt(a);
        cli::KeyPair k = cli::pkcs15_read(c, pw, curve.get());
        cli::wipe(pw);
        if (a.has("--cert")) cli::match_cert(k, cli::load_cert(a.get("--cert")), true);
        print_key(k, a, a.pos[0]);
        return 0;
    }
    if (sub == "update") {
        cli::pkcs15_renew(c, pw);
        cli::wipe(pw);
        cli::write_file(a.pos[0], c, {}, 0600, cli::Overwrite::in_place);
        return 0;
    }
    throw Error("unknown pkcs15 command '" + sub + "' (create, read, update, info)");
}

int pkcs12(const std::string& sub, int argc, char** argv, int first) {
    if (sub == "create") {
        cli::Args a = cli::parse(argc, argv, first, with(kPassOpts, {"--key", "-o", "--curve", "--cert"}), {});
        cli::KeyPair k = cli::load_private_key(a.need("--key"), a);
        std::string pw = cli::password(a, "New container password: ", true);
        Bytes c = cli::pkcs12_make(k, pw);
        cli::wipe(pw);
        cli::write_file(a.need("-o"), c, {a.get("--key")}, 0600);
        return 0;
    }
    cli::Args a = cli::parse(argc, argv, first, with(kPassOpts, {"-o", "--curve", "--cert", "--new-pass", "--new-pass-file"}), {});
    if (a.pos.size() != 1) throw Error("name one container");
    Bytes c = cli::read_file(a.pos[0]);
    std::string pw = cli::password(a, "Password for " + a.pos[0] + ": ");
    if (sub == "open") {
        auto curve = curve_opt(a);
        cli::KeyPair k = cli::pkcs12_read(c, pw, curve.get());
        cli::wipe(pw);
        if (a.has("--cert")) cli::match_cert(k, cli::load_cert(a.get("--cert")), false);
        print_key(k, a, a.pos[0]);
        return 0;
    }
    if (sub == "passwd") {
        // Refuses a wrong password before anything changes; the key's curve
        // does not matter here (those refusals, exit 2, come after the check).
        try {
            cli::pkcs12_read(c, pw, nullptr);
        } catch (const Error& e) {
            if (e.code != 2) throw;
        }
        std::string npw = cli::password_from(a.get("--new-pass"), a.get("--new-pass-file"), "New password: ", true);
        auto u = [](std::string& s) { return reinterpret_cast<unsigned char*>(s.data()); };
        unsigned char r = pkcs12_conteiner_change_pass(u(pw), static_cast<unsigned char>(pw.size()), u(npw),
                                                       static_cast<unsigned char>(npw.size()), c.data());
        cli::wipe(pw);
        cli::wipe(npw);
        if (r != 0) throw Error("password change failed (code " + std::to_string(r) + ")", 4);
        cli::write_file(a.pos[0], c, {}, 0600, cli::Overwrite::in_place);
        return 0;
    }
    throw Error("unknown pkcs12 command '" + sub + "' (create, open, passwd)");
}

int cryptopro(const std::string& sub, int argc, char** argv, int first) {
    cli::Args a = cli::parse(argc, argv, first, with(kPassOpts, {"-o", "--cert", "--cert-out"}), {});
    if (a.pos.size() != 1) throw Error("name one container folder");
    if (sub == "info") {
        cli::cryptopro_info(a.pos[0]);
        return 0;
    }
    std::string pw = cli::password(a, "Password for " + a.pos[0] + ": ");
    if (sub == "read") {
        cli::CryptoProKey k = cli::cryptopro_read(a.pos[0], a.get("--cert"), pw);
        cli::wipe(pw);
        if (!k.note.empty()) std::fprintf(stderr, "%s\n", k.note.c_str());
        std::fprintf(stderr, "key from %s.key%s\n", k.which.c_str(), k.cert.empty() ? "" : " matches the certificate");
        cli::write_key_and_cert(k.key, k.cert, a.get("-o", "-"), a.get("--cert-out"), a.pos[0]);
        return 0;
    }
    if (sub == "update") {
        cli::cryptopro_update(a.pos[0], a.get("--cert"), pw);
        cli::wipe(pw);
        return 0;
    }
    throw Error("unknown cryptopro command '" + sub + "' (read, info, update)");
}

}  // namespace

namespace cmd {

int pkcs15(int argc, char** argv, int first) {
    std::string sub = first < argc ? argv[first] : "";
    if (cli::wants_sub_help(sub, argc, argv, first)) {
        std::printf(
            "usage: korvex pkcs15 create --key SOURCE -o OUT [--2012] [--usage N]\n"
            "       korvex pkcs15 read CONTAINER (--curve C | --cert CERT) [-o KEY.pem]\n"
            "       korvex pkcs15 update CONTAINER\n"
            "       korvex pkcs15 info CONTAINER\n\n"
            "PKCS#15 key containers protected by a password (PBKDF2, GOST 28147-89).\n"
            "create stores the private key of a key file or other container (512-bit\n"
            "and 2012 keys always in the 2012 generation); read writes it as PKCS#8\n"
            "PEM (the container does not record the curve: name it with --curve or\n"
            "--cert);\n"
            "update renews the container's salts, keys and IVs in place.\n"
            "Passwords: --pass env:VAR | pass:TEXT, --pass-file FILE, or a prompt.\n"
            "Exit codes: 3 wrong password, 4 damaged container.\n");
        return sub.empty() ? 2 : 0;
    }
    return ::pkcs15(sub, argc, argv, first + 1);
}

int pkcs12(int argc, char** argv, int first) {
    std::string sub = first < argc ? argv[first] : "";
    if (cli::wants_sub_help(sub, argc, argv, first)) {
        std::printf(
            "usage: korvex pkcs12 create --key SOURCE -o OUT\n"
            "       korvex pkcs12 open CONTAINER [--curve C | --cert CERT] [-o KEY.pem]\n"
            "       korvex pkcs12 passwd CONTAINER [--new-pass SPEC | --new-pass-file FILE]\n\n"
            "The library's 372-byte PKCS#12 container for a 256-bit key. open writes\n"
            "the key as PKCS#8 PEM (containers made before the curve was recorded need\n"
            "--curve or --cert); passwd re-enciphers it under a new password.\n"
            "Passwords: --pass env:VAR | pass:TEXT, --pass-file FILE, or a prompt.\n"
            "Exit codes: 3 wrong password, 4 damaged container.\n");
        return sub.empty() ? 2 : 0;
    }
    return ::pkcs12(sub, argc, argv, first + 1);
}

int cryptopro(int argc, char** argv, int first) {
    std::string sub = first < argc ? argv[first] : "";
    if (cli::wants_sub_help(sub, argc, argv, first)) {
        std::printf(
            "usage: korvex cryptopro read DIR [--pass SOURCE] [--cert CERT] [-o KEY.pem] [--cert-out CERT.pem]\n"
            "       korvex cryptopro info DIR\n"
            "       korvex cryptopro update DIR [--cert CERT]\n\n"
            "A CryptoPro container folder. Folders made by CryptoPro CSP (GOST R\n"
            "34.10-2001, 2012 256- and 512-bit keys) are recognised by header.key:\n"
            "read checks its MAC, the masks' MACs, the password and the key's\n"
            "fingerprint, falls back to the backup copy (primary2.key, masks2.key)\n"
            "when the first is damaged, and writes the key as PKCS#8 PEM and the\n"
            "certificate (from header.key or --cert) with --cert-out; info shows the\n"
            "generation, curve, name and certificate without a password.\n"
            "Folders in the library's own format (primary.key, masks.key, optional\n"
            "header.key with the certificate) open as before: read unmasks the key that\n"
            "matches the certificate (from --cert or header.key, passwords of at most\n"
            "12 characters); update first opens the key against the same certificate\n"
            "(and refuses without one), then re-masks the keys under fresh masks and\n"
            "salts with the same password (this format only).\n"
            "Exit codes: 1 certificate not the key's, 3 wrong password, 4 damaged container.\n");
        return sub.empty() ? 2 : 0;
    }
    return ::cryptopro(sub, argc, argv, first + 1);
}

}  // namespace cmd
