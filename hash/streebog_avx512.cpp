// The GOST R 34.11-2012 compression function on AVX-512 with VBMI and GFNI:
// a 512-bit value lives in one register and touches no memory at an address
// that depends on it.
//
// S: the 256-byte pi sits in four registers; two two-table byte permutes
// (vpermi2b) look up the low and high halves by the low seven bits of each
// byte, and the top bit picks one of the two results.
//
// P and L: the kernel holds every value transposed, register byte 8j + i =
// byte j of word i, which is how P lays the bytes out anyway. L maps byte w of
// an input word to an 8-byte contribution that is linear in its bits; the
// contribution's byte j is an 8 x 8 bit matrix M(j, w) applied to the byte,
// which is what vgf2p8affineqb does, one matrix per 64-bit lane. So for each
// input byte index w a byte permute brings byte w of all eight words to every
// lane, the affine step with lane j holding M(j, w) gives byte j of every
// output word, and eight such terms XORed together give L(P(y)) transposed.
// The 64 matrices are A's 64 rows regrouped (512 bytes), built at compile time.
#include <immintrin.h>

#include "core/cpu.h"
#include "hash/streebog_core.h"

namespace kx {
namespace streebog {
namespace {

struct Matrices {
    uint64_t q[8][8];  // q[w][j] = M(j, w) in vgf2p8affineqb's row order
};

// Byte 7 - i of M(j, w) has bit t set when bit 8j + i of the row of A that
// bit 8w + t of a word selects (row 63 - 8w - t) is set.
constexpr Matrices make_matrices() {
    Matrices m{};
    for (int w = 0; w < 8; ++w)
        for (int j = 0; j < 8; ++j) {
            uint64_t q = 0;
            for (int i = 0; i < 8; ++i)
                for (int t = 0; t < 8; ++t)
                    if ((streebog_A[63 - 8 * w - t] >> (8 * j + i)) & 1) q |= uint64_t{1} << (8 * (7 - i) + t);
            m.q[w][j] = q;
        }
    return m;
}

alignas(64) constexpr Matrices kMatrices = make_matrices();

// Byte 8j + i <- byte 8i + j: the transposition, its own inverse.
alignas(64) constexpr unsigned char kTranspose[64] = {
    0, 8,  16, 24, 32, 40, 48, 56, 1, 9,  17, 25, 33, 41, 49, 57, 2, 10, 18, 26, 34, 42,
    50, 58, 3, 11, 19, 27, 35, 43, 51, 59, 4, 12, 20, 28, 36, 44, 52, 60, 5, 13, 21, 29,
    37, 45, 53, 61, 6, 14, 22, 30, 38, 46, 54, 62, 7, 15, 23, 31, 39, 47, 55, 63};

#define KX_AVX512 __attribute__((target("avx512f,avx512bw,avx512vbmi,gfni"), always_inline)) inline

struct Consts {
    __m512i pi[4], q[8], tr;
};

KX_AVX512 void load_consts(Consts& c) {
#pragma GCC unroll 8
    for (int i = 0; i < 4; ++i) c.pi[i] = _mm512_loadu_si512(streebog_pi + 64 * i);
#pragma GCC unroll 8
    for (int w = 0; w < 8; ++w) c.q[w] = _mm512_load_si512(kMatrices.q[w]);
    c.tr = _mm512_load_si512(kTranspose);
}

// vpermb. (GCC 12's unmasked intrinsic reads an undefined value and warns.)
KX_AVX512 __m512i permute(__m512i idx, __m512i x) { return _mm512_maskz_permutexvar_epi8(~__mmask64{0}, idx, x); }

KX_AVX512 __m512i sbox(const Consts& c, __m512i x) {
    const __mmask64 high = _mm512_movepi8_mask(x);
    const __m512i lo = _mm512_permutex2var_epi8(c.pi[0], x, c.pi[1]);
    const __m512i hi = _mm512_permutex2var_epi8(c.pi[2], x, c.pi[3]);
    return _mm512_mask_blend_epi8(high, lo, hi);
}

// L(P(S(x))), x and the result transposed. The byte permute for input byte
// w takes byte 8i + w (byte w of word i) to byte 8j + i of every lane j.
KX_AVX512 __m512i lps(const Consts& c, __m512i x) {
    const __m512i y = sbox(c, x);
    __m512i t[8];
#pragma GCC unroll 8
    for (int w = 0; w < 8; ++w) {
        const __m512i idx = _mm512_set1_epi64(static_cast<long long>(0x3830282018100800ULL + 0x0101010101010101ULL * w));
        t[w] = _mm512_gf2p8affine_epi64_epi8(permute(idx, y), c.q[w], 0);
    }
    const __m512i a = _mm512_ternarylogic_epi64(t[0], t[1], t[2], 0x96);
    const __m512i d = _mm512_ternarylogic_epi64(t[3], t[4], t[5], 0x96);
    return _mm512_ternarylogic_epi64(a, d, _mm512_xor_si512(t[6], t[7]), 0x96);
}

KX_AVX512 __m512i load_t(const Consts& c, const void* p) {
    return permute(c.tr, _mm512_loadu_si512(p));
}

// h := g_N(h, m). Key schedule and state run as two chains side by side.
__attribute__((target("avx512f,avx512bw,avx512vbmi,gfni"))) void compress_impl(Block& h, const Block& N,
                                                                                const Block& m) {
    Consts c;
    load_consts(c);
    const __m512i H = load_t(c, h.w), M = load_t(c, m.w);
    __m512i K = lps(c, _mm512_xor_si512(H, load_t(c, N.w)));
    __m512i s = _mm512_xor_si512(K, M);
    for (int i = 0; i < 12; ++i) {
        s = lps(c, s);
        K = lps(c, _mm512_xor_si512(K, load_t(c, streebog_C[i])));
        s = _mm512_xor_si512(s, K);
    }
    s = _mm512_xor_si512(s, _mm512_xor_si512(H, M));
    _mm512_storeu_si512(h.w, permute(c.tr, s));
}

}  // namespace

bool avx512_available() { return cpu_has_avx512_vbmi_gfni(); }

void compress_avx512(Block& h, const Block& N, const Block& m) { compress_impl(h, N, m); }

}  // namespace streebog
}  // namespace kx
