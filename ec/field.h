// Constant-time arithmetic modulo an odd m of W 64-bit words, in Montgomery
// form (R = 2^(64W)): the field layer of the fast engine behind keys,
// signatures and VKO, used both mod p (coordinates) and mod q (scalars).
//
// Portable C++ over unsigned __int128, constexpr so that each curve's
// constants (R^2 mod m, -1/m mod 2^64) are computed by the compiler: no
// tables to keep in step by hand and no run-time initialisation. At run time
// the products use mulx/adcx/adox asm where the processor has BMI2 and ADX
// (ec/mul_row.h; 4- and 8-word products with registers as accumulators),
// carry chains the _addcarry_u64 intrinsics, and the primes 2^(64W) - c
// (CryptoPro-A, paramSetA) a two-step folding instead of Montgomery steps.
// No branch and no memory index depends on an operand; only the modulus,
// operand addresses (a square) and exponents steer control flow, and they
// are public.
#ifndef KORVEX_EC_FIELD_H
#define KORVEX_EC_FIELD_H

#include <immintrin.h>
#include <stdint.h>

#include "ec/bignum.h"
#include "ec/mul_row.h"

namespace kx {
namespace fe {

using u128 = unsigned __int128;
template <unsigned W>
using N = bn::Num<W>;

// All-ones when bit is 1, zero when 0.
constexpr uint64_t mask(uint64_t bit) { return 0 - bit; }

// v, hidden from the optimiser: a mask derived from a secret stays a value
// it must AND with, instead of a condition it may turn into a branch or a
// load from a secret address (clang does that to a masked table scan).
inline uint64_t opaque(uint64_t v) {
    __asm__("" : "+r"(v));
    return v;
}

// The run-time carry chains (see add_c).
template <unsigned W>
inline uint64_t add_c_rt(N<W>& r, const N<W>& a, const N<W>& b) {
    unsigned char c = 0;
#pragma GCC unroll 16
    for (unsigned i = 0; i < W; ++i) {
        unsigned long long v;
        c = _addcarry_u64(c, a.w[i], b.w[i], &v);
        r.w[i] = v;
    }
    return c;
}

template <unsigned W>
inline uint64_t sub_b_rt(N<W>& r, const N<W>& a, const N<W>& b) {
    unsigned char c = 0;
#pragma GCC unroll 16
    for (unsigned i = 0; i < W; ++i) {
        unsigned long long v;
        c = _subborrow_u64(c, a.w[i], b.w[i], &v);
        r.w[i] = v;
    }
    return c;
}

// r = a + b + 0; returns the carry. At run time the carry chains are the
// _addcarry_u64 / _subborrow_u64 intrinsics, which both compilers turn into
// adc / sbb (from unsigned __int128 they do not); at compile time plain C++.
template <unsigned W>
constexpr uint64_t add_c(N<W>& r, const N<W>& a, const N<W>& b) {
    if (!__builtin_is_constant_evaluated()) return add_c_rt(r, a, b);
    uint64_t c = 0;
    for (unsigned i = 0; i < W; ++i) {
        u128 s = static_cast<u128>(a.w[i]) + b.w[i] + c;
        r.w[i] = static_cast<uint64_t>(s);
        c = static_cast<uint64_t>(s >> 64);
    }
    return c;
}

// r = a - b; returns the borrow (1 when a < b).
template <unsigned W>
constexpr uint64_t sub_b(N<W>& r, const N<W>& a, const N<W>& b) {
    if (!__builtin_is_constant_evaluated()) return sub_b_rt(r, a, b);
    uint64_t c = 0;
    for (unsigned i = 0; i < W; ++i) {
        u128 d = static_cast<u128>(a.w[i]) - b.w[i] - c;
        r.w[i] = static_cast<uint64_t>(d);
        c = static_cast<uint64_t>(d >> 64) & 1;
    }
    return c;
}

// r = m ? a : b for m all-ones or zero.
template <unsigned W>
constexpr void select(N<W>& r, uint64_t m, const N<W>& a, const N<W>& b) {
    if (!__builtin_is_constant_evaluated()) m = opaque(m);
#pragma GCC unroll 16
    for (unsigned i = 0; i < W; ++i) r.w[i] = (a.w[i] & m) | (b.w[i] & ~m);
}

// All-ones when a = 0.
template <unsigned W>
constexpr uint64_t zero_mask(const N<W>& a) {
    uint64_t acc = 0;
#pragma GCC unroll 16
    for (unsigned i = 0; i < W; ++i) acc |= a.w[i];
    return mask(((acc | (0 - acc)) >> 63) ^ 1);
}

// All-ones when a < b.
template <unsigned W>
constexpr uint64_t less_mask(const N<W>& a, const N<W>& b) {
    N<W> t{};
    return mask(sub_b(t, a, b));
}

// The modulus and its Montgomery constants.
template <unsigned W>
struct Mod {
    N<W> m;
    uint64_t n0;  // -1/m mod 2^64
    N<W> rr;      // R^2 mod m
    N<W> one;     // R mod m
    uint64_t c;   // m = 2^(64W) - c with c < 2^32: plain form, R = 1 (else 0)
};

// One conditional subtraction of m from hi * 2^(64W) + a (a value < 2m).
template <unsigned W>
constexpr void reduce_once(N<W>& r, uint64_t hi, const N<W>& a, const N<W>& m) {
    N<W> d{};
    uint64_t b = sub_b(d, a, m);
    select(r, mask(hi | (b ^ 1)), d, a);
}

// r = a + b mod m for a, b < m. The selection rule (carry out or sum >= m)
// is exactly that of bn::add_mod, so it also matches it on unreduced input.
template <unsigned W>
constexpr void add(N<W>& r, const N<W>& a, const N<W>& b, const N<W>& m) {
    N<W> s{};
    uint64_t c = add_c(s, a, b);
    reduce_once(r, c, s, m);
}

// r = a - b mod m (m added back when the difference borrowed).
template <unsigned W>
constexpr void sub(N<W>& r, const N<W>& a, const N<W>& b, const N<W>& m) {
    N<W> d{}, mm{};
    uint64_t bw = sub_b(d, a, b);
    select(mm, mask(bw), m, mm);
    add_c(r, d, mm);
}

// One row: t[0..W-1] += a * b, the carry out returned (ec/mul_row.h).
template <unsigned W, bool Adx>
constexpr uint64_t row(uint64_t* t, const uint64_t* a, uint64_t b) {
    if constexpr (Adx) return row_adx<W>(t, a, b);
    return row_portable<W>(t, a, b);
}

// m = 2^(64W) - c: the high half folds in as hi * c, twice; the residue is
// then below 2^(64W) < 2m and one subtraction finishes.
template <unsigned W>
inline void special_reduce_rt(N<W>& r, const uint64_t (&t)[2 * W], const Mod<W>& M) {
    uint64_t lo[W], hi[W];
#pragma GCC unroll 16
    for (unsigned i = 0; i < W; ++i) {
        u128 p = static_cast<u128>(t[W + i]) * M.c;
        lo[i] = static_cast<uint64_t>(p);
        hi[i] = static_cast<uint64_t>(p >> 64);
    }
    N<W> s;
    unsigned long long v;
    unsigned char c1 = 0, c2 = 0;
#pragma GCC unroll 16
    for (unsigned i = 0; i < W; ++i) {
        c1 = _addcarry_u64(c1, t[i], lo[i], &v);
        s.w[i] = v;
    }
#pragma GCC unroll 16
    for (unsigned i = 1; i < W; ++i) {
        c2 = _addcarry_u64(c2, s.w[i], hi[i - 1], &v);
        s.w[i] = v;
    }
    uint64_t top = hi[W - 1] + c1 + c2;  // at most c
    unsigned char c3 = _addcarry_u64(0, s.w[0], top * M.c, &v);  // c < 2^32: no overflow
    s.w[0] = v;
#pragma GCC unroll 16
    for (unsigned i = 1; i < W; ++i) {
        c3 = _addcarry_u64(c3, s.w[i], 0, &v);
        s.w[i] = v;
    }
    s.w[0] += M.c & mask(c3);  // wrapped: s < top * c is tiny, no new carry
    reduce_once(r, 0, s, M.m);
}

template <unsigned W, bool Adx>
constexpr void special_reduce(N<W>& r, uint64_t (&t)[2 * W], const Mod<W>& M) {
    if constexpr (Adx) return special_reduce_rt(r, t, M);
    uint64_t carry = row<W, Adx>(t, t + W, M.c);
    u128 s = static_cast<u128>(carry) * M.c + t[0];
    N<W> lo{}, add{};
#pragma GCC unroll 16
    for (unsigned i = 0; i < W; ++i) lo.w[i] = t[i];
    add.w[0] = static_cast<uint64_t>(s);
    add.w[1] = static_cast<uint64_t>(s >> 64);
    lo.w[0] = 0;
    uint64_t cc = add_c(lo, lo, add);
    lo.w[0] += M.c & mask(cc);  // wrapped: lo < carry * c is tiny, no new carry
    reduce_once(r, 0, lo, M.m);
}

// r = a * b / R mod m: the full product (W rows), then the special-form
// folding or W word-by-word Montgomery reduction rows.
template <unsigned W, bool Adx>
constexpr void mul_rows(N<W>& r, const N<W>& a, const N<W>& b, const Mod<W>& M) {
    uint64_t t[2 * W] = {};  // all written by the products; zeroed for the rows
    if constexpr (Adx && W == 4) {
        product4_adx(t, a.w, b.w);
    } else if constexpr (Adx && W == 8) {
        product8_adx(t, a.w, b.w);
    } else {
#pragma GCC unroll 16
        for (unsigned i = 0; i < W; ++i) t[i + W] = row<W, Adx>(t + i, a.w, b.w[i]);
    }
    if (M.c) return special_reduce<W, Adx>(r, t, M);  // public: the modulus decides
    uint64_t top = 0;  // carry above t[2W - 1]
#pragma GCC unroll 16
    for (unsigned i = 0; i < W; ++i) {
        uint64_t c = row<W, Adx>(t + i, M.m.w, t[i] * M.n0);
        u128 s = static_cast<u128>(t[i + W]) + c + top;
        t[i + W] = static_cast<uint64_t>(s);
        top = static_cast<uint64_t>(s >> 64);
    }
    N<W> hi{};
#pragma GCC unroll 16
    for (unsigned i = 0; i < W; ++i) hi.w[i] = t[W + i];
    reduce_once(r, top, hi, M.m);
}

// The asm path; for W = 4 and 8 with a special-form modulus, the product
// blocks write all of t, so it needs no clearing.
template <unsigned W>
inline void mul_adx(N<W>& r, const N<W>& a, const N<W>& b, const Mod<W>& M) {
    if constexpr (W == 4 || W == 8) {
        if (M.c) {  // public: the modulus decides
            uint64_t t[2 * W];
            if constexpr (W == 4) product4_adx(t, a.w, b.w);
            else product8_adx(t, a.w, b.w);
            return special_reduce_rt(r, t, M);
        }
    }
    mul_rows<W, true>(r, a, b, M);
}

// Needs a * b < m * R (for instance a < m and any b < R); the result is then
// below m. The asm rows where the processor has them (never at compile time).
template <unsigned W>
__attribute__((always_inline)) constexpr inline void mul(N<W>& r, const N<W>& a, const N<W>& b, const Mod<W>& M) {
    if (!__builtin_is_constant_evaluated() && row_fast<W>()) return mul_adx(r, a, b, M);
    mul_rows<W, false>(r, a, b, M);
}

template <unsigned W>
constexpr void sqr(N<W>& r, const N<W>& a, const Mod<W>& M) { mul(r, a, a, M); }

// Into and out of Montgomery form. to_mont accepts any a < R.
template <unsigned W>
constexpr void to_mont(N<W>& r, const N<W>& a, const Mod<W>& M) { mul(r, a, M.rr, M); }

template <unsigned W>
constexpr void from_mont(N<W>& r, const N<W>& a, const Mod<W>& M) {
    N<W> one{};
    one.w[0] = 1;
    mul(r, a, one, M);
}

// r = a^e (Montgomery form in and out) with a fixed 4-bit window over the
// public exponent e: the operand only ever meets the multiplier, and the
// table index comes from e.
template <unsigned W>
constexpr void pow(N<W>& r, const N<W>& a, const N<W>& e, const Mod<W>& M) {
    N<W> t[16] = {};
    t[0] = M.one;
    for (unsigned i = 1; i < 16; ++i) mul(t[i], t[i - 1], a, M);
    N<W> acc = M.one;
    for (unsigned i = 64 * W; i > 0;) {
        i -= 4;
        for (unsigned k = 0; k < 4; ++k) sqr(acc, acc, M);
        unsigned d = static_cast<unsigned>(e.w[i / 64] >> (i % 64)) & 15;
        if (d) mul(acc, acc, t[d], M);  // d is a digit of the public exponent
    }
    r = acc;
    for (unsigned i = 0; i < 16; ++i) t[i] = N<W>{};
}

// r = a^(2^n - 1), 2 <= n < 2^10: t_i = a^(2^(2^i) - 1) by t_(i+1) =
// t_i^(2^(2^i)) t_i, then the lower set bits of n joined on the same way.
// n is public.
template <unsigned W>
constexpr void pow_ones(N<W>& r, const N<W>& a, unsigned n, const Mod<W>& M) {
    N<W> t[10] = {};
    t[0] = a;
    unsigned top = 0;
    for (; (2u << top) <= n; ++top) {
        N<W> x = t[top];
        for (unsigned k = 0; k < (1u << top); ++k) sqr(x, x, M);
        mul(t[top + 1], x, t[top], M);
    }
    N<W> acc = t[top];
    for (unsigned j = top; j-- > 0;) {
        if (!((n >> j) & 1)) continue;
        for (unsigned k = 0; k < (1u << j); ++k) sqr(acc, acc, M);
        mul(acc, acc, t[j], M);
    }
    r = acc;
    for (unsigned i = 0; i < 10; ++i) t[i] = N<W>{};
}

// r = 1/a mod prime m by Fermat (a^(m-2)); 0 gives 0. For m = 2^(64W) - c
// with c + 2 < 2^16, m - 2 is 64W - 16 ones and then the 16 bits of
// 2^16 - c - 2: a chain of squarings with about 30 products instead of the
// window's 64W / 4 + 15.
template <unsigned W>
constexpr void inv(N<W>& r, const N<W>& a, const Mod<W>& M) {
    if (M.c && M.c + 2 < (1u << 16)) {  // public: the modulus decides
        N<W> y{};
        pow_ones(y, a, 64 * W - 16, M);
        const uint64_t low = (1u << 16) - M.c - 2;
        for (unsigned i = 16; i-- > 0;) {
            sqr(y, y, M);
            if ((low >> i) & 1) mul(y, y, a, M);
        }
        r = y;
        return;
    }
    N<W> e = M.m, two{};
    two.w[0] = 2;
    sub_b(e, e, two);
    pow(r, a, e, M);
}

// The constants of Mod for an odd m, computed at compile time.
template <unsigned W>
constexpr Mod<W> make_mod(const N<W>& m) {
    Mod<W> M{};
    M.m = m;
    uint64_t inv = 1;  // Newton: inv = 1/m mod 2^64
    for (int i = 0; i < 6; ++i) inv *= 2 - m.w[0] * inv;
    M.n0 = 0 - inv;
    N<W> neg{};  // 2^(64W) - m
    sub_b(neg, neg, m);
    bool small = neg.w[0] < (1ull << 32);
    for (unsigned i = 1; i < W; ++i) small = small && neg.w[i] == 0;
    if (small) {
        M.c = neg.w[0];
        M.one = N<W>{};
        M.one.w[0] = 1;
        M.rr = M.one;
        return M;
    }
    N<W> x{};  // R mod m = (2^(64W) - m) mod m, then doubled 64W times: R^2 mod m
    sub_b(x, x, m);
    while (!less_mask(x, m)) sub_b(x, x, m);
    M.one = x;
    for (unsigned i = 0; i < 64 * W; ++i) add(x, x, x, m);
    M.rr = x;
    return M;
}

}  // namespace fe
}  // namespace kx

#endif
