// GOST 28147-89 MAC on the 16-round cycle, one-shot and streaming. The full
// 64-bit value is returned; the usual 32-bit MAC is its low half. There is no
// minimum block count and no length block: a short message gets one pass and
// an empty one returns the IV.
#include "GOST_28147_89.h"
#include "cipher/gost89_core.h"

namespace kx {

namespace {

// The tail of t < 8 bytes is zero-padded: XOR it onto the first bytes of acc.
uint64_t mac_tail(const unsigned char* tail, size_t t, const Gost89Key& k, const Gost89Table& tab, uint64_t acc) {
    unsigned char b[8];
    store64(b, acc);
    xor_into(b, tail, t);
    const uint64_t r = gost89_mac16(load64(b), k, tab);
    wipe(b, sizeof b);
    return r;
}

}  // namespace
}  // namespace kx

using namespace kx;

KORVEX_API type_u64 GOST_28147_89_MAC(unsigned char* data, unsigned int len, type_uN<32>* key, type_u64* iv,
                                      unsigned char sbox) {
    uint64_t acc = gost89_block_or_zero(iv);
    if (len == 0) return acc;
    const Gost89Table& t = gost89_table(sbox);
    Gost89Key k = gost89_key(key);
    acc = gost89_mac_blocks(data, len / 8, k, t, acc);
    if (len % 8) acc = mac_tail(data + (len & ~7u), len % 8, k, t, acc);
    gost89_wipe(k);
    return acc;
}

KORVEX_API void GOST_28147_89_MAC_init(type_uN<32>* key, unsigned char sbox, stream_MAC_t* state) {
    copy(&state->key, key, sizeof state->key);
    fill(state->pending, 0, sizeof state->pending);
    store64(&state->acc, 0);
    state->sbox = sbox;
    state->pending_len = 0;
}

KORVEX_API type_u64 GOST_28147_89_MAC_step(unsigned char* data, unsigned int len, stream_MAC_t* state) {
    const Gost89Table& t = gost89_table(state->sbox);
    Gost89Key k = gost89_key(&state->key);
    uint64_t acc = load64(&state->acc);
    unsigned pending = state->pending_len;
    if (len) {
        if (pending) {
            const unsigned take = len < 8 - pending ? len : 8 - pending;
            copy(state->pending + pending, data, take);
            data += take;
            len -= take;
            pending += take;
            if (pending == 8) {
                acc = gost89_mac_blocks(state->pending, 1, k, t, acc);
                pending = 0;
            }
        }
        acc = gost89_mac_blocks(data, len / 8, k, t, acc);
        if (len % 8) {
            // Only reached with pending == 0: a partial first fill used all data.
            copy(state->pending, data + (len & ~7u), len % 8);
            pending = len % 8;
        }
        store64(&state->acc, acc);
        state->pending_len = static_cast<unsigned char>(pending);
    }
    // The value as if the message ended here; the state keeps complete blocks.
    const uint64_t r = pending ? mac_tail(state->pending, pending, k, t, acc) : acc;
    gost89_wipe(k);
    return r;
}
