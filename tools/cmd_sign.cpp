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

int keygen_run(const cli::Args& a) {
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

int sign_run(const cli::Args& a) {
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

int verify_run(const cli::Args& a) {
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

const std::vector<cli::Option> kSourceOptions = cli::with_password({
    {"--key", "SOURCE", "a PKCS#8 file, PFX, container or korvex key file", cli::kRequired},
    {"--curve", "C", "the key's curve when the source does not record it"},
    {"--cert", "CERT", "the key's certificate (gives the curve, checks the key)"},
});

}  // namespace

namespace cmd {

const cli::Command keygen = {
    "keygen", "make a GOST R 34.10 key pair", "",
    "Makes a GOST R 34.10 key pair with the library's generator (seeded from\n"
    "getrandom) and writes the private key as PKCS#8 PEM (mode 0600; openssl\n"
    "pkey -engine gost loads it), and the public key alone to PUB (a korvex\n"
    "key file) if asked.\n",
    {{"--curve", "C", "A, B, C, XA, XB, test (256-bit), 512A or 512B", cli::kRequired},
     {"--alg", "ALG", "gost2001 (default on 256-bit curves), gost2012_256, gost2012_512 (512-bit curves)"},
     {"-o", "KEY.pem", "the private key file (default: stdout)"},
     {"--pub", "PUB", "also write the public key to PUB"}},
    keygen_run};

const cli::Command sign = {
    "sign", "raw GOST R 34.10 signature of a file's hash", "FILE",
    "Signs the hash of FILE: GOST R 34.11-94 for GOST R 34.10-2001 keys,\n"
    "Streebog-256 for 2012 256-bit keys, Streebog-512 on 512-bit curves. The\n"
    "signature is written in the library's layout: 64 bytes (s then r, each\n"
    "big-endian, as RFC 4490) or 128 bytes for 512-bit keys. The key comes from\n"
    "a PKCS#8 file, a PFX, a container (asks for its password) or a korvex key\n"
    "file; containers that do not record the curve need --curve or --cert.\n",
    cli::join(kSourceOptions,
              {{"--hash", "ALG", "gost94 or streebog256 on 256-bit curves (default: the key's)"},
               {"--hex", "", "write the signature as hex text"},
               {"--openssl", "", "OpenSSL's GOST engine layout (s then r, big-endian; differs for 512-bit keys)"},
               {"-o", "SIG", "the signature file (default: stdout)"}}),
    sign_run};

const cli::Command verify = {
    "verify", "check a raw GOST R 34.10 signature", "FILE",
    "Checks a signature made by 'korvex sign' (raw or hex), or with --openssl\n"
    "one in the layout of OpenSSL's GOST engine (openssl dgst -sign). Prints\n"
    "'valid' and exits 0, or prints 'INVALID' and exits 1. The key is one of\n"
    "--key, --pub or --cert.\n",
    {{"--key", "KEY", "a key file"},
     {"--pub", "PUB", "a korvex public key file"},
     {"--cert", "CERT", "a certificate (PEM or DER)"},
     {"--sig", "SIG", "the signature: a file (raw or hex) or hex", cli::kRequired},
     {"--hash", "ALG", "gost94 or streebog256 on 256-bit curves (default: the key's)"},
     {"--openssl", "", "the signature is in OpenSSL's GOST engine layout"}},
    verify_run};

}  // namespace cmd
