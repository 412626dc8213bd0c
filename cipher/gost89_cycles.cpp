// GOST 28147-89 exported core: one round, the three cycles and ECB.
#include "GOST_28147_89.h"
#include "cipher/gost89_core.h"

namespace kx {
namespace {

// A caller's table as the core reads it; the copy costs less than one round.
Gost89Table table_from(const unsigned int* table) {
    Gost89Table t;
    for (int i = 0; i < 16; ++i) t.w[i] = load32(table + i);
    return t;
}

}  // namespace

void gost89_ecb(unsigned char* data, size_t len, const Gost89Key& k, const Gost89Table& t, bool decrypt) {
    // No padding: the last len % 8 bytes stay as they are.
    const Gost89TableWide& tw = gost89_table_wide(t);
    uint64_t b[kGost89Lanes];
    while (len >= 8) {
        const size_t n = len / 8 < kGost89Lanes ? len / 8 : kGost89Lanes;
        for (size_t i = 0; i < n; ++i) b[i] = load64(data + 8 * i);
        if (decrypt) gost89_decrypt_many(b, n, k, tw);
        else gost89_encrypt_many(b, n, k, tw);
        for (size_t i = 0; i < n; ++i) store64(data + 8 * i, b[i]);
        data += 8 * n;
        len -= 8 * n;
    }
}

}  // namespace kx

using namespace kx;

KORVEX_API type_u64 GOST_28147_89_base_step(type_u64 block, unsigned int* subkey, unsigned int* table) {
    const Gost89Table t = table_from(table);
    const uint32_t n1 = static_cast<uint32_t>(block), n2 = static_cast<uint32_t>(block >> 32);
    const uint32_t f = gost89_f(n1 + load32(subkey), t.w);
    return static_cast<type_u64>(n1) << 32 | (f ^ n2);
}

KORVEX_API void GOST_28147_cycle_32_Z(type_u64* block, type_uN<32>* key, unsigned int* table) {
    const Gost89Table t = table_from(table);
    Gost89Key k = gost89_key(key);
    store64(block, gost89_encrypt(load64(block), k, t));
    gost89_wipe(k);
}

KORVEX_API void GOST_28147_cycle_32_R(type_u64* block, type_uN<32>* key, unsigned int* table) {
    const Gost89Table t = table_from(table);
    Gost89Key k = gost89_key(key);
    store64(block, gost89_decrypt(load64(block), k, t));
    gost89_wipe(k);
}

KORVEX_API type_u64 GOST_28147_cycle_16_Z(type_u64 block, type_uN<32>* key, unsigned int* table) {
    const Gost89Table t = table_from(table);
    Gost89Key k = gost89_key(key);
    const type_u64 r = gost89_mac16(block, k, t);
    gost89_wipe(k);
    return r;
}

KORVEX_API void GOST_28147_89_Z_ECB(unsigned char* data, unsigned int len, type_uN<32>* key, unsigned char sbox) {
    if (len < 8) return;
    Gost89Key k = gost89_key(key);
    gost89_ecb(data, len, k, gost89_table(sbox), false);
    gost89_wipe(k);
}

KORVEX_API void GOST_28147_89_R_ECB(unsigned char* data, unsigned int len, type_uN<32>* key, unsigned char sbox) {
    if (len < 8) return;
    Gost89Key k = gost89_key(key);
    gost89_ecb(data, len, k, gost89_table(sbox), true);
    gost89_wipe(k);
}
