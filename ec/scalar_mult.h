// Scalar multiplication for the fast engine.
//
// mul_ct: k * P in constant time for k < q and P of prime order q (a
// built-in base point, or a public key checked to lie on the curve: every
// built-in curve has cofactor 1). A fixed 4-bit window from the top: the
// accumulator is s * P for the prefix s of k read so far, and before an
// addition it is 16 s * P, to which d * P (0 <= d < 16) is added. Both are
// below q and 16 s + d <= k < q, so they coincide (or are opposite) only
// when s = 0 and d = 0, which add_ct's masked selection of infinities
// covers. Doublings never meet a point with y = 0: q is odd. Table entries
// are read by scanning all sixteen under masks.
//
// mul2_var: u * G + v * Q in variable time (public data), the joint 4-bit
// window of Strauss-Shamir; false when some addition meets P = +-Q, which
// sends the caller to the reference path.
#ifndef KORVEX_EC_SCALAR_MULT_H
#define KORVEX_EC_SCALAR_MULT_H

#include "ec/group.h"

namespace kx {
namespace grp {

// t[i] = i * P for i = 0..15 (t[0] at infinity). P has order q > 16, so the
// chain P, 2P, 3P, ... never adds a point to itself or its negative.
template <unsigned W>
inline void window_table(Jac<W> (&t)[16], const Jac<W>& P, const Curve<W>& c) {
    t[0] = Jac<W>{};
    t[1] = P;
    dbl(t[2], P, c);
    for (unsigned i = 3; i < 16; ++i) add_ct(t[i], t[i - 1], P, c);
}

template <unsigned W>
inline unsigned digit(const N<W>& k, unsigned i) {
    return static_cast<unsigned>(k.w[i / 64] >> (i % 64)) & 15;
}

// r = t[d], reading every entry.
template <unsigned W>
inline void lookup(Jac<W>& r, const Jac<W> (&t)[16], unsigned d) {
    r = Jac<W>{};
    for (unsigned i = 0; i < 16; ++i) {
        uint64_t x = static_cast<uint64_t>(i ^ d);
        select(r, fe::mask(((x | (0 - x)) >> 63) ^ 1), t[i], r);
    }
}

// Wipes a point table or a point.
template <class T>
inline void clear(T& v) { kx::wipe(&v, sizeof v); }

// (x, y) = k * (px, py) in affine plain form, P given in Montgomery form.
template <unsigned W>
inline void mul_ct(N<W>& x, N<W>& y, const N<W>& k, const Jac<W>& P, const Curve<W>& c) {
    Jac<W> t[16], acc{}, e;
    window_table(t, P, c);
    for (unsigned i = 64 * W; i > 0;) {
        i -= 4;
        for (unsigned j = 0; j < 4; ++j) dbl(acc, acc, c);
        lookup(e, t, digit(k, i));
        add_ct(acc, acc, e, c);
    }
    to_affine(x, y, acc, c);
    clear(t);
    clear(acc);
    clear(e);
}

template <unsigned W>
inline bool mul2_var(Jac<W>& acc, const N<W>& u, const Jac<W>& G, const N<W>& v, const Jac<W>& Q,
                     const Curve<W>& c) {
    Jac<W> tg[16], tq[16];
    window_table(tg, G, c);
    window_table(tq, Q, c);
    acc = Jac<W>{};
    for (unsigned i = 64 * W; i > 0;) {
        i -= 4;
        if (!bn::is_zero(acc.z))
            for (unsigned j = 0; j < 4; ++j) dbl(acc, acc, c);
        unsigned a = digit(u, i), b = digit(v, i);
        if (a && !add_var(acc, acc, tg[a], c)) return false;
        if (b && !add_var(acc, acc, tq[b], c)) return false;
    }
    return true;
}

}  // namespace grp
}  // namespace kx

#endif
