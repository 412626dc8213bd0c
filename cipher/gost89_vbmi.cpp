// GOST 28147-89 on AVX-512 VBMI: sixteen blocks per 512-bit register, one
// 32-bit lane per half. The eight S-boxes are held in two registers, built
// once per call from the public ANF words, and the substitution is two
// in-register byte permutes (vpermb) per round: the round reads no memory at
// all, so neither its addresses nor its timing depend on key or data (the
// same argument as for vector-permute AES).
//
// Index byte j of a lane holds byte position j in bits 5:4 and one nibble of
// the sum in bits 3:0, so the 64-byte table "lo" holds S(2j) at 16j + x and
// "hi" holds S(2j+1) << 4 there.

// The 512-bit values never cross a call boundary that is not itself compiled
// for AVX-512, so the ABI note does not apply; GCC 12's AVX-512 headers trip
// its own uninitialised-value warning on their "undefined" source operands.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wpsabi"
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include <immintrin.h>

#include "cipher/gost89_kernels.h"

#define KX_VBMI __attribute__((target("avx512f,avx512bw,avx512vbmi"), always_inline)) inline

namespace kx {
namespace {

struct Boxes {
    __m512i lo, hi, nib, pos;
};

// The S-boxes from the ANF words: the round function evaluated on every
// nibble set to x, x = 0..15, the rotation undone; then
// byte j of lane x goes to byte 16j + x.
__attribute__((target("avx512f,avx512bw,avx512vbmi"))) Boxes boxes(const Gost89TableWide& t) {
    uint32_t w[16] = {};
    for (int m = 0; m < 15; ++m) w[m] = t.w[m][0];
    alignas(64) uint32_t v[16];
    for (uint32_t i = 0; i < 16; ++i) v[i] = gost89_f(0x11111111u * i, w);
    const __m512i y = _mm512_ror_epi32(_mm512_load_si512(v), 11);
    alignas(64) unsigned char perm[64];
    for (int j = 0; j < 4; ++j)
        for (int i = 0; i < 16; ++i) perm[16 * j + i] = static_cast<unsigned char>(4 * i + j);
    const __m512i s = _mm512_permutexvar_epi8(_mm512_load_si512(perm), y);
    Boxes b;
    b.nib = _mm512_set1_epi32(0x0F0F0F0F);
    b.pos = _mm512_set1_epi32(0x30201000);
    b.lo = _mm512_and_si512(s, b.nib);
    b.hi = _mm512_andnot_si512(b.nib, s);
    return b;
}

// d ^ f(s): two index vectors ((s & 0F) | pos, in one ternary op each), two
// permutes, each rotated by 11 and both XORed into d in one ternary op (so
// the chain after the permutes is two operations, not three).
KX_VBMI __m512i xor_f(__m512i d, __m512i s, const Boxes& b) {
    const __m512i il = _mm512_ternarylogic_epi32(s, b.nib, b.pos, 0xEA);
    const __m512i ih = _mm512_ternarylogic_epi32(_mm512_srli_epi32(s, 4), b.nib, b.pos, 0xEA);
    const __m512i yl = _mm512_rol_epi32(_mm512_permutexvar_epi8(il, b.lo), 11);
    const __m512i yh = _mm512_rol_epi32(_mm512_permutexvar_epi8(ih, b.hi), 11);
    return _mm512_ternarylogic_epi32(d, yl, yh, 0x96);
}

// Subkey index of round r (0..31): 32-Z takes K0..K7 three times then K7..K0;
// 32-R takes K0..K7 once then K7..K0 three times; the 16-round MAC cycle is
// the first half of 32-Z.
constexpr int subkey(int r, bool decrypt) {
    return (decrypt ? r < 8 : r < 24) ? r % 8 : 7 - r % 8;
}

// G independent groups of sixteen blocks, the rounds interleaved over the
// groups so that the permutes' latency is hidden. k holds the subkeys, one
// per lane (broadcast for one key).
template <int G, int Rounds, bool Decrypt>
KX_VBMI void rounds(__m512i* a, __m512i* b, const __m512i* k, const Boxes& x) {
#pragma GCC unroll 32
    for (int r = 0; r < Rounds; r += 2) {
#pragma GCC unroll 4
        for (int g = 0; g < G; ++g) b[g] = xor_f(b[g], _mm512_add_epi32(a[g], k[subkey(r, Decrypt)]), x);
#pragma GCC unroll 4
        for (int g = 0; g < G; ++g) a[g] = xor_f(a[g], _mm512_add_epi32(b[g], k[subkey(r + 1, Decrypt)]), x);
    }
}

// Blocks <-> lanes: a takes the low (N1) words, b the high (N2) ones; 32-Z and
// 32-R end by exchanging the halves, so b goes back to the low words.
template <int G, bool Decrypt>
KX_VBMI void cycle(uint64_t* blocks, const __m512i* k, const Boxes& x) {
    const __m512i even = _mm512_set_epi32(30, 28, 26, 24, 22, 20, 18, 16, 14, 12, 10, 8, 6, 4, 2, 0);
    const __m512i odd = _mm512_add_epi32(even, _mm512_set1_epi32(1));
    const __m512i lo = _mm512_set_epi32(23, 7, 22, 6, 21, 5, 20, 4, 19, 3, 18, 2, 17, 1, 16, 0);
    const __m512i hi = _mm512_add_epi32(lo, _mm512_set1_epi32(8));
    __m512i a[G], b[G];
#pragma GCC unroll 4
    for (int g = 0; g < G; ++g) {
        const __m512i u0 = _mm512_loadu_si512(blocks + 16 * g), u1 = _mm512_loadu_si512(blocks + 16 * g + 8);
        a[g] = _mm512_permutex2var_epi32(u0, even, u1);
        b[g] = _mm512_permutex2var_epi32(u0, odd, u1);
    }
    rounds<G, 32, Decrypt>(a, b, k, x);
#pragma GCC unroll 4
    for (int g = 0; g < G; ++g) {
        _mm512_storeu_si512(blocks + 16 * g, _mm512_permutex2var_epi32(b[g], lo, a[g]));
        _mm512_storeu_si512(blocks + 16 * g + 8, _mm512_permutex2var_epi32(b[g], hi, a[g]));
    }
}

template <bool Decrypt>
__attribute__((target("avx512f,avx512bw,avx512vbmi"))) void many(uint64_t* blocks, size_t n, const Gost89Key& key,
                                                                 const Gost89TableWide& t) {
    const Boxes x = boxes(t);
    __m512i k[8];
    for (int i = 0; i < 8; ++i) k[i] = _mm512_set1_epi32(static_cast<int>(key.k[i]));
    for (; n >= 64; n -= 64, blocks += 64) cycle<4, Decrypt>(blocks, k, x);
    for (; n >= 16; n -= 16, blocks += 16) cycle<1, Decrypt>(blocks, k, x);
    if (n) {
        // A short group runs in a zero-filled full one.
        uint64_t buf[16] = {};
        copy(buf, blocks, 8 * n);
        cycle<1, Decrypt>(buf, k, x);
        copy(blocks, buf, 8 * n);
        wipe(buf, sizeof buf);
    }
    for (int i = 0; i < 8; ++i) k[i] = _mm512_setzero_si512();
    __asm__ volatile("" : : "m"(k));
}

}  // namespace

void gost89_many_vbmi(uint64_t* blocks, size_t n, const Gost89Key& k, const Gost89TableWide& t, bool decrypt) {
    if (decrypt) many<true>(blocks, n, k, t);
    else many<false>(blocks, n, k, t);
}

// Four blocks under four keys (lanes 0..3; the other lanes idle).
__attribute__((target("avx512f,avx512bw,avx512vbmi"))) void gost89_x4_vbmi(uint64_t blocks[4], const Gost89Key4& key,
                                                                           const Gost89TableWide& t) {
    const Boxes x = boxes(t);
    __m512i k[8];
    for (int i = 0; i < 8; ++i) k[i] = _mm512_castsi128_si512(_mm_loadu_si128(reinterpret_cast<const __m128i*>(key.k[i])));
    uint64_t buf[16] = {};
    copy(buf, blocks, 32);
    cycle<1, false>(buf, k, x);
    copy(blocks, buf, 32);
    wipe(buf, sizeof buf);
    for (int i = 0; i < 8; ++i) k[i] = _mm512_setzero_si512();
    __asm__ volatile("" : : "m"(k));
}

}  // namespace kx
