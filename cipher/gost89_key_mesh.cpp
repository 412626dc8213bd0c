// CryptoPro key meshing (RFC 4357 section 2.3.2).
#include "GOST_28147_89.h"
#include "cipher/gost89_core.h"

namespace {

// The meshing constant C of RFC 4357 2.3.2.
constexpr unsigned char kMeshC[32] = {
    0x69, 0x00, 0x72, 0x22, 0x64, 0xC9, 0x04, 0x23, 0x8D, 0x3A, 0xDB, 0x96, 0x46, 0xE9, 0x2A, 0xC4,
    0x18, 0xFE, 0xAC, 0x94, 0x00, 0xED, 0x07, 0x12, 0xC0, 0x86, 0xDC, 0xC2, 0xEF, 0x4C, 0xA9, 0x2B,
};

}  // namespace

using namespace kx;

KORVEX_API void GOST_28147_89_key_mesh(type_uN<32>* key, type_u64* iv, unsigned char sbox) {
    const Gost89Table& t = gost89_table(sbox);
    Gost89Key k = gost89_key(key);
    // New key = ECB decryption of C under the current key.
    unsigned char nk[32];
    copy(nk, kMeshC, sizeof nk);
    gost89_ecb(nk, sizeof nk, k, t, true);
    copy(key, nk, sizeof nk);
    if (iv) {
        Gost89Key k2 = gost89_key(nk);
        store64(iv, gost89_encrypt(load64(iv), k2, t));
        gost89_wipe(k2);
    }
    wipe(nk, sizeof nk);
    gost89_wipe(k);
}
