// Constant-time check of the program's key-format steps (tools/formats) under
// valgrind memcheck: passwords, password-derived keys and private keys are
// marked undefined; any branch or address depending on them is reported.
// Salts, UKMs, lengths and iteration counts are public. PBKDF2 and the RFC
// 7836 KDF are left out: they are the library's HMAC-Streebog, whose
// compression function still indexes tables by state bytes.
#include <valgrind/memcheck.h>

#include "formats/gost.h"
#include "formats/modq.h"
#include "formats/pkcs8.h"

namespace {

void secret(formats::Bytes& b) { VALGRIND_MAKE_MEM_UNDEFINED(b.data(), b.size()); }

}  // namespace

int main() {
    using formats::Bytes;
    using formats::Secret;
    Bytes salt(8, 0x5A), ukm(8, 0x3C), pw{'p', 'a', 's', 's'};
    Secret key(32, 0x11), d(32, 0x42), data(1100, 0x77);
    secret(pw);
    secret(key);
    secret(d);
    secret(data);
    formats::cfb_meshed(true, data.data(), data.size(), key.data(), salt.data(), formats::kSboxZ);
    formats::kek_diversify(key, ukm.data(), formats::kSboxA);
    formats::mac4(d.data(), d.size(), key, ukm.data(), formats::kSboxA);
    formats::csp_pbe_key(pw, salt, 3);
    formats::PrivateKey k;
    k.gen = formats::Gen::gost2012_256;
    k.curve_oid = "1.2.643.2.2.36.0";
    k.d = d;
    Secret der = formats::pkcs8_encode(k);
    formats::PrivateKey back = formats::pkcs8_decode(der.data(), der.size());
    // Taking a CryptoPro container's mask off its key, 256 and 512 bits.
    for (const char* curve : {"1.2.643.2.2.35.2", "1.2.643.7.1.2.1.2.1"}) {
        const Bytes q = formats::curve_order(curve);
        Bytes x(q.size(), 0xA5), mask(q.size(), 0x3C);
        secret(x);
        secret(mask);
        formats::mul_inverse_mod(x, mask, q);
    }
    return 0;
}
