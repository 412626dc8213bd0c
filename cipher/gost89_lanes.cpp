// GOST 28147-89 cycles on several blocks at once, one block per 32-bit lane
// of a vector register. The rounds are the core's templates (gost89_core.h)
// instantiated over GCC vector types: the SSE2 four-lane form (every x86-64)
// and the AVX2 eight-lane form, which runs only where the processor and the
// system support it.

// The eight-lane helpers pass 32-byte vectors between functions that are
// always inlined into the AVX2 kernel, so the ABI note does not apply.
#pragma GCC diagnostic ignored "-Wpsabi"

#include "cipher/gost89_core.h"
#include "core/cpu.h"

namespace kx {
namespace {

typedef uint32_t V4 __attribute__((vector_size(16)));
typedef uint32_t V8 __attribute__((vector_size(32)));
typedef int32_t M4 __attribute__((vector_size(16)));
typedef int32_t M8 __attribute__((vector_size(32)));
template <int L> struct Mask;
template <> struct Mask<4> { typedef M4 T; };
template <> struct Mask<8> { typedef M8 T; };

// Blocks <-> lanes: a holds the N1 halves, b the N2 halves; the cycles end by
// exchanging the halves, so b goes back to the low words.
template <class V, int L, bool Decrypt>
__attribute__((always_inline)) inline void cycle(uint64_t* blocks, const V* k, const V* w) {
    typedef typename Mask<L>::T M;
    V u0, u1;
    __builtin_memcpy(&u0, blocks, sizeof u0);
    __builtin_memcpy(&u1, blocks + L / 2, sizeof u1);
    M even, odd, lo, hi;
    for (int i = 0; i < L; ++i) {
        even[i] = 2 * i;
        odd[i] = 2 * i + 1;
        lo[i] = (i & 1 ? L : 0) + i / 2;
        hi[i] = (i & 1 ? L : 0) + L / 2 + i / 2;
    }
    V a = __builtin_shuffle(u0, u1, even), b = __builtin_shuffle(u0, u1, odd);
    gost89_rounds32<V, Decrypt>(a, b, k, w);
    u0 = __builtin_shuffle(b, a, lo);
    u1 = __builtin_shuffle(b, a, hi);
    __builtin_memcpy(blocks, &u0, sizeof u0);
    __builtin_memcpy(blocks + L / 2, &u1, sizeof u1);
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

__attribute__((target("avx2"))) void many_avx2(uint64_t* blocks, const Gost89Key& key, const Gost89TableWide& t,
                                               bool decrypt) {
    one_key<V8, 8>(blocks, key, t, decrypt);
}

bool have_avx2() {
#ifdef KORVEX_GOST89_NO_AVX2
    // Test builds that exercise the SSE2 path on machines with AVX2.
    return false;
#else
    return cpu_has_avx2();
#endif
}

void many(uint64_t* blocks, size_t n, const Gost89Key& k, const Gost89TableWide& t, bool decrypt) {
    const bool avx2 = have_avx2();
    if (n == kGost89Lanes) {
        if (avx2) many_avx2(blocks, k, t, decrypt);
        else many_sse2(blocks, k, t, decrypt);
        return;
    }
    // A short group runs in a zero-filled full one.
    uint64_t b[kGost89Lanes] = {};
    copy(b, blocks, 8 * n);
    if (avx2) many_avx2(b, k, t, decrypt);
    else if (n <= 4) one_key<V4, 4>(b, k, t, decrypt);
    else many_sse2(b, k, t, decrypt);
    copy(blocks, b, 8 * n);
    wipe(b, sizeof b);
}

}  // namespace

void gost89_encrypt_many(uint64_t* blocks, size_t n, const Gost89Key& k, const Gost89TableWide& t) {
    many(blocks, n, k, t, false);
}

void gost89_decrypt_many(uint64_t* blocks, size_t n, const Gost89Key& k, const Gost89TableWide& t) {
    many(blocks, n, k, t, true);
}

void gost89_encrypt_x4(uint64_t blocks[4], const Gost89Key4& key, const Gost89TableWide& t) {
    V4 k[8], w[15];
    for (int i = 0; i < 8; ++i) __builtin_memcpy(&k[i], key.k[i], sizeof(V4));
    for (int m = 0; m < 15; ++m) __builtin_memcpy(&w[m], t.w[m], sizeof(V4));
    cycle<V4, 4, false>(blocks, k, w);
    wipe(k, sizeof k);
}

}  // namespace kx
