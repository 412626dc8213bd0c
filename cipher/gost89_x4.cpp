// GOST 28147-89 cycles on four blocks at once, one per 32-bit SSE2 lane. The
// round is the same bit-sliced ANF evaluation as the scalar core, so it is
// constant-time too; four independent blocks fill the vector units where a
// single block's dependency chain would leave them idle.
#include <emmintrin.h>

#include "cipher/gost89_core.h"

namespace kx {
namespace {

struct Lanes {
    __m128i a, b;  // N1 and N2 of the four blocks
};

__attribute__((always_inline)) inline __m128i spread(__m128i t) {
    const __m128i c7 = _mm_set1_epi32(0x77777777);
    return _mm_xor_si128(_mm_add_epi32(t, c7), c7);
}

__attribute__((always_inline)) inline __m128i f4(__m128i s, const __m128i* w) {
    const __m128i m1 = _mm_set1_epi32(0x11111111);
    const __m128i x0 = spread(_mm_and_si128(s, m1));
    const __m128i x1 = spread(_mm_and_si128(_mm_srli_epi32(s, 1), m1));
    const __m128i x2 = spread(_mm_and_si128(_mm_srli_epi32(s, 2), m1));
    const __m128i x3 = spread(_mm_and_si128(_mm_srli_epi32(s, 3), m1));
    const __m128i x01 = _mm_and_si128(x0, x1);
#define KX_POLY(i) \
    _mm_xor_si128(_mm_xor_si128(w[i], _mm_and_si128(x0, w[i + 1])), \
                  _mm_xor_si128(_mm_and_si128(x1, w[i + 2]), _mm_and_si128(x01, w[i + 3])))
    const __m128i c0 = KX_POLY(0);
    const __m128i c2 = KX_POLY(4);
    const __m128i c3 = KX_POLY(8);
#undef KX_POLY
    const __m128i c23 =
        _mm_xor_si128(w[12], _mm_xor_si128(_mm_and_si128(x0, w[13]), _mm_and_si128(x1, w[14])));
    const __m128i y = _mm_xor_si128(
        _mm_xor_si128(c0, _mm_and_si128(x2, _mm_xor_si128(c2, _mm_and_si128(x3, c23)))), _mm_and_si128(x3, c3));
    return _mm_or_si128(_mm_slli_epi32(y, 11), _mm_srli_epi32(y, 21));
}

__attribute__((always_inline)) inline void eight(Lanes& l, const __m128i* k, const __m128i* w, bool up) {
    for (int i = 0; i < 8; i += 2) {
        const int i0 = up ? i : 7 - i, i1 = up ? i + 1 : 6 - i;
        l.b = _mm_xor_si128(l.b, f4(_mm_add_epi32(l.a, k[i0]), w));
        l.a = _mm_xor_si128(l.a, f4(_mm_add_epi32(l.b, k[i1]), w));
    }
}

// Blocks -> lanes: a = the four N1, b = the four N2; and back with the
// halves exchanged, as the 32-round cycles end.
__attribute__((always_inline)) inline Lanes load(const uint64_t* blocks) {
    const __m128i v0 = _mm_shuffle_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(blocks)), 0xD8);
    const __m128i v1 = _mm_shuffle_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(blocks + 2)), 0xD8);
    return Lanes{_mm_unpacklo_epi64(v0, v1), _mm_unpackhi_epi64(v0, v1)};
}

__attribute__((always_inline)) inline void store_exchanged(uint64_t* blocks, const Lanes& l) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(blocks), _mm_unpacklo_epi32(l.b, l.a));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(blocks + 2), _mm_unpackhi_epi32(l.b, l.a));
}

template <bool Decrypt>
void cycle32_x4(uint64_t* blocks, const Gost89Key4& key, const Gost89Table4& table) {
    __m128i k[8], w[15];
    for (int i = 0; i < 8; ++i) k[i] = _mm_load_si128(reinterpret_cast<const __m128i*>(key.k[i]));
    for (int i = 0; i < 15; ++i) w[i] = _mm_load_si128(reinterpret_cast<const __m128i*>(table.w[i]));
    Lanes l = load(blocks);
    eight(l, k, w, true);
    eight(l, k, w, !Decrypt);
    eight(l, k, w, !Decrypt);
    eight(l, k, w, false);
    store_exchanged(blocks, l);
}

}  // namespace

void gost89_encrypt_x4(uint64_t blocks[4], const Gost89Key4& k, const Gost89Table4& t) {
    cycle32_x4<false>(blocks, k, t);
}

void gost89_decrypt_x4(uint64_t blocks[4], const Gost89Key4& k, const Gost89Table4& t) {
    cycle32_x4<true>(blocks, k, t);
}

}  // namespace kx
