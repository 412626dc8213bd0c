// The inner step of the field multiplication: t[0..W-1] += a[0..W-1] * b,
// returning the word carried out (to be added at t[W]). Both the product
// (W rows, one per word of b) and the Montgomery or special-form reduction
// (W rows of q * m, or one row of hi * c) are made of it.
//
// On processors with BMI2 and ADX the row is one asm block of mulx with two
// carry chains (adcx for the low halves, adox for the high halves), which
// neither GCC nor clang produce from C; elsewhere it is portable
// unsigned __int128 code. The choice is a cached CPU probe, the same on
// every call: it does not depend on the operands. Both run in constant time.
#ifndef KORVEX_EC_MUL_ROW_H
#define KORVEX_EC_MUL_ROW_H

#include <immintrin.h>
#include <stdint.h>

#include "core/cpu.h"

namespace kx {
namespace fe {

template <unsigned W>
constexpr uint64_t row_portable(uint64_t* t, const uint64_t* a, uint64_t b) {
    uint64_t c = 0;
#pragma GCC unroll 16
    for (unsigned j = 0; j < W; ++j) {
        unsigned __int128 s = static_cast<unsigned __int128>(a[j]) * b + t[j] + c;
        t[j] = static_cast<uint64_t>(s);
        c = static_cast<uint64_t>(s >> 64);
    }
    return c;
}

// Step j > 0: lo:hiB = a[j] * b; t[j] += lo + CF (adcx) + hiA + OF (adox).
#define KX_ROW_STEP(off, hA, hB)                        \
    "mulx " off "(%[a]), %[lo], %[" hB "]\n\t"          \
    "adcx " off "(%[t]), %[lo]\n\t"                     \
    "adox %[" hA "], %[lo]\n\t"                         \
    "movq %[lo], " off "(%[t])\n\t"

#define KX_ROW_HEAD                                     \
    "xorl %k[z], %k[z]\n\t"                             \
    "mulx (%[a]), %[lo], %[h0]\n\t"                     \
    "adcx (%[t]), %[lo]\n\t"                            \
    "movq %[lo], (%[t])\n\t"

// The last high half plus both carries cannot overflow: it is at most 2^64 - 2.
#define KX_ROW_TAIL(h)                                  \
    "adcx %[z], %[" h "]\n\t"                           \
    "adox %[z], %[" h "]\n\t"

inline uint64_t row_adx4(uint64_t* t, const uint64_t* a, uint64_t b) {
    uint64_t lo, h0, h1, z;
    __asm__ volatile(KX_ROW_HEAD KX_ROW_STEP("8", "h0", "h1") KX_ROW_STEP("16", "h1", "h0")
                         KX_ROW_STEP("24", "h0", "h1") KX_ROW_TAIL("h1")
                     : [lo] "=&r"(lo), [h0] "=&r"(h0), [h1] "=&r"(h1), [z] "=&r"(z)
                     : [a] "r"(a), [t] "r"(t), "d"(b)
                     : "cc", "memory");
    return h1;
}

inline uint64_t row_adx8(uint64_t* t, const uint64_t* a, uint64_t b) {
    uint64_t lo, h0, h1, z;
    __asm__ volatile(KX_ROW_HEAD KX_ROW_STEP("8", "h0", "h1") KX_ROW_STEP("16", "h1", "h0")
                         KX_ROW_STEP("24", "h0", "h1") KX_ROW_STEP("32", "h1", "h0")
                             KX_ROW_STEP("40", "h0", "h1") KX_ROW_STEP("48", "h1", "h0")
                                 KX_ROW_STEP("56", "h0", "h1") KX_ROW_TAIL("h1")
                     : [lo] "=&r"(lo), [h0] "=&r"(h0), [h1] "=&r"(h1), [z] "=&r"(z)
                     : [a] "r"(a), [t] "r"(t), "d"(b)
                     : "cc", "memory");
    return h1;
}

// The full 4 x 4-word product into t[0..7] with the accumulators in
// registers: rows of mulx / adcx / adox as above, each row's lowest word
// final and stored as soon as it is, the five live words rotating names.
#define KX_P4_ROW(off, a1, a2, a3, a4, a0)                      \
    "movq " off "(%[b]), %%rdx\n\t"                           \
    "xorl %k[z], %k[z]\n\t"                                  \
    "mulx (%[a]), %[t0], %[t1]\n\t"                           \
    "adcx %[t0], %[" a1 "]\n\t"                               \
    "adox %[t1], %[" a2 "]\n\t"                               \
    "mulx 8(%[a]), %[t0], %[t1]\n\t"                          \
    "adcx %[t0], %[" a2 "]\n\t"                               \
    "adox %[t1], %[" a3 "]\n\t"                               \
    "mulx 16(%[a]), %[t0], %[t1]\n\t"                         \
    "adcx %[t0], %[" a3 "]\n\t"                               \
    "adox %[t1], %[" a4 "]\n\t"                               \
    "mulx 24(%[a]), %[t0], %[" a0 "]\n\t"                     \
    "adcx %[t0], %[" a4 "]\n\t"                               \
    "adox %[z], %[" a0 "]\n\t"                                \
    "adcx %[z], %[" a0 "]\n\t"                                \
    "movq %[" a1 "], " off "(%[out])\n\t"

inline void product4_adx(uint64_t* out, const uint64_t* a, const uint64_t* b) {
    uint64_t A0, A1, A2, A3, A4, t0, t1, z;
    __asm__ volatile(
        "movq (%[b]), %%rdx\n\t"
        "mulx (%[a]), %[A0], %[A1]\n\t"
        "mulx 8(%[a]), %[t0], %[A2]\n\t"
        "addq %[t0], %[A1]\n\t"
        "mulx 16(%[a]), %[t0], %[A3]\n\t"
        "adcq %[t0], %[A2]\n\t"
        "mulx 24(%[a]), %[t0], %[A4]\n\t"
        "adcq %[t0], %[A3]\n\t"
        "adcq $0, %[A4]\n\t"
        "movq %[A0], (%[out])\n\t"
        KX_P4_ROW("8", "A1", "A2", "A3", "A4", "A0")
        KX_P4_ROW("16", "A2", "A3", "A4", "A0", "A1")
        KX_P4_ROW("24", "A3", "A4", "A0", "A1", "A2")
        "movq %[A4], 32(%[out])\n\t"
        "movq %[A0], 40(%[out])\n\t"
        "movq %[A1], 48(%[out])\n\t"
        "movq %[A2], 56(%[out])\n\t"
        : [A0] "=&r"(A0), [A1] "=&r"(A1), [A2] "=&r"(A2), [A3] "=&r"(A3), [A4] "=&r"(A4), [t0] "=&r"(t0),
          [t1] "=&r"(t1), [z] "=&r"(z)
        : [a] "r"(a), [b] "r"(b), [out] "r"(out)
        : "rdx", "cc", "memory");
}

#undef KX_P4_ROW

// The 8 x 8-word product from four 4 x 4 blocks: lo * lo and hi * hi in
// place, the two cross products added in at word 4 with one carry chain each.
// A square (a and b the same words: the addresses say so, not the values)
// has equal cross products: three blocks.
inline void product8_adx(uint64_t* t, const uint64_t* a, const uint64_t* b) {
    uint64_t m1[8], m2[8];
    const uint64_t* cross = m2;
    product4_adx(t, a, b);
    product4_adx(t + 8, a + 4, b + 4);
    product4_adx(m1, a, b + 4);
    if (a == b) cross = m1;
    else product4_adx(m2, a + 4, b);
    unsigned char c1 = 0, c2 = 0;
#pragma GCC unroll 12
    for (unsigned i = 0; i < 12; ++i) {
        unsigned long long v;
        c1 = _addcarry_u64(c1, t[4 + i], i < 8 ? m1[i] : 0, &v);
        c2 = _addcarry_u64(c2, v, i < 8 ? cross[i] : 0, &v);
        t[4 + i] = v;
    }
}

#undef KX_ROW_STEP
#undef KX_ROW_HEAD
#undef KX_ROW_TAIL

// Not constexpr-evaluable on the asm path: constexpr callers test
// __builtin_is_constant_evaluated() first (see field.h).
template <unsigned W>
inline uint64_t row_adx(uint64_t* t, const uint64_t* a, uint64_t b) {
    if (W == 4) return row_adx4(t, a, b);
    return row_adx8(t, a, b);
}

// Whether rows run on the asm path (W = 4 or 8 with BMI2 and ADX).
template <unsigned W>
inline bool row_fast() {
    return (W == 4 || W == 8) && cpu_has_bmi2_adx();
}

}  // namespace fe
}  // namespace kx

#endif
