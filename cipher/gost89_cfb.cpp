// GOST 28147-89 cipher feedback mode. A trailing partial block is enciphered
// with the next gamma block in both directions.
#include "GOST_28147_89.h"
#include "cipher/gost89_kernels.h"

namespace kx {

void gost89_cfb(unsigned char* data, size_t len, const Gost89Key& k, const Gost89Table& t, uint64_t* s,
                bool decrypt) {
    uint64_t v = *s;
    if (decrypt) {
        // Every gamma block is known from the ciphertext: several at a time.
        const Gost89TableWide& tw = gost89_table_wide(t);
        uint64_t g[kGost89Lanes], y[kGost89Lanes];
        while (len >= 8) {
            const size_t n = len / 8 < kGost89Lanes ? len / 8 : kGost89Lanes;
            for (size_t i = 0; i < n; ++i) {
                y[i] = load64(data + 8 * i);
                g[i] = i ? y[i - 1] : v;
            }
            gost89_encrypt_many(g, n, k, tw);
            for (size_t i = 0; i < n; ++i) store64(data + 8 * i, y[i] ^ g[i]);
            v = y[n - 1];
            data += 8 * n;
            len -= 8 * n;
        }
        wipe(g, sizeof g);
    } else {
        gost89_serial(data, len / 8, k, t, &v, Gost89Chain::kCfb);
        data += len & ~size_t{7};
        len &= 7;
    }
    if (len) {
        unsigned char g[8];
        store64(g, gost89_encrypt(v, k, t));
        xor_into(data, g, len);
        wipe(g, sizeof g);
    }
    *s = v;
}

}  // namespace kx

using namespace kx;

namespace {

void cfb(unsigned char* data, unsigned int len, type_uN<32>* key, type_u64* synchro, unsigned char sbox, bool decrypt) {
    if (len == 0) return;
    Gost89Key k = gost89_key(key);
    uint64_t s = gost89_block_or_zero(synchro);
    gost89_cfb(data, len, k, gost89_table(sbox), &s, decrypt);
    gost89_wipe(k);
}

}  // namespace

KORVEX_API void GOST_28147_89_Z_CFB(unsigned char* data, unsigned int len, type_uN<32>* key, type_u64* synchro,
                                    unsigned char sbox) {
    cfb(data, len, key, synchro, sbox, false);
}

KORVEX_API void GOST_28147_89_R_CFB(unsigned char* data, unsigned int len, type_uN<32>* key, type_u64* synchro,
                                    unsigned char sbox) {
    cfb(data, len, key, synchro, sbox, true);
}
