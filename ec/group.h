// Jacobian points (X : Y : Z) = (X/Z^2, Y/Z^3) over the Montgomery field of
// ec/field.h, for y^2 = x^3 + a*x + b with any a (the test curve of GOST R
// 34.10-2001 has a = 7). Z = 0 is the point at infinity.
//
// dbl and add_ct run in constant time. add_ct copes with either operand at
// infinity by masked selection; it does not handle P = +-Q (H = 0): the
// scalar multiplications only call it where that cannot happen (see
// ec/scalar_mult.h). add_var reports H = 0 instead, for the verifier.
#ifndef KORVEX_EC_GROUP_H
#define KORVEX_EC_GROUP_H

#include "ec/field.h"

namespace kx {
namespace grp {

template <unsigned W>
using N = bn::Num<W>;

template <unsigned W>
struct Jac {
    N<W> x, y, z;
};

// The constants of one curve for the engine.
template <unsigned W>
struct Curve {
    fe::Mod<W> p, q;
    N<W> a, b;     // Montgomery form
    N<W> gx, gy;   // base point, Montgomery form
    bool a_minus3; // a = -3: the cheaper doubling
};

template <unsigned W>
inline void select(Jac<W>& r, uint64_t m, const Jac<W>& a, const Jac<W>& b) {
    fe::select(r.x, m, a.x, b.x);
    fe::select(r.y, m, a.y, b.y);
    fe::select(r.z, m, a.z, b.z);
}

// r = 2P. Z3 = 2*Y*Z keeps infinity at infinity.
template <unsigned W>
inline void dbl(Jac<W>& r, const Jac<W>& P, const Curve<W>& c) {
    const fe::Mod<W>& M = c.p;
    const N<W>& m = M.m;
    N<W> xx, yy, yyyy, zz, s, t, mm, x3, y3, z3;
    fe::sqr(yy, P.y, M);
    fe::sqr(yyyy, yy, M);
    fe::sqr(zz, P.z, M);
    fe::mul(s, P.x, yy, M);
    fe::add(s, s, s, m);
    fe::add(s, s, s, m);            // S = 4 X Y^2
    if (c.a_minus3) {               // public: the curve decides
        fe::sub(t, P.x, zz, m);
        fe::add(mm, P.x, zz, m);
        fe::mul(t, t, mm, M);
        fe::add(mm, t, t, m);
        fe::add(mm, mm, t, m);      // M = 3 (X - Z^2)(X + Z^2)
    } else {
        fe::sqr(xx, P.x, M);
        fe::sqr(t, zz, M);
        fe::mul(t, t, c.a, M);      // a Z^4
        fe::add(mm, xx, xx, m);
        fe::add(mm, mm, xx, m);
        fe::add(mm, mm, t, m);      // M = 3 X^2 + a Z^4
    }
    fe::sqr(x3, mm, M);
    fe::sub(x3, x3, s, m);
    fe::sub(x3, x3, s, m);          // X3 = M^2 - 2S
    fe::sub(y3, s, x3, m);
    fe::mul(y3, y3, mm, M);
    fe::add(yyyy, yyyy, yyyy, m);
    fe::add(yyyy, yyyy, yyyy, m);
    fe::add(yyyy, yyyy, yyyy, m);
    fe::sub(y3, y3, yyyy, m);       // Y3 = M (S - X3) - 8 Y^4
    fe::mul(z3, P.y, P.z, M);
    fe::add(z3, z3, z3, m);         // Z3 = 2 Y Z
    r.x = x3;
    r.y = y3;
    r.z = z3;
}

// The generic sum; H = U2 - U1 is returned for the callers' checks. QAff:
// Q.z is taken to be one (a table point), which saves five products.
template <unsigned W, bool QAff = false>
inline void add_raw(Jac<W>& r, N<W>& h, N<W>& rr, const Jac<W>& P, const Jac<W>& Q, const Curve<W>& c) {
    const fe::Mod<W>& M = c.p;
    const N<W>& m = M.m;
    N<W> z1z1, z2z2, u1, u2, s1, s2, hh, hhh, v, x3, y3, z3;
    fe::sqr(z1z1, P.z, M);
    if (QAff) {
        u1 = P.x;
        s1 = P.y;
    } else {
        fe::sqr(z2z2, Q.z, M);
        fe::mul(u1, P.x, z2z2, M);
        fe::mul(s1, P.y, Q.z, M);
        fe::mul(s1, s1, z2z2, M);
    }
    fe::mul(u2, Q.x, z1z1, M);
    fe::mul(s2, Q.y, P.z, M);
    fe::mul(s2, s2, z1z1, M);
    fe::sub(h, u2, u1, m);
    fe::sub(rr, s2, s1, m);
    fe::sqr(hh, h, M);
    fe::mul(hhh, hh, h, M);
    fe::mul(v, u1, hh, M);
    fe::sqr(x3, rr, M);
    fe::sub(x3, x3, hhh, m);
    fe::sub(x3, x3, v, m);
    fe::sub(x3, x3, v, m);          // X3 = R^2 - H^3 - 2 U1 H^2
    fe::sub(y3, v, x3, m);
    fe::mul(y3, y3, rr, M);
    fe::mul(s1, s1, hhh, M);
    fe::sub(y3, y3, s1, m);         // Y3 = R (U1 H^2 - X3) - S1 H^3
    if (QAff) {
        fe::mul(z3, P.z, h, M);
    } else {
        fe::mul(z3, P.z, Q.z, M);
        fe::mul(z3, z3, h, M);      // Z3 = Z1 Z2 H
    }
    r.x = x3;
    r.y = y3;
    r.z = z3;
}

// r = P + Q for P != +-Q, either one possibly at infinity; constant time.
// QAff: Q is at infinity or has Z = one.
template <unsigned W, bool QAff = false>
inline void add_ct(Jac<W>& r, const Jac<W>& P, const Jac<W>& Q, const Curve<W>& c) {
    Jac<W> s;
    N<W> h, rr;
    add_raw<W, QAff>(s, h, rr, P, Q, c);
    select(s, fe::zero_mask(P.z), Q, s);
    select(r, fe::zero_mask(Q.z), P, s);
}

// r = P + Q in variable time. False when P = +-Q (both finite): the caller
// then falls back to the reference path. QAff: Q is finite with Z = one.
template <unsigned W, bool QAff = false>
inline bool add_var(Jac<W>& r, const Jac<W>& P, const Jac<W>& Q, const Curve<W>& c) {
    if (bn::is_zero(P.z)) {
        r = Q;
        return true;
    }
    if (!QAff && bn::is_zero(Q.z)) {
        r = P;
        return true;
    }
    N<W> h, rr;
    add_raw<W, QAff>(r, h, rr, P, Q, c);
    return !bn::is_zero(h);
}

// Affine coordinates (plain form); infinity gives (0, 0) as the reference
// arithmetic writes it. Constant time.
template <unsigned W>
inline void to_affine(N<W>& x, N<W>& y, const Jac<W>& P, const Curve<W>& c) {
    N<W> zi, zi2, t;
    fe::inv(zi, P.z, c.p);
    fe::sqr(zi2, zi, c.p);
    fe::mul(t, P.x, zi2, c.p);
    fe::from_mont(x, t, c.p);
    fe::mul(zi2, zi2, zi, c.p);
    fe::mul(t, P.y, zi2, c.p);
    fe::from_mont(y, t, c.p);
}

// (x, y) reduced below p and on the curve (so not (0, 0): b != 0 for every
// curve here). Public data only.
template <unsigned W>
inline bool on_curve_var(const N<W>& x, const N<W>& y, const Curve<W>& c) {
    if (!fe::less_mask(x, c.p.m) || !fe::less_mask(y, c.p.m)) return false;
    N<W> X, Y, l, r;
    fe::to_mont(X, x, c.p);
    fe::to_mont(Y, y, c.p);
    fe::sqr(l, Y, c.p);
    fe::sqr(r, X, c.p);
    fe::add(r, r, c.a, c.p.m);
    fe::mul(r, r, X, c.p);
    fe::add(r, r, c.b, c.p.m);      // x^3 + a x + b
    return bn::equal(l, r);
}

}  // namespace grp
}  // namespace kx

#endif
