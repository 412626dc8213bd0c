// korvex keygen / sign / verify: raw GOST R 34.10 signatures over a file's
// hash, in the library's byte layouts.
#include <algorithm>
#include <cstdio>

#include "GOST_34_10_2001.h"
#include "GOST_34_10_2012.h"
#include "GOST_34_11_2012.h"
#include "GOST_34_11_94.h"
#include "cli.h"
#include "commands.h"
#include "containers.h"
#include "keyfile.h"
#include "certs.h"

namespace {

using cli::Bytes;
using cli::Error;

// The hash value signed: GOST R 34.11-94 for GOST R 34.10-2001 keys (the
// default on 256-bit curves), Streebog-256 for 2012 256-bit use, Streebog-512
// for 512-bit keys. Bytes as the hash writes them, read as a little-endian
// number by the signature code.
Bytes file_hash(const std::string& path, const cli::KeyPair& k, const std::string& alg) {
    Bytes data = cli::read_file(path);
    unsigned char* p = data.empty() ? nullptr : data.data();
    unsigned n = static_cast<unsigned>(data.size());
    if (k.curve.is512) {
        if (!alg.empty() && alg != "streebog512") throw Error("512-bit keys sign Streebog-512 hashes", 2);
        Bytes h(64);
        GOST_34_11_2012_hash_512_bit(p, n, reinterpret_cast<type_uN<64>*>(h.data()));
        return h;
    }
    Bytes h(32);
    std::string a = alg.empty() ? (k.is2012() ? "streebog256" : "gost94") : alg;
    if (a == "gost94") GOST_34_11_94_hash(p, n, nullptr, reinterpret_cast<type_uN<32>*>(h.data()));
    else if (a == "streebog256") GOST_34_11_2012_hash_256_bit(p, n, reinterpret_cast<type_uN<32>*>(h.data()));
    else throw Error("unknown hash '" + alg + "' (gost94, streebog256)", 2);
    return h;
}

cli::KeyPair key_from_cert(const std::string& path) {
    formats::CertKey ck = formats::cert_key(cli::load_cert(path));
    cli::KeyPair k{};
    k.curve = cli::curve_by_name(ck.curve_oid);
    k.gen = ck.gen;
    k.q = ck.q;
    return k;
}

// OpenSSL's GOST engine writes s then r, each big-endian, at both widths.
// The library's 256-bit layout is the same; its 512-bit layout keeps r
// little-endian and s as two separately reversed 32-byte halves.
void openssl_to_library(Bytes& sig) {
    if (sig.size() != 128) return;
    Bytes s(sig.begin(), sig.begin() + 64), r(sig.begin() + 64, sig.end());
    std::reverse(s.begin(), s.end());  // s little-endian
    std::reverse(r.begin(), r.end());
    std::reverse(s.begin(), s.begin() + 32);
    std::reverse(s.begin() + 32, s.end());
    std::copy(s.begin(), s.end(), sig.begin());
    std::copy(r.begin(), r.end(), sig.begin() + 64);
}

void library_to_openssl(Bytes& sig) {
    if (sig.size() != 128) return;
    Bytes s(sig.begin(), sig.begin() + 64), r(sig.begin() + 64, sig.end());
    std::reverse(s.begin(), s.begin() + 32);
    std::reverse(s.begin() + 32, s.end());
    std::reverse(s.begin(), s.end());
    std::reverse(r.begin(), r.end());
    std::copy(s.begin(), s.end(), sig.begin());
    std::copy(r.begin(), r.end(), sig.begin() + 64);
}

}  // namespace

namespace cmd {

int keygen(int argc, char** argv, int first) {
    if (cli::wants_help(argc, argv, first)) {
        std::printf(
            "usage: korvex keygen --curve A|B|C|XA|XB|test|512A|512B [--alg ALG] [-o KEY.pem]\n"
            "                     [--pub PUB]\n\n"
            "Makes a GOST R 34.10 key pair with the library's generator (seeded from\n"
            "getrandom) and writes the private key as PKCS#8 PEM (mode 0600; openssl\n"
            "pkey -engine gost loads it), and the public key alone to PUB (a korvex\n"
            "key file) if asked. ALG: gost2001 (default on 256-bit curves),\n"
            "gost2012_256, gost2012_512 (512-bit curves).\n");
        return 0;
    }
    cli::Args a = cli::parse(argc, argv, first, {"--curve", "-o", "--pub", "--alg"}, {});
    if (!a.pos.empty()) throw Error("unexpected argument " + a.pos[0], 2);
    cli::Curve c = cli::curve_by_name(a.need("--curve"));
    formats::Gen g = a.has("--alg") ? cli::gen_by_name(a.get("--alg"), c) : cli::gen_for(c, false);
    cli::seed_generator();
    cli::KeyPair k = cli::generate_key(c, g != formats::Gen::gost2001);
    std::string text = cli::private_pem(k);
    cli::write_file(a.get("-o", "-"), text, {}, 0600);
    cli::wipe(text);
    if (a.has("--pub")) cli::write_file(a.get("--pub"), cli::format_key(k, false));
    return 0;
}

int sign(int argc, char** argv, int first) {
    if (cli::wants_help(argc, argv, first)) {
        std::printf(
            "usage: korvex sign --key SOURCE [--hash gost94|streebog256] [--hex] [--openssl]\n"
            "                   [-o SIG] FILE\n\n"
            "Signs the hash of FILE: GOST R 34.11-94 for GOST R 34.10-2001 keys,\n"
            "Streebog-256 for 2012 256-bit keys, Streebog-512 on 512-bit curves. The\n"
            "signature is\n"
            "written in the library's layout: 64 bytes (s then r, each big-endian, as\n"
            "RFC 4490) or 128 bytes for 512-bit keys; --hex writes it as hex text.\n"
            "--openssl writes the layout of OpenSSL's GOST engine instead (s then r,\n"
            "big-endian; it differs from the library's for 512-bit keys). The key\n"
            "comes from a PKCS#8 file, a PFX, a container (asks for its password) or\n"
            "a korvex key file; containers that do not record the curve need --curve\n"
            "or --cert.\n");
        return 0;
    }
    cli::Args a = cli::parse(argc, argv, first, {"--key", "--hash", "-o", "--pass", "--pass-file", "--curve", "--cert"},
                             {"--hex", "--openssl"});
    if (a.pos.size() != 1) throw Error("name one file to sign");
    cli::KeyPair k = cli::load_private_key(a.need("--key"), a);
    if (k.d.empty()) throw Error(a.get("--key") + ": holds no private key");
    Bytes h = file_hash(a.pos[0], k, a.get("--hash"));
    cli::seed_generator();
    Bytes sig(2 * k.width());
    int r = k.curve.is512
                ? GOST_34_10_2012_create_DS_512_bit(reinterpret_cast<type_uN<64>*>(h.data()),
                                                    reinterpret_cast<type_uN<64>*>(k.d.data()),
                                                    reinterpret_cast<type_uN<128>*>(sig.data()), k.curve.sel)
                : GOST_34_10_2001_create_DS(reinterpret_cast<type_uN<32>*>(h.data()),
                                            reinterpret_cast<type_uN<32>*>(k.d.data()),
                                            reinterpret_cast<type_uN<64>*>(sig.data()), k.curve.sel);
    if (r != 0) throw Error("signing failed: the generator is not seeded");
    if (a.has("--openssl")) library_to_openssl(sig);
    std::string out = a.get("-o", "-");
    if (a.has("--hex")) cli::write_file(out, cli::to_hex(sig) + "\n", {a.pos[0]});
    else cli::write_file(out, sig, {a.pos[0]});
    return 0;
}

int verify(int argc, char** argv, int first) {
    if (cli::wants_help(argc, argv, first)) {
        std::printf(
            "usage: korvex verify (--key KEY|--pub PUB|--cert CERT) --sig SIG\n"
            "                     [--hash gost94|streebog256] [--openssl] FILE\n\n"
            "Checks a signature made by 'korvex sign' (raw or hex), or with --openssl\n"
            "one in the layout of OpenSSL's GOST engine (openssl dgst -sign). Prints\n"
            "'valid' and exits 0, or prints 'INVALID' and exits 1.\n");
        return 0;
    }
    cli::Args a = cli::parse(argc, argv, first, {"--key", "--pub", "--cert", "--sig", "--hash"}, {"--openssl"});
    if (a.pos.size() != 1) throw Error("name one signed file");
    cli::KeyPair k = a.has("--cert") ? key_from_cert(a.get("--cert"))
                                     : cli::read_key(a.has("--key") ? a.get("--key") : a.need("--pub"));
    Bytes sig = cli::hex_or_file(a.need("--sig"), 2 * k.width());
    if (a.has("--openssl")) openssl_to_library(sig);
    Bytes h = file_hash(a.pos[0], k, a.get("--hash"));
    int ok = k.curve.is512
                 ? GOST_34_10_2012_check_DS_512_bit(reinterpret_cast<type_uN<64>*>(h.data()),
                                                    reinterpret_cast<type_uN<128>*>(k.q.data()),
                                                    reinterpret_cast<type_uN<128>*>(sig.data()), k.curve.sel)
                 : GOST_34_10_2001_check_DS(reinterpret_cast<type_uN<32>*>(h.data()),
                                            reinterpret_cast<type_uN<64>*>(k.q.data()),
                                            reinterpret_cast<type_uN<64>*>(sig.data()), k.curve.sel);
    std::printf("%s\n", ok == 1 ? "valid" : "INVALID");
    return ok == 1 ? 0 : 1;
}

}  // namespace cmd
