// GOST 28147-89 counter (gamma) mode, one-shot and streaming. The mode never
// meshes the key (RFC 4357 meshing is the caller's business).
#include "GOST_28147_89.h"
#include "cipher/gost89_core.h"

namespace kx {

void gost89_ctr(unsigned char* data, size_t len, const Gost89Key& k, const Gost89Table& t, uint64_t* ctr,
                uint64_t* tail_gamma) {
    uint64_t c = *ctr;
    const Gost89TableWide& tw = gost89_table_wide(t);
    uint64_t g[kGost89Lanes];
    while (len >= 8) {
        const size_t n = len / 8 < kGost89Lanes ? len / 8 : kGost89Lanes;
        for (size_t i = 0; i < n; ++i) g[i] = c = gost89_ctr_next(c);
        gost89_encrypt_many(g, n, k, tw);
        for (size_t i = 0; i < n; ++i) store64(data + 8 * i, load64(data + 8 * i) ^ g[i]);
        data += 8 * n;
        len -= 8 * n;
    }
    wipe(g, sizeof g);
    if (len) {
        c = gost89_ctr_next(c);
        unsigned char tail[8];
        store64(tail, gost89_encrypt(c, k, t));
        xor_into(data, tail, len);
        if (tail_gamma) *tail_gamma = load64(tail);
        wipe(tail, sizeof tail);
    }
    *ctr = c;
}

}  // namespace kx

using namespace kx;

KORVEX_API void GOST_28147_89_ZR_CTR(unsigned char* data, unsigned int len, type_uN<32>* key, type_u64* synchro,
                                     unsigned char sbox) {
    if (len == 0) return;
    const Gost89Table& t = gost89_table(sbox);
    Gost89Key k = gost89_key(key);
    uint64_t ctr = gost89_encrypt(gost89_block_or_zero(synchro), k, t);
    gost89_ctr(data, len, k, t, &ctr, nullptr);
    gost89_wipe(k);
    wipe_obj(ctr);
}

KORVEX_API void GOST_28147_89_ZR_CTR_init(type_uN<32>* key, type_u64* synchro, unsigned char sbox,
                                          stream_GOST_CTR_t* state) {
    Gost89Key k = gost89_key(key);
    copy(&state->key, key, sizeof state->key);
    state->used = 0;
    store64(&state->counter, gost89_encrypt(gost89_block_or_zero(synchro), k, gost89_table(sbox)));
    store64(&state->gamma, 0);
    state->sbox = sbox;
    gost89_wipe(k);
}

KORVEX_API void GOST_28147_89_ZR_CTR_step(unsigned char* data, unsigned int len, stream_GOST_CTR_t* state) {
    // First the rest of the keystream block saved by the previous step.
    unsigned used = state->used;
    if (used >= 1 && used <= 7) {
        const unsigned char* g = reinterpret_cast<const unsigned char*>(&state->gamma);
        for (; used < 8 && len; --len, ++used) *data++ ^= g[used];
        state->used = static_cast<unsigned char>(used);
    }
    if (len == 0) return;
    Gost89Key k = gost89_key(&state->key);
    uint64_t ctr = load64(&state->counter), gamma = load64(&state->gamma);
    gost89_ctr(data, len, k, gost89_table(state->sbox), &ctr, &gamma);
    store64(&state->counter, ctr);
    store64(&state->gamma, gamma);
    state->used = static_cast<unsigned char>(len % 8);
    gost89_wipe(k);
}
