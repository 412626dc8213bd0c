// GOST 28147-89 cipher block chaining over whole blocks. CBC does not pad:
// the last len % 8 bytes are left as they are (see GOST_28147_89_padding).
#include "GOST_28147_89.h"
#include "cipher/gost89_core.h"

using namespace kx;

KORVEX_API type_u64 GOST_28147_89_Z_CBC(unsigned char* data, unsigned int len, type_uN<32>* key, type_u64* iv,
                                        unsigned char sbox) {
    uint64_t v = gost89_block_or_zero(iv);
    if (len < 8) return v;
    const Gost89Table& t = gost89_table(sbox);
    Gost89Key k = gost89_key(key);
    gost89_cbc_encrypt(data, len / 8, k, t, &v);
    gost89_wipe(k);
    return v;
}

KORVEX_API void GOST_28147_89_R_CBC(unsigned char* data, unsigned int len, type_uN<32>* key, type_u64* iv,
                                    unsigned char sbox) {
    if (len < 8) return;
    const Gost89Table& t = gost89_table(sbox);
    Gost89Key k = gost89_key(key);
    uint64_t v = gost89_block_or_zero(iv);
    // Decryption of every block is independent: several at a time.
    const Gost89TableWide& tw = gost89_table_wide(t);
    uint64_t c[kGost89Lanes], p[kGost89Lanes];
    while (len >= 8) {
        const size_t n = len / 8 < kGost89Lanes ? len / 8 : kGost89Lanes;
        for (size_t i = 0; i < n; ++i) p[i] = c[i] = load64(data + 8 * i);
        gost89_decrypt_many(p, n, k, tw);
        for (size_t i = 0; i < n; ++i) store64(data + 8 * i, p[i] ^ (i ? c[i - 1] : v));
        v = c[n - 1];
        data += 8 * n;
        len -= 8 * n;
    }
    wipe(p, sizeof p);
    gost89_wipe(k);
}
