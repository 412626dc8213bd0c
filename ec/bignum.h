// Limb algorithms of the GOST R 34.10 big-number layer, written once over the
// number of 64-bit words: W = 4 for the 256-bit numbers of GOST R 34.10-2001,
// W = 8 for the 512-bit ones of GOST R 34.10-2012.
//
// Two levels:
//  - Num<W> functions work on local values; results may be the same object as
//    an operand (each word is read before the same word is written, and the
//    multi-step routines work on private copies).
//  - x_* functions are the bodies of the exported functions: they read caller
//    memory through unaligned-safe loads, compute on locals and store, so any
//    result pointer may equal any operand pointer.
//
// Result codes are the library's own: comparison 2 greater / 1 equal / 0 less;
// zero test 1 zero / 2 non-zero; one test 0 zero / 1 one / 2 greater.
// Nothing here is constant-time: multiplication and division take time that
// depends on the operands.
#ifndef KORVEX_EC_BIGNUM_H
#define KORVEX_EC_BIGNUM_H

#include <stddef.h>
#include <immintrin.h>
#include <stdint.h>

#include "core/bytes.h"

namespace kx {
namespace bn {

enum : unsigned char { kLess = 0, kEqual = 1, kGreater = 2 };
enum : unsigned char { kIsZero = 1, kNonZero = 2 };

// Little-endian number: w[0] is the least significant 64-bit word.
template <unsigned W>
struct Num {
    uint64_t w[W];
};

template <unsigned W>
inline Num<W> from_u64(uint64_t v) {
    Num<W> r{};
    r.w[0] = v;
    return r;
}

template <unsigned W>
inline Num<W> load(const void* p) {
    const unsigned char* b = static_cast<const unsigned char*>(p);
    Num<W> r;
    for (unsigned i = 0; i < W; ++i) r.w[i] = kx::load64(b + 8 * i);
    return r;
}

template <unsigned W>
inline void store(void* p, const Num<W>& a) {
    unsigned char* b = static_cast<unsigned char*>(p);
    for (unsigned i = 0; i < W; ++i) kx::store64(b + 8 * i, a.w[i]);
}

// r = a + b mod 2^(64W); returns the carry out of the top word.
template <unsigned W>
inline unsigned char add(Num<W>& r, const Num<W>& a, const Num<W>& b) {
    unsigned char c = 0;
    for (unsigned i = 0; i < W; ++i) {
        unsigned long long t;
        c = _addcarry_u64(c, a.w[i], b.w[i], &t);  // one adc chain
        r.w[i] = t;
    }
    return c;
}

// r = a - b mod 2^(64W); returns the borrow (1 when a < b).
template <unsigned W>
inline unsigned char sub(Num<W>& r, const Num<W>& a, const Num<W>& b) {
    unsigned char c = 0;
    for (unsigned i = 0; i < W; ++i) {
        unsigned long long t;
        c = _subborrow_u64(c, a.w[i], b.w[i], &t);  // one sbb chain
        r.w[i] = t;
    }
    return c;
}

// a = a >> 1 with `top` entering the most significant bit; returns old bit 0.
template <unsigned W>
inline unsigned char shr1(Num<W>& a, uint64_t top = 0) {
    unsigned char out = static_cast<unsigned char>(a.w[0] & 1);
    for (unsigned i = 0; i + 1 < W; ++i) a.w[i] = (a.w[i] >> 1) | (a.w[i + 1] << 63);
    a.w[W - 1] = (a.w[W - 1] >> 1) | (top << 63);
    return out;
}

// a = a << 1 mod 2^(64W); returns the old top bit.
template <unsigned W>
inline unsigned char shl1(Num<W>& a) {
    unsigned char out = static_cast<unsigned char>(a.w[W - 1] >> 63);
    for (unsigned i = W - 1; i > 0; --i) a.w[i] = (a.w[i] << 1) | (a.w[i - 1] >> 63);
    a.w[0] <<= 1;
    return out;
}

// 2 if a > b, 1 if equal, 0 if a < b; words compared from the top down.
template <unsigned W>
inline unsigned char cmp(const Num<W>& a, const Num<W>& b) {
    for (unsigned i = W; i-- > 0;) {
        if (a.w[i] > b.w[i]) return kGreater;
        if (a.w[i] < b.w[i]) return kLess;
    }
    return kEqual;
}

// 1 if a = 0, else 2.
template <unsigned W>
inline unsigned char cmp_zero(const Num<W>& a) {
    uint64_t acc = 0;
    for (unsigned i = 0; i < W; ++i) acc |= a.w[i];
    return acc == 0 ? kIsZero : kNonZero;
}

// 0 if a = 0, 1 if a = 1, 2 if a > 1.
template <unsigned W>
inline unsigned char cmp_one(const Num<W>& a) {
    for (unsigned i = 1; i < W; ++i)
        if (a.w[i] != 0) return 2;
    return a.w[0] <= 1 ? static_cast<unsigned char>(a.w[0]) : 2;
}

template <unsigned W>
inline bool is_zero(const Num<W>& a) { return cmp_zero(a) == kIsZero; }

template <unsigned W>
inline bool equal(const Num<W>& a, const Num<W>& b) { return cmp(a, b) == kEqual; }

// One conditional subtraction: a = a - p if a >= p. Enough for any 2^(64W)-bit
// value when p > 2^(64W-1), which holds for the moduli it is used with.
template <unsigned W>
inline void mod_p(Num<W>& a, const Num<W>& p) {
    if (cmp(a, p) != kLess) sub(a, a, p);
}

// r = a + b mod p for reduced a, b: one subtraction when the sum carried out
// of the top word or is not below p.
template <unsigned W>
inline void add_mod(Num<W>& r, const Num<W>& a, const Num<W>& b, const Num<W>& p) {
    unsigned char c = add(r, a, b);
    if (c || cmp(r, p) != kLess) sub(r, r, p);
}

// r = a - b mod p: p added back once (carry ignored) when the difference borrowed.
template <unsigned W>
inline void sub_mod(Num<W>& r, const Num<W>& a, const Num<W>& b, const Num<W>& p) {
    if (sub(r, a, b)) add(r, r, p);
}

// Right-to-left shift-and-add: r = a * b mod p, with modular doubling of the
// addend. Stops when the remaining multiplier is zero. a, b must be < p.
template <unsigned W>
inline void mul_mod(Num<W>& r, const Num<W>& a, const Num<W>& b, const Num<W>& p) {
    Num<W> A = a, B = b, R{};
    while (!is_zero(B)) {
        if (shr1(B)) add_mod(R, R, A, p);
        add_mod(A, A, A, p);
    }
    r = R;
    wipe_obj(A);  // the copies hold operands such as d, and R the product r * d
    wipe_obj(R);
}

// x = x / 2 mod p for odd p: an odd x gets p added first, the carry of that
// addition becoming the new top bit (a (64W+1)-bit halving). Returns the bit
// shifted out (0 for odd p).
template <unsigned W>
inline unsigned char half_mod(Num<W>& x, const Num<W>& p) {
    uint64_t carry = (x.w[0] & 1) ? add(x, x, p) : 0;
    return shr1(x, carry);
}

// Binary extended Euclid on (u, v) = (x, p) with companions (x1, x2) = (n, 0),
// keeping x1*x = u*n and x2*x = v*n mod p: x = n / x mod p. A null n means 1.
// x = 0 never enters the loop and gives 0 (division by zero is not reported).
// p must be odd and x < p; out-of-range operands still terminate.
template <unsigned W>
inline void div_mod(Num<W>& x, const Num<W>* n, const Num<W>& p) {
    Num<W> u = x, v = p;
    Num<W> x1 = n ? *n : from_u64<W>(1);
    Num<W> x2{};
    if (is_zero(p)) {  // no modulus: nothing sensible to return, and v would never halve
        x = x2;
        return;
    }
    while (!is_zero(u)) {
        if (cmp_one(v) == 1) {
            x = cmp_one(u) == 1 ? x1 : x2;
            return;
        }
        while (!(u.w[0] & 1)) {
            shr1(u);
            half_mod(x1, p);
        }
        while (!(v.w[0] & 1)) {
            shr1(v);
            half_mod(x2, p);
        }
        if (cmp(u, v) != kLess) {
            sub(u, u, v);
            sub_mod(x1, x1, x2, p);
        } else {
            sub(v, v, u);
            sub_mod(x2, x2, x1, p);
        }
    }
    x = x2;  // u = 0: the "x1 if u = 1" rule gives x2
}

// ---- Bodies of the exported functions: caller memory in, caller memory out.

template <unsigned W>
inline unsigned char x_add(void* r, const void* a, const void* b) {
    Num<W> x = load<W>(a), y = load<W>(b);
    unsigned char c = add(x, x, y);
    store(r, x);
    return c;
}

template <unsigned W>
inline unsigned char x_sub(void* r, const void* a, const void* b) {
    Num<W> x = load<W>(a), y = load<W>(b);
    unsigned char c = sub(x, x, y);
    store(r, x);
    return c;
}

template <unsigned W>
inline unsigned char x_shr(void* a) {
    Num<W> x = load<W>(a);
    unsigned char c = shr1(x);
    store(a, x);
    return c;
}

template <unsigned W>
inline unsigned char x_shl(void* a) {
    Num<W> x = load<W>(a);
    unsigned char c = shl1(x);
    store(a, x);
    return c;
}

template <unsigned W>
inline void x_set(void* r, const void* a) { store(r, load<W>(a)); }

template <unsigned W>
inline unsigned char x_cmp(const void* a, const void* b) { return cmp(load<W>(a), load<W>(b)); }

template <unsigned W>
inline unsigned char x_cmp_zero(const void* a) { return cmp_zero(load<W>(a)); }

template <unsigned W>
inline unsigned char x_cmp_one(const void* a) { return cmp_one(load<W>(a)); }

template <unsigned W>
inline void x_mod_p(void* a, const void* p) {
    Num<W> x = load<W>(a);
    mod_p(x, load<W>(p));
    store(a, x);
}

template <unsigned W>
inline void x_add_mod(void* r, const void* a, const void* b, const void* p) {
    Num<W> x = load<W>(a);
    add_mod(x, x, load<W>(b), load<W>(p));
    store(r, x);
}

template <unsigned W>
inline void x_sub_mod(void* r, const void* a, const void* b, const void* p) {
    Num<W> x = load<W>(a);
    sub_mod(x, x, load<W>(b), load<W>(p));
    store(r, x);
}

template <unsigned W>
inline void x_mul_mod(void* r, const void* a, const void* b, const void* p) {
    Num<W> x = load<W>(a);
    mul_mod(x, x, load<W>(b), load<W>(p));
    store(r, x);
}

template <unsigned W>
inline void x_div_mod(void* x, const void* n, const void* p) {
    Num<W> v = load<W>(x);
    if (n) {
        Num<W> nn = load<W>(n);
        div_mod(v, &nn, load<W>(p));
    } else {
        div_mod<W>(v, nullptr, load<W>(p));
    }
    store(x, v);
}

}  // namespace bn
}  // namespace kx

#endif
