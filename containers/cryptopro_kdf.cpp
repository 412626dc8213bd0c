// The CryptoPro container's password-based key: an HMAC-like iteration of
// GOST R 34.11-94 (zero starting vector) seeded with a fixed constant, over the
// password widened to 32-bit code units.
#include "containers/cryptopro_format.h"

#include "GOST_34_11_94.h"
#include "core/bytes.h"

namespace kx {
namespace cryptopro {
namespace {

// The starting value of the iteration, as the format defines it.
constexpr unsigned char kConstant[33] = "KOLAMR047.318592604.XQTRBVMNA.QR";

constexpr unsigned kWideMax = 4 * kMaxPassword;

void hash(unsigned char* data, unsigned len, type_uN<32>* out) { GOST_34_11_94_hash(data, len, nullptr, out); }

// dst = src ^ pad, 32 bytes.
void xor_pad(unsigned char* dst, const unsigned char* src, unsigned char pad) {
    for (unsigned i = 0; i < 32; ++i) dst[i] = static_cast<unsigned char>(src[i] ^ pad);
}

}  // namespace

void derive_key(const unsigned char* password, unsigned password_len, const unsigned char* salt,
                type_uN<32>* key) {
    const unsigned wide_len = 4 * password_len;
    // Scratch for S || W, then the 128-byte iteration block, then the final
    // block M^ipad || S || M^opad || W (at most 124 bytes).
    unsigned char buf[128];
    static_assert(64 + kSaltLen + kWideMax <= sizeof buf, "final block must fit");
    unsigned char wide[kWideMax];
    fill(wide, 0, sizeof wide);
    for (unsigned i = 0; i < password_len; ++i) wide[4 * i] = password[i];

    type_uN<32> h0, m;
    copy(buf, salt, kSaltLen);
    copy(buf + kSaltLen, wide, wide_len);
    hash(buf, kSaltLen + wide_len, &h0);

    copy(m.b, kConstant, 32);
    const unsigned rounds = password_len ? 2000 : 2;
    for (unsigned i = 0; i < rounds; ++i) {
        xor_pad(buf, m.b, 0x36);
        copy(buf + 32, h0.b, 32);
        xor_pad(buf + 64, m.b, 0x5C);
        copy(buf + 96, h0.b, 32);
        hash(buf, 128, &m);
    }

    xor_pad(buf, m.b, 0x36);
    copy(buf + 32, salt, kSaltLen);
    xor_pad(buf + 32 + kSaltLen, m.b, 0x5C);
    copy(buf + 64 + kSaltLen, wide, wide_len);
    type_uN<32> k1;
    hash(buf, 64 + kSaltLen + wide_len, &k1);
    hash(k1.b, 32, key);

    wipe(buf, sizeof buf);
    wipe(wide, sizeof wide);
    wipe_obj(h0);
    wipe_obj(m);
    wipe_obj(k1);
}

}  // namespace cryptopro
}  // namespace kx
