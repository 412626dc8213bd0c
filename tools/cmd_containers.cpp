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

int p15_create(const cli::Args& a) {
    cli::KeyPair k = cli::load_private_key(a.need("--key"), a);
    std::string pw = cli::password(a, "New container password: ", true);
    cli::seed_generator();
    Bytes c = cli::pkcs15_make(k, pw, a.has("--2012") || k.curve.is512,
                               static_cast<unsigned short>(std::stoul(a.get("--usage", "0"))));
    cli::wipe(pw);
    cli::write_file(a.need("-o"), c, {a.get("--key")}, 0600);
    return 0;
}

Bytes p15_file(const cli::Args& a) {
    Bytes c = cli::read_file(a.pos[0]);
    cli::require_der(c, a.pos[0], true);
    return c;
}

int p15_info(const cli::Args& a) {
    Bytes c = p15_file(a);
    unsigned v = c[0] != 0x30 ? 0 : pkcs15_get_version(c.data());
    if (!v) throw Error(a.pos[0] + ": not a PKCS#15 container", 4);
    std::printf("PKCS#15 container, %s generation, %zu bytes\n", v == 1 ? "2001" : "2012", c.size());
    unsigned char* content = pkcs15_get_pkcs15content(c.data());
    std::printf("token content at offset %ld\n", content ? static_cast<long>(content - c.data()) : -1L);
    return 0;
}

int p15_read(const cli::Args& a) {
    Bytes c = p15_file(a);
    std::string pw = cli::password(a, "Password for " + a.pos[0] + ": ");
    auto curve = curve_opt(a);
    cli::KeyPair k = cli::pkcs15_read(c, pw, curve.get());
    cli::wipe(pw);
    if (a.has("--cert")) cli::match_cert(k, cli::load_cert(a.get("--cert")), true);
    print_key(k, a, a.pos[0]);
    return 0;
}

int p15_update(const cli::Args& a) {
    Bytes c = p15_file(a);
    std::string pw = cli::password(a, "Password for " + a.pos[0] + ": ");
    cli::pkcs15_renew(c, pw);
    cli::wipe(pw);
    cli::write_file(a.pos[0], c, {}, 0600, cli::Overwrite::in_place);
    return 0;
}

int p12_create(const cli::Args& a) {
    cli::KeyPair k = cli::load_private_key(a.need("--key"), a);
    std::string pw = cli::password(a, "New container password: ", true);
    Bytes c = cli::pkcs12_make(k, pw);
    cli::wipe(pw);
    cli::write_file(a.need("-o"), c, {a.get("--key")}, 0600);
    return 0;
}

int p12_open(const cli::Args& a) {
    Bytes c = cli::read_file(a.pos[0]);
    std::string pw = cli::password(a, "Password for " + a.pos[0] + ": ");
    auto curve = curve_opt(a);
    cli::KeyPair k = cli::pkcs12_read(c, pw, curve.get());
    cli::wipe(pw);
    if (a.has("--cert")) cli::match_cert(k, cli::load_cert(a.get("--cert")), false);
    print_key(k, a, a.pos[0]);
    return 0;
}

int p12_passwd(const cli::Args& a) {
    Bytes c = cli::read_file(a.pos[0]);
    std::string pw = cli::password(a, "Password for " + a.pos[0] + ": ");
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

int cp_read(const cli::Args& a) {
    std::string pw = cli::password(a, "Password for " + a.pos[0] + ": ");
    cli::CryptoProKey k = cli::cryptopro_read(a.pos[0], a.get("--cert"), pw);
    cli::wipe(pw);
    if (!k.note.empty()) std::fprintf(stderr, "%s\n", k.note.c_str());
    std::fprintf(stderr, "key from %s.key%s\n", k.which.c_str(), k.cert.empty() ? "" : " matches the certificate");
    cli::write_key_and_cert(k.key, k.cert, a.get("-o", "-"), a.get("--cert-out"), a.pos[0]);
    return 0;
}

int cp_info(const cli::Args& a) {
    cli::cryptopro_info(a.pos[0]);
    return 0;
}

int cp_update(const cli::Args& a) {
    std::string pw = cli::password(a, "Password for " + a.pos[0] + ": ");
    cli::cryptopro_update(a.pos[0], a.get("--cert"), pw);
    cli::wipe(pw);
    return 0;
}

const cli::Option kKeyOut = {"-o", "KEY.pem", "the key file (default: stdout)"};
const cli::Option kCurve = {"--curve", "C", "the key's curve: A, B, C, XA, XB, test, 512A or 512B"};
const cli::Option kCert = {"--cert", "CERT", "the key's certificate (gives the curve, checks the key)"};
const cli::Option kSource = {"--key", "SOURCE", "the key: PKCS#8 file, PFX, container or korvex key file",
                             cli::kRequired};
const cli::Option kOut = {"-o", "OUT", "the container to write", cli::kRequired};

const cli::Command p15_create_cmd = {
    "create", "store a key in a new PKCS#15 container", "",
    "Stores the private key of a key file or other container (512-bit and 2012\n"
    "keys always in the 2012 generation).\n",
    cli::with_password({kSource, kOut, {"--2012", "", "write the 2012 generation"},
                        {"--usage", "N", "the key usage bits to record"}, kCurve, kCert}),
    p15_create};
const cli::Command p15_read_cmd = {
    "read", "write the key as PKCS#8 PEM", "CONTAINER",
    "The container does not record the curve: name it with --curve or --cert.\n",
    cli::with_password({kKeyOut, kCurve, kCert}), p15_read};
const cli::Command p15_update_cmd = {"update", "renew salts, keys and IVs in place", "CONTAINER", "",
                                     cli::with_password({}), p15_update};
const cli::Command p15_info_cmd = {"info", "print the generation and layout", "CONTAINER", "", {}, p15_info};

const cli::Command p12_create_cmd = {"create", "store a 256-bit key in a new container", "", "",
                                     cli::with_password({kSource, kOut, kCurve, kCert}), p12_create};
const cli::Command p12_open_cmd = {
    "open", "write the key as PKCS#8 PEM", "CONTAINER",
    "Containers made before the curve was recorded need --curve or --cert.\n",
    cli::with_password({kKeyOut, kCurve, kCert}), p12_open};
const cli::Command p12_passwd_cmd = {
    "passwd", "re-encipher under a new password", "CONTAINER", "",
    cli::with_password({{"--new-pass", "SPEC", "the new password, as --pass takes it (default: a prompt)"},
                        {"--new-pass-file", "FILE", "read the new password from the first line of FILE"}}),
    p12_passwd};

const cli::Option kCpCert = {"--cert", "CERT", "the container's certificate (default: header.key's)"};
const cli::Command cp_read_cmd = {
    "read", "write the key (and certificate) as PEM", "DIR",
    "Folders made by CryptoPro CSP (GOST R 34.10-2001, 2012 256- and 512-bit\n"
    "keys) are recognised by header.key: read checks its MAC, the masks' MACs,\n"
    "the password and the key's fingerprint, falls back to the backup copy\n"
    "(primary2.key, masks2.key) when the first is damaged, and writes the key as\n"
    "PKCS#8 PEM and the certificate (from header.key or --cert) with --cert-out.\n"
    "Folders in the library's own format (primary.key, masks.key, optional\n"
    "header.key with the certificate): read unmasks the key that matches the\n"
    "certificate (from --cert or header.key; passwords of at most 12 characters).\n",
    cli::with_password({kKeyOut, kCpCert, {"--cert-out", "CERT.pem", "write the certificate here"}}), cp_read};
const cli::Command cp_info_cmd = {
    "info", "show generation, curve, name and certificate", "DIR",
    "Shows a CryptoPro CSP folder's generation, curve, name and certificate\n"
    "without a password.\n",
    {}, cp_info};
const cli::Command cp_update_cmd = {
    "update", "re-mask the keys under fresh masks and salts", "DIR",
    "For folders in the library's own format: first opens the key against the\n"
    "certificate (from --cert or header.key; refuses without one), then re-masks\n"
    "the keys under fresh masks and salts with the same password.\n",
    cli::with_password({kCpCert}), cp_update};

}  // namespace

namespace cmd {

const cli::Command pkcs15 = {
    "pkcs15", "PKCS#15 key containers: create, read, update, info", "",
    "PKCS#15 key containers protected by a password (PBKDF2, GOST 28147-89).\n"
    "Exit codes: 3 wrong password, 4 damaged container.\n",
    {}, nullptr, {&p15_create_cmd, &p15_read_cmd, &p15_update_cmd, &p15_info_cmd}};

const cli::Command pkcs12 = {
    "pkcs12", "PKCS#12 key containers: create, open, passwd", "",
    "The library's 372-byte PKCS#12 container for a 256-bit key.\n"
    "Exit codes: 3 wrong password, 4 damaged container.\n",
    {}, nullptr, {&p12_create_cmd, &p12_open_cmd, &p12_passwd_cmd}};

const cli::Command cryptopro = {
    "cryptopro", "CryptoPro key containers: read, info, update", "",
    "A CryptoPro container folder: made by CryptoPro CSP, or in the library's own\n"
    "format (primary.key, masks.key, and primary2.key, masks2.key when it holds a\n"
    "second key).\n"
    "Exit codes: 1 certificate not the key's, 3 wrong password, 4 damaged container.\n",
    {}, nullptr, {&cp_read_cmd, &cp_info_cmd, &cp_update_cmd}};

}  // namespace cmd
