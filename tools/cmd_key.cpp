// korvex key export / import: private keys to and from PKCS#8 PEM in the form
// OpenSSL's GOST engine writes and reads (RFC 4491 / RFC 9215 algorithm
// identifiers, the key as a little-endian OCTET STRING).
#include <algorithm>
#include <cstdio>

#include "certs.h"
#include "cli.h"
#include "commands.h"
#include "containers.h"
#include "der.h"

namespace {

using cli::Bytes;
using cli::Error;

const char* kAlg2001 = "1.2.643.2.2.19";
const char* kAlg2012_256 = "1.2.643.7.1.1.1.1";
const char* kAlg2012_512 = "1.2.643.7.1.1.1.2";

Bytes pkcs8(const cli::KeyPair& k) {
    Bytes alg;
    if (k.curve.is512) {
        std::string ps = "1.2.643.7.1.2.1.2." + std::to_string(k.curve.sel);
        alg = der::seq({der::oid(kAlg2012_512), der::seq({der::oid(ps), der::oid("1.2.643.7.1.1.2.3")})});
    } else {
        alg = der::seq({der::oid(kAlg2001), der::seq({der::oid(cli::paramset_oid(k.curve)), der::oid("1.2.643.2.2.30.1")})});
    }
    return der::seq({der::integer(0), alg, der::octets(k.d)});
}

cli::KeyPair from_pkcs8(const Bytes& d) {
    der::Elem top = der::read(d.data(), d.data() + d.size());
    auto parts = der::children(top);
    if (parts.size() < 3 || parts[1].tag != 0x30 || parts[2].tag != 0x04)
        throw Error("not an unencrypted PKCS#8 private key (export it with openssl pkey -engine gost)");
    auto alg = der::children(parts[1]);
    if (alg.size() < 2 || alg[0].tag != 0x06 || alg[1].tag != 0x30) throw Error("not a GOST private key");
    std::string a = der::oid_text(alg[0]);
    auto params = der::children(alg[1]);
    if (params.empty() || params[0].tag != 0x06) throw Error("GOST key without a parameter set");
    std::string ps = der::oid_text(params[0]);
    cli::KeyPair k{};
    if (a == kAlg2012_512) {
        const std::string pre = "1.2.643.7.1.2.1.2.";
        if (ps.rfind(pre, 0) != 0) throw Error("unsupported 512-bit parameter set " + ps);
        std::string n = ps.substr(pre.size());
        k.curve = cli::curve_by_name(n == "1" ? "512A" : n == "2" ? "512B" : "512test");
    } else if (a == kAlg2001 || a == kAlg2012_256) {
        static const std::pair<const char*, const char*> sets[] = {
            {"1.2.643.2.2.35.0", "test"}, {"1.2.643.2.2.35.1", "A"},  {"1.2.643.2.2.35.2", "B"},
            {"1.2.643.2.2.35.3", "C"},    {"1.2.643.2.2.36.0", "XA"}, {"1.2.643.2.2.36.1", "XB"}};
        const char* name = nullptr;
        for (auto& s : sets)
            if (ps == s.first) name = s.second;
        if (!name) throw Error("unsupported parameter set " + ps + " (the library has the CryptoPro curves)");
        k.curve = cli::curve_by_name(name);
    } else {
        throw Error("not a GOST R 34.10 key (algorithm " + a + ")");
    }
    Bytes v = parts[2].value();
    size_t w = k.width();
    if (!v.empty() && (v[0] == 0x02 || v[0] == 0x04) && v.size() != w) {
        // Older writers wrap the key once more: an INTEGER (big-endian) or an
        // OCTET STRING (little-endian).
        der::Elem in = der::read(v.data(), v.data() + v.size());
        Bytes x = in.value();
        if (in.tag == 0x02) {
            while (x.size() > w && x[0] == 0) x.erase(x.begin());
            std::reverse(x.begin(), x.end());
            x.resize(w, 0);
        }
        v = x;
    }
    if (v.size() != w) throw Error("private key of unexpected length");
    k.d = v;
    cli::wipe(v);
    k.q = cli::public_of(k.curve, k.d);
    return k;
}

}  // namespace

namespace cmd {

int key(int argc, char** argv, int first) {
    std::string sub = first < argc ? argv[first] : "";
    if (cli::wants_sub_help(sub, argc, argv, first)) {
        std::printf(
            "usage: korvex key export SOURCE [-o KEY.pem] [--curve C] [--cert CERT] [--pass ...]\n"
            "       korvex key import KEY.pem -o OUT [--format pkcs15|pkcs15-2012|pkcs12|keyfile]\n"
            "                         [--pass ...]\n\n"
            "export writes the private key of a korvex key file, PKCS#15 or PKCS#12\n"
            "container or CryptoPro container folder as an unencrypted PKCS#8 PEM that\n"
            "'openssl pkey -engine gost' loads (keep it safe: mode 0600). import reads\n"
            "such a PEM (from openssl genpkey -engine gost) into a new container,\n"
            "PKCS#15 by default (the 2012 generation for 512-bit keys).\n"
            "Passwords: --pass env:VAR | pass:TEXT, --pass-file FILE, or a prompt.\n");
        return sub.empty() ? 2 : 0;
    }
    cli::Args a = cli::parse(argc, argv, first + 1, {"-o", "--curve", "--cert", "--pass", "--pass-file", "--format"}, {});
    if (a.pos.size() != 1) throw Error("name one source");
    if (sub == "export") {
        cli::KeyPair k = cli::load_private_key(a.pos[0], a);
        if (k.d.empty()) throw Error(a.pos[0] + ": holds no private key");
        Bytes d = pkcs8(k);
        std::string pem = cli::pem_encode("PRIVATE KEY", d);
        cli::wipe(d);
        cli::write_file(a.get("-o", "-"), pem, {a.pos[0]}, 0600);
        cli::wipe(pem);
        return 0;
    }
    if (sub == "import") {
        std::string text = cli::read_text(a.pos[0]);
        if (text.find("ENCRYPTED PRIVATE KEY") != std::string::npos)
            throw Error("encrypted PEM: decrypt it first (openssl pkey -engine gost -in IN -out OUT)");
        Bytes d = cli::pem_decode(text, "PRIVATE KEY");
        cli::wipe(text);
        cli::KeyPair k = from_pkcs8(d);
        cli::wipe(d);
        std::string out = a.need("-o");
        std::string fmt = a.get("--format", k.curve.is512 ? "pkcs15-2012" : "pkcs15");
        if (fmt == "keyfile") {
            cli::write_file(out, cli::format_key(k, true), {a.pos[0]}, 0600);
            return 0;
        }
        std::string pw = cli::password(a, "New container password: ", true);
        cli::seed_generator();
        Bytes c = fmt == "pkcs12" ? cli::pkcs12_make(k, pw)
                  : fmt == "pkcs15" || fmt == "pkcs15-2012" ? cli::pkcs15_make(k, pw, fmt == "pkcs15-2012", 0)
                                                            : throw Error("unknown format '" + fmt + "'");
        cli::wipe(pw);
        cli::write_file(out, c, {a.pos[0]}, 0600);
        std::fprintf(stderr, "stored a %s key (curve %s) in %s\n", k.curve.is512 ? "512-bit" : "256-bit",
                     k.curve.name.c_str(), out.c_str());
        return 0;
    }
    throw Error("unknown key command '" + sub + "' (export, import)");
}

}  // namespace cmd
