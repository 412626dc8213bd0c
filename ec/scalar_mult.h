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
// mul2_var: u * G + v * Q in variable time (public data) for verification.
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
        select(r, fe::opaque(fe::mask(((x | (0 - x)) >> 63) ^ 1)), t[i], r);
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

// The width-w NAF of k (public): k = sum n[i] 2^i with every non-zero n[i]
// odd and below 2^(w-1) in absolute value, and w - 1 zeros after each. n has
// 64W + 1 entries (a carry can reach the top).
template <unsigned W>
inline void wnaf_var(int8_t* n, const N<W>& k, unsigned w) {
    const unsigned len = 64 * W;
    for (unsigned i = 0; i <= len; ++i) n[i] = 0;
    unsigned carry = 0;
    for (unsigned bit = 0; bit < len;) {
        if (((k.w[bit / 64] >> (bit % 64)) & 1) == carry) {
            ++bit;
            continue;
        }
        unsigned now = w < len - bit ? w : len - bit;
        uint64_t v = k.w[bit / 64] >> (bit % 64);
        if (bit % 64 + now > 64 && bit / 64 + 1 < W) v |= k.w[bit / 64 + 1] << (64 - bit % 64);
        int d = static_cast<int>(v & ((1u << now) - 1)) + static_cast<int>(carry);
        carry = (d >> (w - 1)) & 1;
        n[bit] = static_cast<int8_t>(d - static_cast<int>(carry << w));
        bit += now;
    }
    n[len] = static_cast<int8_t>(carry);
}

// acc = u * G + v * Q in variable time (public data): Strauss-Shamir over
// width-5 NAFs, G's odd multiples taken from the fixed-base table's first
// window (g[d - 1] = d * G, affine), Q's (Q, 3Q, ..., 15Q) computed here.
// Negation is free: y -> -y. False when some addition meets P = +-Q, which
// sends the caller to the reference path.
template <unsigned W>
inline bool mul2_var(Jac<W>& acc, const N<W>& u, const uint64_t (*g)[2][W], const N<W>& v, const Jac<W>& Q,
                     const Curve<W>& c) {
    int8_t nu[64 * W + 1], nv[64 * W + 1];
    wnaf_var(nu, u, 5);
    wnaf_var(nv, v, 5);
    Jac<W> tq[8], q2, e;
    const N<W> zero{};
    tq[0] = Q;
    dbl(q2, Q, c);  // Q has order q > 16: (2i - 1) Q != +-2Q
    for (unsigned i = 1; i < 8; ++i)
        if (!add_var(tq[i], tq[i - 1], q2, c)) return false;
    acc = Jac<W>{};
    for (unsigned i = 64 * W + 1; i > 0;) {
        --i;
        if (!bn::is_zero(acc.z)) dbl(acc, acc, c);
        if (int d = nu[i]) {
            unsigned j = static_cast<unsigned>(d < 0 ? -d : d) - 1;
            for (unsigned k = 0; k < W; ++k) {
                e.x.w[k] = g[j][0][k];
                e.y.w[k] = g[j][1][k];
            }
            e.z = c.p.one;
            if (d < 0) fe::sub(e.y, zero, e.y, c.p.m);
            if (!add_var<W, true>(acc, acc, e, c)) return false;
        }
        if (int d = nv[i]) {
            e = tq[static_cast<unsigned>(d < 0 ? -d : d) / 2];
            if (d < 0) fe::sub(e.y, zero, e.y, c.p.m);
            if (!add_var(acc, acc, e, c)) return false;
        }
    }
    return true;
}

// Whether the affine x of P (not at infinity) reduced mod q equals r < q:
// x < p is one of r, r + q, ... below p, and x = X / Z^2 compares as
// X = x * Z^2, with no inversion. Public data only.
template <unsigned W>
inline bool x_mod_q_is_var(const Jac<W>& P, const N<W>& r, const Curve<W>& c) {
    N<W> zz, xr, t, cand = r;
    fe::sqr(zz, P.z, c.p);
    for (;;) {
        if (!fe::less_mask(cand, c.p.m)) return false;
        fe::to_mont(xr, cand, c.p);
        fe::mul(t, xr, zz, c.p);
        if (bn::equal(t, P.x)) return true;
        if (fe::add_c(cand, cand, c.q.m)) return false;
    }
}

}  // namespace grp
}  // namespace kx

#endif
