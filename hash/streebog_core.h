// GOST R 34.11-2012 compression internals: the state as eight 64-bit words
// and the LPS transform. S is a byte look-up in pi and L a bit-serial pass
// over the 64 rows of A; the pass runs on all eight words at once in vector
// lanes (one sign mask per row and word: SSE2, or AVX2 chosen at run time),
// and on two independent values at a time where the round function allows it
// (the state and the key schedule).
#ifndef KORVEX_HASH_STREEBOG_CORE_H
#define KORVEX_HASH_STREEBOG_CORE_H

#include <stdint.h>

#include "encoding/bytes.h"
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

typedef uint32_t u32x4 __attribute__((vector_size(16)));
typedef int32_t i32x4 __attribute__((vector_size(16)));

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

// Thirty-two rows of A, starting at rows, against the halves in src: row r
// is taken into a word when bit 31 - r of its half is set. A lane of a
// vector holds one half of one of four words; the bit is read as the sign of
// the half shifted left r times, giving one mask per row and lane. acc[n][0]
// collects the low and acc[n][1] the high halves of the four results.
template <int Count>
__attribute__((always_inline)) inline void rows32(const uint64_t* rows, u32x4 (&src)[Count], u32x4 (&acc)[Count][2]) {
#pragma GCC unroll 1
    for (int k = 0; k < 32; k += 2) {
        u32x4 pair;  // {low k, high k, low k+1, high k+1}
        __builtin_memcpy(&pair, rows + k, 16);
        const u32x4 al[2] = {__builtin_shuffle(pair, u32x4{0, 0, 0, 0}), __builtin_shuffle(pair, u32x4{2, 2, 2, 2})};
        const u32x4 ah[2] = {__builtin_shuffle(pair, u32x4{1, 1, 1, 1}), __builtin_shuffle(pair, u32x4{3, 3, 3, 3})};
#pragma GCC unroll 2
        for (int r = 0; r < 2; ++r)
#pragma GCC unroll 2
            for (int n = 0; n < Count; ++n) {
                const u32x4 m = reinterpret_cast<u32x4>(reinterpret_cast<i32x4>(src[n]) >> 31);
                src[n] += src[n];
                acc[n][0] ^= al[r] & m;
                acc[n][1] ^= ah[r] & m;
            }
    }
}

typedef uint32_t u32x8 __attribute__((vector_size(32)));
typedef int32_t i32x8 __attribute__((vector_size(32)));

// The rows with eight lanes (AVX2): a vector holds the matching halves of
// all eight words, so one pass over the rows covers the whole value. Takes
// Rows consecutive rows of A, from rows on, against the halves in src; the
// row halves are broadcast straight from the table (32-bit words 2k and
// 2k + 1 for row k).
typedef uint32_t row_half __attribute__((may_alias));

template <int Count, int Rows>
__attribute__((always_inline)) inline void rows_x8(const row_half* rows, u32x8 (&src)[Count], u32x8 (&acc)[Count][2]) {
#pragma GCC unroll 4
    for (int k = 0; k < Rows; ++k) {
        // One load each, no shuffle.
        const u32x8 al = u32x8{} + rows[2 * k], ah = u32x8{} + rows[2 * k + 1];
#pragma GCC unroll 2
        for (int n = 0; n < Count; ++n) {
            const u32x8 m = reinterpret_cast<u32x8>(reinterpret_cast<i32x8>(src[n]) >> 31);
            src[n] += src[n];
            acc[n][0] ^= al & m;
            acc[n][1] ^= ah & m;
        }
    }
}

// The 64-bit words of an eight-lane result from its low and high halves.
__attribute__((always_inline)) inline void join_x8(const u32x8& lo, const u32x8& hi, Block& out) {
    const u32x8 w03 = __builtin_shuffle(lo, hi, u32x8{0, 8, 1, 9, 2, 10, 3, 11});
    const u32x8 w47 = __builtin_shuffle(lo, hi, u32x8{4, 12, 5, 13, 6, 14, 7, 15});
    __builtin_memcpy(out.w, &w03, 32);
    __builtin_memcpy(out.w + 4, &w47, 32);
}

// The rows through an opaque pointer, so that the compiler keeps the
// 512-byte table instead of materialising broadcast copies.
inline const uint64_t* rows_of_a() {
    const uint64_t* rows = streebog_A;
    __asm__("" : "+r"(rows));
    return rows;
}

// out := L of the value given as halves (eight lanes), while S and P of an
// independent value, side, are worked out beside it a word per eight rows:
// the table look-ups use the scalar ports while the rows use the vector ones.
__attribute__((always_inline)) inline void l_beside_sp(const uint32_t lo[8], const uint32_t hi[8], Block& out,
                                                       const Block& side, uint32_t side_lo[8], uint32_t side_hi[8]) {
    const row_half* rows = reinterpret_cast<const row_half*>(rows_of_a());
    u32x8 src[1], acc[1][2] = {{u32x8{}, u32x8{}}};
    __builtin_memcpy(&src[0], hi, 32);
#pragma GCC unroll 8
    for (int i = 0; i < 8; ++i) {
        if (i == 4) __builtin_memcpy(&src[0], lo, 32);  // rows 32..63 meet the low halves
        rows_x8<1, 8>(rows + 16 * i, src, acc);
        sp_word(side, i, side_lo[i], side_hi[i]);
    }
    join_x8(acc[0][0], acc[0][1], out);
}

// L on Count values given as 32-bit halves: out[n] word i := L(hi[n][i]:lo[n][i]).
// With four lanes (Wide false, SSE2) words 0..3 and 4..7 are done in two
// passes, which keeps everything in registers; with eight lanes (Wide true,
// only inlined into functions built for AVX2) in one.
template <bool Wide, int Count>
__attribute__((always_inline)) inline void l_pass(const uint32_t (*lo)[8], const uint32_t (*hi)[8],
                                                  Block* const out[Count]) {
    const uint64_t* rows = rows_of_a();
    if constexpr (Wide) {
        u32x8 src[Count];
        u32x8 acc[Count][2];
#pragma GCC unroll 2
        for (int n = 0; n < Count; ++n) {
            __builtin_memcpy(&src[n], hi[n], 32);
            acc[n][0] = u32x8{};
            acc[n][1] = u32x8{};
        }
        const row_half* halves = reinterpret_cast<const row_half*>(rows);
        rows_x8<Count, 32>(halves, src, acc);  // rows 0..31 meet the high halves
#pragma GCC unroll 2
        for (int n = 0; n < Count; ++n) __builtin_memcpy(&src[n], lo[n], 32);
        rows_x8<Count, 32>(halves + 64, src, acc);
#pragma GCC unroll 2
        for (int n = 0; n < Count; ++n) join_x8(acc[n][0], acc[n][1], *out[n]);
    } else {
        for (int g = 0; g < 2; ++g) {
            u32x4 src[Count];
            u32x4 acc[Count][2];
#pragma GCC unroll 2
            for (int n = 0; n < Count; ++n) {
                __builtin_memcpy(&src[n], &hi[n][4 * g], 16);
                acc[n][0] = u32x4{0, 0, 0, 0};
                acc[n][1] = u32x4{0, 0, 0, 0};
            }
            rows32<Count>(rows, src, acc);  // rows 0..31 meet the high halves
#pragma GCC unroll 2
            for (int n = 0; n < Count; ++n) __builtin_memcpy(&src[n], &lo[n][4 * g], 16);
            rows32<Count>(rows + 32, src, acc);
#pragma GCC unroll 2
            for (int n = 0; n < Count; ++n)
#pragma GCC unroll 4
                for (int i = 0; i < 4; ++i)
                    out[n]->w[4 * g + i] = static_cast<uint64_t>(acc[n][1][i]) << 32 | acc[n][0][i];
        }
    }
}

// out[n] := L(P(S(in[n]))) for n < Count; in and out may be the same.
template <bool Wide, int Count>
__attribute__((always_inline)) inline void lps(const Block* const in[Count], Block* const out[Count]) {
    alignas(32) uint32_t lo[Count][8], hi[Count][8];
    for (int n = 0; n < Count; ++n) sp_halves(*in[n], lo[n], hi[n]);
    l_pass<Wide, Count>(lo, hi, out);
}

template <bool Wide>
__attribute__((always_inline)) inline void lps1(const Block& in, Block& out) {
    const Block* i[1] = {&in};
    Block* o[1] = {&out};
    lps<Wide, 1>(i, o);
}

// One key schedule step: K := LPS(K ^ C[i]) (C[0] is C1).
inline void key_step(Block& K, int i) {
    Block t;
    Block c;
    load(c, streebog_C[i]);
    xor_to(t, K, c);
    lps1<false>(t, K);
}

// s := E(K, m); K is left at the last round key.
template <bool Wide>
__attribute__((always_inline)) inline void encrypt(Block& s, Block& K, const Block& m) {
    xor_to(s, K, m);
    if constexpr (Wide) {
        // The key schedule and the state are two chains of LPS; their L
        // passes alternate, each with the S and P of the other chain beside
        // it. ks/ss hold S and P of the next key and state inputs.
        alignas(32) uint32_t ks_lo[8], ks_hi[8], ss_lo[8], ss_hi[8];
        Block t;
        load(t, streebog_C[0]);
        xor_to(t, K, t);
        sp_halves(t, ks_lo, ks_hi);
        for (int i = 0; i < 12; ++i) {
            l_beside_sp(ks_lo, ks_hi, K, s, ss_lo, ss_hi);  // K := round key i + 1
            if (i < 11) {
                load(t, streebog_C[i + 1]);
                xor_to(t, K, t);
            }
            l_beside_sp(ss_lo, ss_hi, s, t, ks_lo, ks_hi);  // the last look-ups are spare
            xor_to(s, s, K);
        }
    } else {
        for (int i = 0; i < 12; ++i) {
            Block c, t;
            load(c, streebog_C[i]);
            xor_to(t, K, c);
            // The state's LPS and the next round key do not depend on each other.
            const Block* in[2] = {&s, &t};
            Block* out[2] = {&s, &K};
            lps<Wide, 2>(in, out);
            xor_to(s, s, K);
        }
    }
}

// h := g_N(h, m).
template <bool Wide>
__attribute__((always_inline)) inline void compress_with(Block& h, const Block& N, const Block& m) {
    Block K, t, s;
    xor_to(t, h, N);
    lps1<Wide>(t, K);
    encrypt<Wide>(s, K, m);
    for (int i = 0; i < 8; ++i) h.w[i] ^= s.w[i] ^ m.w[i];
}

// h := g_N(h, m), on AVX2 where the processor has it (streebog_kernels.cpp).
void compress(Block& h, const Block& N, const Block& m);

}  // namespace streebog
}  // namespace kx

#endif
