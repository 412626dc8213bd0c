// GOST R 34.11-2012 compression internals: the state as eight 64-bit words
// and the LPS transform of the portable kernels. L is a bit-serial pass over
// the 64 rows of A, run on the words of a value in vector lanes (one sign mask
// per row and word: SSE2, or AVX2 chosen at run time). S and P together come
// from Isa::sp: sixteen in-register byte shuffles over pi (SSSE3 and up, no
// address depends on the value), or on processors without SSSE3 the byte
// look-up of sp_halves.
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

// S and P by table look-ups, for processors without SSSE3 only (the address
// depends on the value): word i of P(S(x)) has as byte j the substitute of
// byte i of word j.
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

// S and P of x, as the halves the L pass takes (streebog_kernels.cpp).
void sp_ssse3(const Block& x, uint32_t lo[8], uint32_t hi[8]);
void sp_avx2(const Block& x, uint32_t lo[8], uint32_t hi[8]);
void sp_sse2(const Block& x, uint32_t lo[8], uint32_t hi[8]);  // SSSE3 when there, else sp_halves
// S alone on 64 bytes in place, by the same shuffles (look-ups without SSSE3).
void s_bytes(unsigned char x[64]);

// The vector widths of the L pass. A lane holds one 32-bit half of one word.
// Avx2 is only ever inlined into functions built for AVX2.
struct Sse2 {
    typedef uint32_t U __attribute__((vector_size(16)));
    typedef int32_t S __attribute__((vector_size(16)));
    static constexpr int kLanes = 4;
    // Words i..i+3 from their low and high halves.
    __attribute__((always_inline)) static void join(const U& lo, const U& hi, uint64_t* w) {
        const U w01 = __builtin_shufflevector(lo, hi, 0, 4, 1, 5), w23 = __builtin_shufflevector(lo, hi, 2, 6, 3, 7);
        __builtin_memcpy(w, &w01, 16);
        __builtin_memcpy(w + 2, &w23, 16);
    }
    static void sp(const Block& x, uint32_t lo[8], uint32_t hi[8]) { sp_sse2(x, lo, hi); }
};

struct Avx2 {
    typedef uint32_t U __attribute__((vector_size(32)));
    typedef int32_t S __attribute__((vector_size(32)));
    static constexpr int kLanes = 8;
    __attribute__((always_inline)) static void join(const U& lo, const U& hi, uint64_t* w) {
        const U w03 = __builtin_shufflevector(lo, hi, 0, 8, 1, 9, 2, 10, 3, 11);
        const U w47 = __builtin_shufflevector(lo, hi, 4, 12, 5, 13, 6, 14, 7, 15);
        __builtin_memcpy(w, &w03, 32);
        __builtin_memcpy(w + 4, &w47, 32);
    }
    static void sp(const Block& x, uint32_t lo[8], uint32_t hi[8]) { sp_avx2(x, lo, hi); }
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
// time.
template <class Isa>
__attribute__((always_inline)) inline void l_pass(const uint32_t lo[8], const uint32_t hi[8], Block& out) {
    typedef typename Isa::U U;
    constexpr int kGroups = 8 / Isa::kLanes;
    // The rows through an opaque pointer, so that the compiler keeps the
    // 512-byte table instead of materialising broadcast copies.
    const uint64_t* table = streebog_A;
    __asm__("" : "+r"(table));
    const row_half* rows = reinterpret_cast<const row_half*>(table);
#pragma GCC unroll 2
    for (int g = 0; g < kGroups; ++g) {
        U src, acc_lo = U{}, acc_hi = U{};
#pragma GCC unroll 2
        for (int part = 0; part < 2; ++part) {
            __builtin_memcpy(&src, (part ? lo : hi) + Isa::kLanes * g, sizeof src);
            rows_into<Isa, 32>(rows + 2 * (32 * part), src, acc_lo, acc_hi);
        }
        Isa::join(acc_lo, acc_hi, out.w + Isa::kLanes * g);
    }
}

// out := L(P(S(in))); in and out may be the same.
template <class Isa>
__attribute__((always_inline)) inline void lps(const Block& in, Block& out) {
    alignas(32) uint32_t lo[8], hi[8];
    Isa::sp(in, lo, hi);
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
// state are two chains of LPS, worked a round at a time side by side.
template <class Isa>
__attribute__((always_inline)) inline void encrypt(Block& s, Block& K, const Block& m) {
    alignas(32) uint32_t k_lo[8], k_hi[8], s_lo[8], s_hi[8];
    Block t;
    xor_to(s, K, m);
    for (int i = 0; i < 12; ++i) {
        load(t, streebog_C[i]);
        xor_to(t, K, t);
        Isa::sp(t, k_lo, k_hi);
        Isa::sp(s, s_lo, s_hi);
        l_pass<Isa>(k_lo, k_hi, K);  // K := round key i + 1
        l_pass<Isa>(s_lo, s_hi, s);
        xor_to(s, s, K);
    }
    volatile uint32_t* d[4] = {k_lo, k_hi, s_lo, s_hi};
    for (int j = 0; j < 4; ++j)
        for (int i = 0; i < 8; ++i) d[j][i] = 0;
    volatile uint64_t* tv = t.w;
    for (int i = 0; i < 8; ++i) tv[i] = 0;
}

// h := g_N(h, m).
template <class Isa>
__attribute__((always_inline)) inline void compress_with(Block& h, const Block& N, const Block& m) {
    Block K, t, s;
    xor_to(t, h, N);
    lps<Isa>(t, K);
    encrypt<Isa>(s, K, m);
    for (int i = 0; i < 8; ++i) h.w[i] ^= s.w[i] ^ m.w[i];
    // The round keys and states are as good as h: wiped with word stores.
    volatile uint64_t* d[3] = {K.w, t.w, s.w};
    for (int j = 0; j < 3; ++j)
        for (int i = 0; i < 8; ++i) d[j][i] = 0;
}

// h := g_N(h, m) on the fastest kernel the processor has: AVX-512 with VBMI
// and GFNI (streebog_avx512.cpp), else AVX2, else SSE2 (streebog_kernels.cpp).
void compress(Block& h, const Block& N, const Block& m);

// The kernels by name, for tests that check each against the others.
// compress_avx512 may only be called when avx512_available().
void compress_portable(Block& h, const Block& N, const Block& m);  // AVX2 or SSE2
void compress_avx512(Block& h, const Block& N, const Block& m);
bool avx512_available();
// 1 keeps compress() on compress_portable; set only by tests that link the
// library's sources (it is not exported), 0 everywhere else.
extern int forced_kernel;

}  // namespace streebog
}  // namespace kx

#endif
