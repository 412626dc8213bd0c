// Affine point arithmetic of GOST R 34.10 on y^2 = x^3 + a*x + b over GF(p),
// written once over the word count W and the field multiplication MUL, so the
// 256-bit functions and the 512-bit twins (generic or special-prime
// multiplication) are instantiations. The point at infinity is (0, 0): both
// coordinates are tested, since a base point may have x = 0.
#ifndef KORVEX_EC_POINT_H
#define KORVEX_EC_POINT_H

#include "ec/bignum.h"

namespace kx {
namespace ec {

using bn::Num;

template <unsigned W>
using MulFn = void (*)(Num<W>&, const Num<W>&, const Num<W>&, const Num<W>&);

template <unsigned W>
inline bool is_infinity(const Num<W>& x, const Num<W>& y) {
    return bn::is_zero(x) && bn::is_zero(y);
}

// (x, y) = 2 * (x, y). A point of order two (y = 0) is not special-cased: the
// division by zero yields lambda = 0.
template <unsigned W, MulFn<W> MUL = bn::mul_mod<W>>
inline void dbl(Num<W>& x, Num<W>& y, const Num<W>& a, const Num<W>& p) {
    if (is_infinity(x, y)) return;
    Num<W> t, s, l, x3, y3;
    MUL(t, x, x, p);             // t = x^2
    bn::add_mod(s, t, t, p);
    bn::add_mod(s, s, t, p);
    bn::add_mod(t, s, a, p);     // t = 3x^2 + a
    bn::add_mod(s, y, y, p);     // s = 2y
    l = s;
    bn::div_mod(l, &t, p);       // lambda = t / s
    MUL(x3, l, l, p);
    bn::sub_mod(x3, x3, x, p);
    bn::sub_mod(x3, x3, x, p);   // x3 = lambda^2 - 2x
    bn::sub_mod(y3, x, x3, p);
    MUL(y3, l, y3, p);
    bn::sub_mod(y3, y3, y, p);   // y3 = lambda (x - x3) - y
    x = x3;
    y = y3;
}

// (x1, y1) = (x1, y1) + (x2, y2). Equal x: the sum is infinity when
// y1 = -y2, otherwise the points are taken as equal and doubled.
template <unsigned W, MulFn<W> MUL = bn::mul_mod<W>>
inline void add(Num<W>& x1, const Num<W>& x2, Num<W>& y1, const Num<W>& y2, const Num<W>& a,
                const Num<W>& p) {
    if (is_infinity(x1, y1)) {
        x1 = x2;
        y1 = y2;
        return;
    }
    if (is_infinity(x2, y2)) return;
    if (bn::equal(x1, x2)) {
        Num<W> ny2, zero{};
        bn::sub_mod(ny2, zero, y2, p);
        if (bn::equal(y1, ny2)) {
            x1 = zero;
            y1 = zero;
        } else {
            dbl<W, MUL>(x1, y1, a, p);
        }
        return;
    }
    Num<W> num, den, x3, y3;
    bn::sub_mod(num, y2, y1, p);
    bn::sub_mod(den, x2, x1, p);
    bn::div_mod(den, &num, p);   // lambda
    MUL(x3, den, den, p);
    bn::sub_mod(x3, x3, x1, p);
    bn::sub_mod(x3, x3, x2, p);
    bn::sub_mod(y3, x1, x3, p);
    MUL(y3, den, y3, p);
    bn::sub_mod(y3, y3, y1, p);
    x1 = x3;
    y1 = y3;
}

// (qx, qy) = k * (px, py): right-to-left double-and-add over every bit of k,
// k not reduced; k = 0 gives infinity.
template <unsigned W, MulFn<W> MUL = bn::mul_mod<W>>
inline void mul_k(const Num<W>& k, const Num<W>& px, const Num<W>& py, Num<W>& qx, Num<W>& qy,
                  const Num<W>& a, const Num<W>& p) {
    Num<W> tx = px, ty = py, rx{}, ry{};
    for (unsigned i = 0; i < W; ++i) {
        for (unsigned bit = 0; bit < 64; ++bit) {
            if ((k.w[i] >> bit) & 1) add<W, MUL>(rx, tx, ry, ty, a, p);
            dbl<W, MUL>(tx, ty, a, p);
        }
    }
    qx = rx;
    qy = ry;
}

// ---- Bodies of the exported point functions (caller memory, any alignment).

template <unsigned W, MulFn<W> MUL = bn::mul_mod<W>>
inline void x_dbl(void* x, void* y, const void* a, const void* p) {
    Num<W> X = bn::load<W>(x), Y = bn::load<W>(y);
    dbl<W, MUL>(X, Y, bn::load<W>(a), bn::load<W>(p));
    bn::store(x, X);
    bn::store(y, Y);
}

template <unsigned W, MulFn<W> MUL = bn::mul_mod<W>>
inline void x_add(void* x1, const void* x2, void* y1, const void* y2, const void* a, const void* p) {
    Num<W> X1 = bn::load<W>(x1), Y1 = bn::load<W>(y1);
    add<W, MUL>(X1, bn::load<W>(x2), Y1, bn::load<W>(y2), bn::load<W>(a), bn::load<W>(p));
    bn::store(x1, X1);
    bn::store(y1, Y1);
}

template <unsigned W, MulFn<W> MUL = bn::mul_mod<W>>
inline void x_mul_k(const void* k, const void* px, const void* py, void* qx, void* qy, const void* a,
                    const void* p) {
    Num<W> X, Y;
    mul_k<W, MUL>(bn::load<W>(k), bn::load<W>(px), bn::load<W>(py), X, Y, bn::load<W>(a), bn::load<W>(p));
    if (qx) bn::store(qx, X);
    if (qy) bn::store(qy, Y);
}

}  // namespace ec
}  // namespace kx

#endif
