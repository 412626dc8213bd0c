// GOST R 34.11-2012 compression internals: the state as eight 64-bit words
// and the LPS transform. S is a byte look-up in pi and L a bit-serial pass
// over the 64 rows of A, run on the words of a value in vector lanes (one
// sign mask per row and word: SSE2, or AVX2 chosen at run time), with the
// look-ups of the other chain of the round function beside it.
#ifndef KORVEX_HASH_STREEBOG_CORE_H
#define KORVEX_HASH_STREEBOG_CORE_H

#include <stdint.h>

#include "core/bytes.h"
#include "hash/streebog_tables.h"
#include "hash/words.h"

namespace kx {
namespace streebog {

typedef words::Words<8> Block;
using words::add_to;
using words::load;
using words::store;
using words::xor_to;

// r := r + v mod 2^512 for a small v (the bit counter).
inline void add_small(Block& r, uint64_t v) {
    for (int i = 0; i < 8 && v; ++i) {
        r.w[i] += v;
        v = r.w[i] < v ? 1 : 0;
    }
}

// S and P: word i of P(S(x)) has as byte j the substitute of byte i of word j.
// The word is split into 32-bit halves, lo and hi, for the L pass.
inline void sp_word(const Block& x, int i, uint32_t& lo, uint32_t& hi) {
    const unsigned char* b = reinterpret_cast<const unsigned char*>(x.w);
    lo = static_cast<uint32_t>(streebog_pi[b[i]]) | static_cast<uint32_t>(streebog_pi[b[8 + i]]) << 8 |
         static_cast<uint32_t>(streebog_pi[b[16 + i]]) << 16 | static_cast<uint32_t>(streebog_pi[b[24 + i]]) << 24;
    hi = static_cast<uint32_t>(streebog_pi[b[32 + i]]) | static_cast<uint32_t>(streebog_pi[b[40 + i]]) << 8 |
         static_cast<uint32_t>(streebog_pi[b[48 + i]]) << 16 | static_cast<uint32_t>(streebog_pi[b[56 + i]]) << 24;
}

inline void sp_halves(const Block& x, uint32_t lo[8], uint32_t hi[8]) {
    for (int i = 0; i < 8; ++i) sp_word(x, i, lo[i], hi[i]);
}

// The vector widths of the L pass. A lane holds one 32-bit half of one word.
// Avx2 is only ever inlined into functions built for AVX2.
struct Sse2 {
    typedef uint32_t U __attribute__((vector_size(16)));
    typedef int32_t S __attribute__((vector_size(16)));
    static constexpr int kLanes = 4;
    // Words i..i+3 from their low and high halves.
    __attribute__((always_inline)) static void join(const U& lo, const U& hi, uint64_t* w) {
        const U w01 = __builtin_shuffle(lo, hi, U{0, 4, 1, 5}), w23 = __builtin_shuffle(lo, hi, U{2, 6, 3, 7});
        __builtin_memcpy(w, &w01, 16);
        __builtin_memcpy(w + 2, &w23, 16);
    }
};

struct Avx2 {
    typedef uint32_t U __attribute__((vector_size(32)));
    typedef int32_t S __attribute__((vector_size(32)));
    static constexpr int kLanes = 8;
    __attribute__((always_inline)) static void join(const U& lo, const U& hi, uint64_t* w) {
        const U w03 = __builtin_shuffle(lo, hi, U{0, 8, 1, 9, 2, 10, 3, 11});
        const U w47 = __builtin_shuffle(lo, hi, U{4, 12, 5, 13, 6, 14, 7, 15});
        __builtin_memcpy(w, &w03, 32);
        __builtin_memcpy(w + 4, &w47, 32);
    }
};

// Row k of A as its low and high 32-bit halves, words 2k and 2k + 1.
typedef uint32_t row_half __attribute__((may_alias));

// Rows consecutive rows of A, from rows on, against the halves in src: a row
// is taken into a word when the top bit of its half is set, read as the sign
// of the half, which then moves up one bit; one mask per row and lane.
template <class Isa, int Rows>
__attribute__((always_inline)) inline void rows_into(const row_half* rows, typename Isa::U& src, typename Isa::U& acc_lo,
                                                     typename Isa::U& acc_hi) {
    typedef typename Isa::U U;
    typedef typename Isa::S S;
#pragma GCC unroll 4
    for (int k = 0; k < Rows; ++k) {
        const U al = U{} + rows[2 * k], ah = U{} + rows[2 * k + 1];  // broadcast
        const U m = reinterpret_cast<U>(reinterpret_cast<S>(src) >> 31);
        src += src;
        acc_lo ^= al & m;
        acc_hi ^= ah & m;
    }
}

// out := L of a value given as halves, word i being hi[i]:lo[i]. The high
// halves meet rows 0..31 and the low ones rows 32..63, for kLanes words at a
// time. When side is given, S and P of that independent value go to side_lo
// and side_hi on the way, a word per eighth of the rows: the table look-ups
// use the scalar ports while the rows use the vector ones. side is not out.
template <class Isa>
__attribute__((always_inline)) inline void l_pass(const uint32_t lo[8], const uint32_t hi[8], Block& out,
                                                  const Block* side = nullptr, uint32_t* side_lo = nullptr,
                                                  uint32_t* side_hi = nullptr) {
    typedef typename Isa::U U;
    constexpr int kGroups = 8 / Isa::kLanes;
    constexpr int kChunk = 8 * kGroups;  // rows between two side words
    // The rows through an opaque pointer, so that the compiler keeps the
    // 512-byte table instead of materialising broadcast copies.
    const uint64_t* table = streebog_A;
    __asm__("" : "+r"(table));
    const row_half* rows = reinterpret_cast<const row_half*>(table);
    int next_side = 0;
#pragma GCC unroll 2
    for (int g = 0; g < kGroups; ++g) {
        U src, acc_lo = U{}, acc_hi = U{};
#pragma GCC unroll 2
        for (int part = 0; part < 2; ++part) {
            __builtin_memcpy(&src, (part ? lo : hi) + Isa::kLanes * g, sizeof src);
#pragma GCC unroll 4
            for (int r = 0; r < 32; r += kChunk) {
                rows_into<Isa, kChunk>(rows + 2 * (32 * part + r), src, acc_lo, acc_hi);
                if (side) {
                    sp_word(*side, next_side, side_lo[next_side], side_hi[next_side]);
                    ++next_side;
                }
            }
        }
        Isa::join(acc_lo, acc_hi, out.w + Isa::kLanes * g);
    }
}

// out := L(P(S(in))); in and out may be the same.
template <class Isa>
__attribute__((always_inline)) inline void lps(const Block& in, Block& out) {
    alignas(32) uint32_t lo[8], hi[8];
    sp_halves(in, lo, hi);
    l_pass<Isa>(lo, hi, out);
}

// One key schedule step: K := LPS(K ^ C[i]) (C[0] is C1).
inline void key_step(Block& K, int i) {
    Block c;
    load(c, streebog_C[i]);
    xor_to(c, K, c);
    lps<Sse2>(c, K);
}

// s := E(K, m); K is left at the last round key. The key schedule and the
// state are two chains of LPS; their L passes alternate, each with S and P
// of the other chain worked out beside it. k_* and s_* hold S and P of the
// next key and state inputs.
template <class Isa>
__attribute__((always_inline)) inline void encrypt(Block& s, Block& K, const Block& m) {
    alignas(32) uint32_t k_lo[8], k_hi[8], s_lo[8], s_hi[8];
    Block t;
    xor_to(s, K, m);
    load(t, streebog_C[0]);
    xor_to(t, K, t);
    sp_halves(t, k_lo, k_hi);
    for (int i = 0; i < 12; ++i) {
        l_pass<Isa>(k_lo, k_hi, K, &s, s_lo, s_hi);  // K := round key i + 1
        if (i < 11) {
            load(t, streebog_C[i + 1]);
            xor_to(t, K, t);
        }
        l_pass<Isa>(s_lo, s_hi, s, &t, k_lo, k_hi);  // after the last round the look-ups are spare
        xor_to(s, s, K);
    }
    wipe(k_lo, sizeof k_lo), wipe(k_hi, sizeof k_hi), wipe(s_lo, sizeof s_lo), wipe(s_hi, sizeof s_hi);
    wipe_obj(t);
}

// h := g_N(h, m).
template <class Isa>
__attribute__((always_inline)) inline void compress_with(Block& h, const Block& N, const Block& m) {
    Block K, t, s;
    xor_to(t, h, N);
    lps<Isa>(t, K);
    encrypt<Isa>(s, K, m);
    for (int i = 0; i < 8; ++i) h.w[i] ^= s.w[i] ^ m.w[i];
    wipe_obj(K), wipe_obj(t), wipe_obj(s);  // keys and states as good as h and m
}

// h := g_N(h, m), on AVX2 where the processor has it (streebog_kernels.cpp).
void compress(Block& h, const Block& N, const Block& m);

}  // namespace streebog
}  // namespace kx

#endif
