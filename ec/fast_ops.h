// The operations behind keys, signatures and VKO (the interface of
// ec/affine_ops.h) on the fast engine, for the built-in curves; a curve
// without engine constants (the caller-writable 512-bit example curve) and
// public keys that are not points of the curve go to the reference affine
// path, so every result stays what the reference arithmetic gives.
//
// Why the results agree elsewhere: every built-in curve has prime order q
// with q > 2^(64W-1) and cofactor 1. The reference right-to-left
// double-and-add of k * P (P of order q, k < 2^(64W)) adds R = s * P,
// s < 2^i, to T = 2^i * P; they share x only when s = +-2^i mod q, which
// for s < 2^i < q means s + 2^i = q, at the last bit, where the reference
// gives the point at infinity, as the true sum does. Doublings never meet
// y = 0 (q is odd). So the reference gives (k mod q) * P, infinity written
// (0, 0), which is what the engine computes from k reduced once (k < 2q).
#ifndef KORVEX_EC_FAST_OPS_H
#define KORVEX_EC_FAST_OPS_H

#include "ec/affine_ops.h"
#include "ec/comb.h"
#include "ec/scalar_mult.h"

namespace kx {
namespace ec {

// A curve record of the reference code with the engine constants attached
// (null for curves the engine does not know).
template <unsigned W, class Lit>
struct Bound : Lit {
    const grp::Curve<W>* fast;
    const CombTable<W>* comb;  // multiples of the base point (with fast)
};

// (x, y) = k * G for k < q from the fixed-base table, in constant time: the
// sum over windows i of d_i * 16^i * G, each entry found by a masked scan of
// all fifteen (digit 0: infinity). The partial sum s * G, s < 16^i, and the
// entry d * 16^i * G never coincide or cancel: s = +-d * 16^i mod q would
// need s + d * 16^i (<= k < q) or d * 16^i - s (0 < . < q... or above q,
// when 2 d * 16^i - q = k would exceed q) to vanish mod q.
template <unsigned W>
inline void comb_mul(bn::Num<W>& x, bn::Num<W>& y, const bn::Num<W>& k, const CombTable<W>& t,
                     const grp::Curve<W>& c) {
    grp::Jac<W> acc{}, e;
    for (unsigned i = 0; i < 16 * W; ++i) {
        unsigned d = grp::digit(k, 4 * i);
        e = grp::Jac<W>{};
        for (unsigned j = 0; j < 15; ++j) {
            uint64_t v = static_cast<uint64_t>(d ^ (j + 1));
            uint64_t m = fe::mask(((v | (0 - v)) >> 63) ^ 1);
            for (unsigned w = 0; w < W; ++w) {
                e.x.w[w] |= t[i][j][0][w] & fe::opaque(m);
                e.y.w[w] |= t[i][j][1][w] & fe::opaque(m);
            }
        }
        uint64_t nz = static_cast<uint64_t>(d);
        fe::select(e.z, fe::mask((nz | (0 - nz)) >> 63), c.p.one, e.z);
        grp::add_ct<W, true>(acc, acc, e, c);
    }
    grp::to_affine(x, y, acc, c);
    grp::clear(acc);
    grp::clear(e);
}

// The engine constants of a curve record (member values only), at compile
// time. b is recovered from the base point.
template <unsigned W, class Lit>
constexpr grp::Curve<W> make_curve(const Lit& l) {
    grp::Curve<W> c{};
    c.p = fe::make_mod<W>(l.p);
    c.q = fe::make_mod<W>(l.q);
    fe::to_mont(c.a, l.a, c.p);
    fe::to_mont(c.gx, l.x, c.p);
    fe::to_mont(c.gy, l.y, c.p);
    bn::Num<W> t{}, u{};
    fe::sqr(t, c.gx, c.p);
    fe::add(t, t, c.a, c.p.m);
    fe::mul(t, t, c.gx, c.p);
    fe::sqr(u, c.gy, c.p);
    fe::sub(c.b, u, t, c.p.m);
    bn::Num<W> three{};
    three.w[0] = 3;
    fe::add_c(three, l.a, three);
    fe::sub_b(three, three, l.p);
    c.a_minus3 = fe::zero_mask(three) != 0;
    return c;
}

template <unsigned W, class Lit>
struct FastOps {
    using N = bn::Num<W>;
    using Curve = Bound<W, Lit>;
    using Ref = AffineOps<W, Curve>;

    static grp::Jac<W> base(const grp::Curve<W>& f) { return {f.gx, f.gy, f.p.one}; }

    // k mod q for any k < 2q, in constant time.
    static N reduce(const N& k, const grp::Curve<W>& f) {
        N r;
        fe::reduce_once(r, 0, k, f.q.m);
        return r;
    }

    static void base_mul(N& x, N& y, const N& k, const Curve& c) {
        if (!c.fast) return Ref::base_mul(x, y, k, c);
        N kr = reduce(k, *c.fast);
        comb_mul(x, y, kr, *c.comb, *c.fast);
        wipe_obj(kr);
    }

    // The scalar is secret, the point public: the on-curve test only looks at the point.
    static void point_mul(N& x, N& y, const N& k, const N& px, const N& py, const Curve& c) {
        if (!c.fast || !grp::on_curve_var(px, py, *c.fast)) return Ref::point_mul(x, y, k, px, py, c);
        const grp::Curve<W>& f = *c.fast;
        grp::Jac<W> P{{}, {}, f.p.one};
        fe::to_mont(P.x, px, f.p);
        fe::to_mont(P.y, py, f.p);
        N kr = reduce(k, f);
        grp::mul_ct(x, y, kr, P, f);
        wipe_obj(kr);
    }

    // Whether x(u * G + v * Q) mod q = r, public data only. The reference
    // adds u * G and v * Q (each exact, as above) with an affine addition
    // that is exact too (x equal: infinity or a doubling of a point with
    // y != 0), and infinity's (0, 0) never matches r != 0; the engine's sum
    // is exact unless an addition meets P = +-Q, and then the reference is
    // asked.
    static bool twin_check(const N& r, const N& u, const N& v, const N& px, const N& py, const Curve& c) {
        if (c.fast && grp::on_curve_var(px, py, *c.fast)) {
            const grp::Curve<W>& f = *c.fast;
            grp::Jac<W> Q{{}, {}, f.p.one}, acc;
            fe::to_mont(Q.x, px, f.p);
            fe::to_mont(Q.y, py, f.p);
            if (grp::mul2_var(acc, u, (*c.comb)[0], v, Q, f))
                return !bn::is_zero(acc.z) && grp::x_mod_q_is_var(acc, r, f);
        }
        return Ref::twin_check(r, u, v, px, py, c);
    }

    // r = a * b mod q. The callers pass a < q (r and e of a signature, a
    // 64-bit UKM), for which the reference shift-and-add is exact for any
    // b < 2^(64W): two Montgomery products give the same value.
    static void mul_q(N& r, const N& a, const N& b, const Curve& c) {
        if (!c.fast) return Ref::mul_q(r, a, b, c);
        N t;
        fe::mul(t, a, b, c.fast->q);
        fe::mul(r, t, c.fast->q.rr, c.fast->q);
        wipe_obj(t);
    }

    // t * d mod q for the VKO: t is a 64-bit UKM for W = 4 (below q); a
    // 512-bit UKM may reach q, where the reference shift-and-add is not a
    // true product, so it is replayed step for step in constant time.
    static void vko_scalar(N& r, const N& t, const N& d, const Curve& c) {
        if (!c.fast) return Ref::mul_q(r, t, d, c);
        if (W == 4) return mul_q(r, t, d, c);
        N A = t, R{}, S;
        const N& q = c.fast->q.m;
        for (unsigned i = 0; i < 64 * W; ++i) {
            fe::add(S, R, A, q);
            fe::select(R, fe::mask((d.w[i / 64] >> (i % 64)) & 1), S, R);
            fe::add(A, A, A, q);
        }
        r = R;
        wipe_obj(A);
        wipe_obj(R);
        wipe_obj(S);
    }

    // 1/a mod q for public a < q (the verifier's e), by the binary
    // extended Euclid in variable time; 0 gives 0, as the reference does.
    // Invariant: x1 * a = u and x2 * a = v mod q; q is prime, so u and v
    // never reach 0 and one of them ends at 1.
    static void inv_q(N& r, const N& a, const Curve& c) {
        if (!c.fast) return Ref::inv_q(r, a, c);
        const N& q = c.fast->q.m;
        if (bn::is_zero(a)) return void(r = N{});
        N u = a, v = q, x1 = bn::from_u64<W>(1), x2{};
        const N one = x1;
        while (!bn::equal(u, one) && !bn::equal(v, one)) {
            halve_var(u, x1, q);
            halve_var(v, x2, q);
            if (!fe::less_mask(u, v)) {
                fe::sub_b(u, u, v);
                fe::sub(x1, x1, x2, q);
            } else {
                fe::sub_b(v, v, u);
                fe::sub(x2, x2, x1, q);
            }
        }
        r = bn::equal(u, one) ? x1 : x2;
    }

  private:
    // While u is even: u /= 2 and x = x / 2 mod q (q odd: x + q is even).
    static void halve_var(N& u, N& x, const N& q) {
        while (!(u.w[0] & 1)) {
            shr1(u, 0);
            uint64_t odd = x.w[0] & 1, top = odd ? fe::add_c(x, x, q) : 0;
            shr1(x, top);
        }
    }

    static void shr1(N& a, uint64_t top) {
        for (unsigned i = 0; i + 1 < W; ++i) a.w[i] = (a.w[i] >> 1) | (a.w[i + 1] << 63);
        a.w[W - 1] = (a.w[W - 1] >> 1) | (top << 63);
    }
};

}  // namespace ec
}  // namespace kx

#endif
