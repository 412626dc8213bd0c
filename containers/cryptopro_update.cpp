// Re-randomising a CryptoPro container: new mask factor and salt, keys
// re-masked and re-enciphered, new MAC of the salt. Key and password stay.
#include "CryptoPro.h"

#include "GOST_28147_89.h"
#include "PRNG.h"
#include "containers/cryptopro_format.h"
#include "core/bytes.h"

namespace {
using namespace kx::cryptopro;

struct Work {
    type_uN<32> kek, r, f, salt;
};

unsigned char update(unsigned char* primary, unsigned char* masks, unsigned char* password,
                     unsigned char password_len, Work& w) {
    unsigned keys;
    unsigned char rc = check_files(primary, masks, kSelectorA, &keys);
    if (rc) return rc;
    type_uN<32>* key[2] = {reinterpret_cast<type_uN<32>*>(primary + kKey1),
                           reinterpret_cast<type_uN<32>*>(primary + kKey2)};
    type_uN<32>* mask = reinterpret_cast<type_uN<32>*>(masks + kMask);

    derive_key(password, password_len, masks + kSalt, &w.kek);
    for (unsigned i = 0; i < keys; ++i) GOST_28147_89_R_ECB(key[i]->b, 32, &w.kek, kSelectorA);

    // One draw, f = r mod q: the reference inverts r mod q twice (its loop
    // on a zero inverse never repeats: the zero test answers 1 or 2, never 0).
    if (PRNG_get(&w.r) != 0) return 9;
    kx::copy(w.f.b, w.r.b, 32);
    reduce_q(&w.f);

    // key = mask^-1 * value keeps holding with both sides multiplied by f.
    for (unsigned i = 0; i < keys; ++i) mask_mul(key[i]->b, &w.f);
    mask_mul(mask->b, &w.f);

    if (PRNG_get(&w.salt) != 0) return 9;
    kx::store32(w.salt.b, kx::load32(w.salt.b) + 1);
    kx::copy(masks + kSalt, w.salt.b, kSaltLen);

    derive_key(password, password_len, masks + kSalt, &w.kek);
    for (unsigned i = 0; i < keys; ++i) GOST_28147_89_Z_ECB(key[i]->b, 32, &w.kek, kSelectorA);

    type_u64 mac = GOST_28147_89_MAC(masks + kSalt, kSaltLen, mask, nullptr, kSelectorA);
    kx::store32(masks + kMac, static_cast<uint32_t>(mac));
    return 0;
}
}  // namespace

KORVEX_API unsigned char CryptoPro_conteiner_update(unsigned char* primary, unsigned char* masks,
                                                    unsigned char* password, unsigned char password_len) {
    if (password_len > kMaxPassword) return kPasswordTooLong;
    Work w;
    unsigned char rc = update(primary, masks, password, password_len, w);
    kx::wipe_obj(w);
    return rc;
}
