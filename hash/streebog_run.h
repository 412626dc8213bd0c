// The running values of one GOST R 34.11-2012 message (chaining value, block
// sum, bit counter) and the steps over them, shared by the one-shot and
// streaming hashes and by PBKDF2, which runs its HMACs on them directly.
#ifndef KORVEX_HASH_STREEBOG_RUN_H
#define KORVEX_HASH_STREEBOG_RUN_H

#include "hash/streebog_core.h"

namespace kx {
namespace streebog {

struct Run {
    Block h, sigma, N;
};

// Overwrites a secret with word stores that cannot be dropped as dead.
template <class T>
inline void wipe_words(T& v) {
    static_assert(sizeof(T) % 8 == 0, "whole words");
    volatile uint64_t* d = reinterpret_cast<volatile uint64_t*>(&v);
    for (size_t i = 0; i < sizeof(T) / 8; ++i) d[i] = 0;
}

inline void absorb_block(Run& r, const Block& m) {
    compress(r.h, r.N, m);
    add_to(r.sigma, r.sigma, m);
    add_small(r.N, 512);
}

inline void absorb(Run& r, const unsigned char* p, size_t blocks) {
    Block m;
    for (; blocks; --blocks, p += 64) {
        load(m, p);
        absorb_block(r, m);
    }
    wipe_words(m);
}

// The last block (t bytes, then 0x01, then zeros; formed even when t is 0),
// then the counter and the sum with a zero N. The result is r.h.
inline void finish(Run& r, const unsigned char* tail, unsigned t) {
    unsigned char buf[64];
    copy(buf, tail, t);
    buf[t] = 0x01;
    fill(buf + t + 1, 0, 63 - t);
    Block m;
    load(m, buf);
    compress(r.h, r.N, m);
    add_to(r.sigma, r.sigma, m);
    add_small(r.N, 8ull * t);
    const Block zero = {};
    compress(r.h, zero, r.N);
    compress(r.h, zero, r.sigma);
    wipe_words(m);
    wipe_words(buf);
}

}  // namespace streebog
}  // namespace kx

#endif
