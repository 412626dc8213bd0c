// The GOST R 34.11-2012 compression function, built twice: with SSE2 (every
// x86-64 processor) and with AVX2, whose eight lanes take the L pass over all
// eight words of a value at once; and the choice between these and the
// AVX-512 kernel. The processor is asked on first use.
#include <immintrin.h>

#include "core/cpu.h"
#include "hash/streebog_core.h"

namespace kx {
namespace streebog {
namespace {

// Byte k of the shuffle that builds bytes 16 half .. 16 half + 15 of the low
// (or high) halves, word i = k / 4 + 4 half, byte j = k % 4, from the 16-byte
// pair of rows j / 2: byte 8 (j % 2) + i of it when j / 2 is part, else zero
// (k % 2 is j % 2).
constexpr char p_index(int half, int part, int k) {
    return (k % 4) / 2 == part ? static_cast<char>(8 * (k % 2) + k / 4 + 4 * half)
                               : static_cast<char>(0x80);
}

template <int Half, int Part>
__attribute__((target("ssse3"), always_inline)) inline __m128i p_shuffle() {
    return _mm_setr_epi8(p_index(Half, Part, 0), p_index(Half, Part, 1), p_index(Half, Part, 2),
                         p_index(Half, Part, 3), p_index(Half, Part, 4), p_index(Half, Part, 5),
                         p_index(Half, Part, 6), p_index(Half, Part, 7), p_index(Half, Part, 8),
                         p_index(Half, Part, 9), p_index(Half, Part, 10), p_index(Half, Part, 11),
                         p_index(Half, Part, 12), p_index(Half, Part, 13), p_index(Half, Part, 14),
                         p_index(Half, Part, 15));
}

// P from S(x) in r (16 bytes each): each 16 bytes of the halves gather from
// a pair of 16-byte row pairs. Rows 0..3 give the low halves, 4..7 the high.
__attribute__((target("ssse3"), always_inline)) inline void p_halves(const __m128i r[4], uint32_t lo[8],
                                                                      uint32_t hi[8]) {
    __m128i* out[2] = {reinterpret_cast<__m128i*>(lo), reinterpret_cast<__m128i*>(hi)};
    for (int w = 0; w < 2; ++w) {
        const __m128i a = r[2 * w], b = r[2 * w + 1];
        _mm_storeu_si128(out[w], _mm_or_si128(_mm_shuffle_epi8(a, p_shuffle<0, 0>()),
                                              _mm_shuffle_epi8(b, p_shuffle<0, 1>())));
        _mm_storeu_si128(out[w] + 1, _mm_or_si128(_mm_shuffle_epi8(a, p_shuffle<1, 0>()),
                                                  _mm_shuffle_epi8(b, p_shuffle<1, 1>())));
    }
}

// S by sixteen shuffles: at step h the bytes whose high nibble is h are the
// ones below 16 after subtracting 16 h; a saturating add of 0x70 leaves them
// below 0x80 (pshufb looks up their low nibble in pi[16 h..]) and takes every
// other byte to 0x80 or above (pshufb gives zero).
__attribute__((target("ssse3"), always_inline)) inline void s_body(const void* in, __m128i r[4]) {
    __m128i v[4];
    for (int q = 0; q < 4; ++q) {
        v[q] = _mm_loadu_si128(static_cast<const __m128i*>(in) + q);
        r[q] = _mm_setzero_si128();
    }
    const __m128i bias = _mm_set1_epi8(0x70), step = _mm_set1_epi8(16);
    for (int h = 0; h < 16; ++h) {
        const __m128i row = _mm_loadu_si128(reinterpret_cast<const __m128i*>(streebog_pi + 16 * h));
        for (int q = 0; q < 4; ++q) {
            r[q] = _mm_or_si128(r[q], _mm_shuffle_epi8(row, _mm_adds_epu8(v[q], bias)));
            v[q] = _mm_sub_epi8(v[q], step);
        }
    }
}

__attribute__((target("ssse3"), always_inline)) inline void sp_body(const Block& x, uint32_t lo[8],
                                                                     uint32_t hi[8]) {
    __m128i r[4];
    s_body(x.w, r);
    p_halves(r, lo, hi);
}

__attribute__((target("ssse3"))) void s_ssse3(unsigned char x[64]) {
    __m128i r[4];
    s_body(x, r);
    for (int q = 0; q < 4; ++q) _mm_storeu_si128(reinterpret_cast<__m128i*>(x) + q, r[q]);
}

// The same S on 32 bytes at a time.
__attribute__((target("avx2"), always_inline)) inline void sp_body_avx2(const Block& x, uint32_t lo[8],
                                                                         uint32_t hi[8]) {
    __m256i v[2], r[2];
    for (int q = 0; q < 2; ++q) {
        v[q] = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(x.w + 4 * q));
        r[q] = _mm256_setzero_si256();
    }
    const __m256i bias = _mm256_set1_epi8(0x70), step = _mm256_set1_epi8(16);
    for (int h = 0; h < 16; ++h) {
        const __m256i row =
            _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(streebog_pi + 16 * h)));
        for (int q = 0; q < 2; ++q) {
            r[q] = _mm256_or_si256(r[q], _mm256_shuffle_epi8(row, _mm256_adds_epu8(v[q], bias)));
            v[q] = _mm256_sub_epi8(v[q], step);
        }
    }
    const __m128i q4[4] = {_mm256_castsi256_si128(r[0]), _mm256_extracti128_si256(r[0], 1),
                           _mm256_castsi256_si128(r[1]), _mm256_extracti128_si256(r[1], 1)};
    p_halves(q4, lo, hi);
}

void compress_sse2(Block& h, const Block& N, const Block& m) { compress_with<Sse2>(h, N, m); }

__attribute__((target("avx2"))) void compress_avx2(Block& h, const Block& N, const Block& m) {
    compress_with<Avx2>(h, N, m);
}

}  // namespace

__attribute__((target("ssse3"))) void sp_ssse3(const Block& x, uint32_t lo[8], uint32_t hi[8]) { sp_body(x, lo, hi); }

__attribute__((target("avx2"))) void sp_avx2(const Block& x, uint32_t lo[8], uint32_t hi[8]) { sp_body_avx2(x, lo, hi); }

void s_bytes(unsigned char x[64]) {
    if (cpu_has_ssse3()) {
        s_ssse3(x);
    } else {
        for (int i = 0; i < 64; ++i) x[i] = streebog_pi[x[i]];
    }
}

void sp_sse2(const Block& x, uint32_t lo[8], uint32_t hi[8]) {
    if (cpu_has_ssse3())
        sp_ssse3(x, lo, hi);
    else
        sp_halves(x, lo, hi);
}

void compress_portable(Block& h, const Block& N, const Block& m) {
    if (cpu_has_avx2())
        compress_avx2(h, N, m);
    else
        compress_sse2(h, N, m);
}

int forced_kernel = 0;

void compress(Block& h, const Block& N, const Block& m) {
    if (forced_kernel != 1 && avx512_available())
        compress_avx512(h, N, m);
    else
        compress_portable(h, N, m);
}

}  // namespace streebog
}  // namespace kx
