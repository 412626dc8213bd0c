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
    for (; len >= 8; len -= 8, data += 8) {
        v = gost89_encrypt(load64(data) ^ v, k, t);
        store64(data, v);
    }
    gost89_wipe(k);
    return v;
}

KORVEX_API void GOST_28147_89_R_CBC(unsigned char* data, unsigned int len, type_uN<32>* key, type_u64* iv,
                                    unsigned char sbox) {
    if (len < 8) return;
    const Gost89Table& t = gost89_table(sbox);
    Gost89Key k = gost89_key(key);
    uint64_t v = gost89_block_or_zero(iv);
    // Decryption of every block is independent: four at a time.
    if (len >= 32) {
        const Gost89Wide wide(k, t);
        uint64_t c[4], p[4];
        for (; len >= 32; len -= 32, data += 32) {
            for (int i = 0; i < 4; ++i) p[i] = c[i] = load64(data + 8 * i);
            wide.decrypt(p);
            store64(data, p[0] ^ v);
            for (int i = 1; i < 4; ++i) store64(data + 8 * i, p[i] ^ c[i - 1]);
            v = c[3];
        }
        wipe(p, sizeof p);
    }
    for (; len >= 8; len -= 8, data += 8) {
        const uint64_t c = load64(data);
        store64(data, gost89_decrypt(c, k, t) ^ v);
        v = c;
    }
    gost89_wipe(k);
}
