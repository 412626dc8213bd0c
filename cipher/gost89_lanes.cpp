// GOST 28147-89 cycles on several blocks at once, one block per 32-bit lane
// of a vector register. The rounds are the core's templates (gost89_core.h)
// instantiated over GCC vector types: the SSE2 four-lane form (every x86-64)
// and the AVX2 eight-lane form, which runs only where the processor and the
// system support it.

// The eight-lane helpers pass 32-byte vectors between functions that are
// always inlined into the AVX2 kernel, so the ABI note does not apply.
#pragma GCC diagnostic ignored "-Wpsabi"

#include <immintrin.h>

#include "cipher/gost89_kernels.h"
#include "core/cpu.h"

namespace kx {
namespace {

typedef uint32_t V4 __attribute__((vector_size(16)));
typedef uint32_t V8 __attribute__((vector_size(32)));

// Blocks <-> lanes: a holds the N1 halves, b the N2 halves; the cycles end by
// exchanging the halves, so b goes back to the low words. The eight-lane form
// keeps the lanes in the order the 128-bit shuffles leave them, which the
// inverse undoes.
__attribute__((always_inline)) inline void split(const uint64_t* p, V4& a, V4& b) {
    const __m128 u0 = _mm_loadu_ps(reinterpret_cast<const float*>(p));
    const __m128 u1 = _mm_loadu_ps(reinterpret_cast<const float*>(p + 2));
    const __m128 x = _mm_shuffle_ps(u0, u1, _MM_SHUFFLE(2, 0, 2, 0)), y = _mm_shuffle_ps(u0, u1, _MM_SHUFFLE(3, 1, 3, 1));
    __builtin_memcpy(&a, &x, sizeof a);
    __builtin_memcpy(&b, &y, sizeof b);
}
__attribute__((always_inline)) inline void join(uint64_t* p, const V4& a, const V4& b) {
    __m128i x, y;
    __builtin_memcpy(&x, &a, sizeof x);
    __builtin_memcpy(&y, &b, sizeof y);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_unpacklo_epi32(y, x));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 2), _mm_unpackhi_epi32(y, x));
}
__attribute__((target("avx2"), always_inline)) inline void split(const uint64_t* p, V8& a, V8& b) {
    const __m256 u0 = _mm256_loadu_ps(reinterpret_cast<const float*>(p));
    const __m256 u1 = _mm256_loadu_ps(reinterpret_cast<const float*>(p + 4));
    const __m256 x = _mm256_shuffle_ps(u0, u1, _MM_SHUFFLE(2, 0, 2, 0));
    const __m256 y = _mm256_shuffle_ps(u0, u1, _MM_SHUFFLE(3, 1, 3, 1));
    __builtin_memcpy(&a, &x, sizeof a);
    __builtin_memcpy(&b, &y, sizeof b);
}
__attribute__((target("avx2"), always_inline)) inline void join(uint64_t* p, const V8& a, const V8& b) {
    __m256i x, y;
    __builtin_memcpy(&x, &a, sizeof x);
    __builtin_memcpy(&y, &b, sizeof y);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm256_unpacklo_epi32(y, x));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + 4), _mm256_unpackhi_epi32(y, x));
}

template <class V, int L, bool Decrypt>
__attribute__((always_inline)) inline void cycle(uint64_t* blocks, const V* k, const V* w) {
    V a, b;
    split(blocks, a, b);
    gost89_rounds32<V, Decrypt>(a, b, k, w);
    join(blocks, a, b);
}

template <class V, int L>
__attribute__((always_inline)) inline void one_key(uint64_t* blocks, const Gost89Key& key, const Gost89TableWide& t,
                                                   bool decrypt) {
    V k[8], w[15];
    for (int i = 0; i < 8; ++i) k[i] = V{} + key.k[i];
    for (int m = 0; m < 15; ++m) __builtin_memcpy(&w[m], t.w[m], sizeof(V));
    if (decrypt) cycle<V, L, true>(blocks, k, w);
    else cycle<V, L, false>(blocks, k, w);
    wipe(k, sizeof k);
}

void many_sse2(uint64_t* blocks, const Gost89Key& key, const Gost89TableWide& t, bool decrypt) {
    one_key<V4, 4>(blocks, key, t, decrypt);
    one_key<V4, 4>(blocks + 4, key, t, decrypt);
}

// The eight-lane twin of one_key (spelt out: its helpers need the target).
__attribute__((target("avx2"))) void many_avx2(uint64_t* blocks, const Gost89Key& key, const Gost89TableWide& t,
                                               bool decrypt) {
    V8 k[8], w[15], a, b;
    for (int i = 0; i < 8; ++i) k[i] = V8{} + key.k[i];
    for (int m = 0; m < 15; ++m) __builtin_memcpy(&w[m], t.w[m], sizeof(V8));
    split(blocks, a, b);
    if (decrypt) gost89_rounds32<V8, true>(a, b, k, w);
    else gost89_rounds32<V8, false>(a, b, k, w);
    join(blocks, a, b);
    wipe(k, sizeof k);
}

// Groups of eight blocks; a short last group runs in a zero-filled full one.
void many_narrow(uint64_t* blocks, size_t n, const Gost89Key& k, const Gost89TableWide& t, bool decrypt,
                 bool avx2) {
    for (; n >= 8; n -= 8, blocks += 8) {
        if (avx2) many_avx2(blocks, k, t, decrypt);
        else many_sse2(blocks, k, t, decrypt);
    }
    if (n == 0) return;
    uint64_t b[8] = {};
    copy(b, blocks, 8 * n);
    if (avx2) many_avx2(b, k, t, decrypt);
    else if (n <= 4) one_key<V4, 4>(b, k, t, decrypt);
    else many_sse2(b, k, t, decrypt);
    copy(blocks, b, 8 * n);
    wipe(b, sizeof b);
}

void many(uint64_t* blocks, size_t n, const Gost89Key& k, const Gost89TableWide& t, bool decrypt) {
    switch (gost89_kernel()) {
        case Gost89Kernel::kVbmi: gost89_many_vbmi(blocks, n, k, t, decrypt); break;
        case Gost89Kernel::kAvx2: many_narrow(blocks, n, k, t, decrypt, true); break;
        case Gost89Kernel::kSse2: many_narrow(blocks, n, k, t, decrypt, false); break;
    }
}

}  // namespace

void gost89_encrypt_many(uint64_t* blocks, size_t n, const Gost89Key& k, const Gost89TableWide& t) {
    many(blocks, n, k, t, false);
}

void gost89_decrypt_many(uint64_t* blocks, size_t n, const Gost89Key& k, const Gost89TableWide& t) {
    many(blocks, n, k, t, true);
}

Gost89Kernel gost89_kernel() {
#if defined(KORVEX_GOST89_KERNEL)
    return static_cast<Gost89Kernel>(KORVEX_GOST89_KERNEL);
#else
    return cpu_has_avx512vbmi() ? Gost89Kernel::kVbmi : cpu_has_avx2() ? Gost89Kernel::kAvx2 : Gost89Kernel::kSse2;
#endif
}

void gost89_encrypt_x4(uint64_t blocks[4], const Gost89Key4& key, const Gost89TableWide& t) {
    if (gost89_kernel() == Gost89Kernel::kVbmi) return gost89_x4_vbmi(blocks, key, t);
    V4 k[8], w[15];
    for (int i = 0; i < 8; ++i) __builtin_memcpy(&k[i], key.k[i], sizeof(V4));
    for (int m = 0; m < 15; ++m) __builtin_memcpy(&w[m], t.w[m], sizeof(V4));
    cycle<V4, 4, false>(blocks, k, w);
    wipe(k, sizeof k);
}

}  // namespace kx
