// The operations the key, signature and VKO steps (ec/ds_2012.h) need from
// the layers below, for any word count and curve record (members p, a, q, x,
// y): the plain affine double-and-add and shift-and-add arithmetic of the
// exported layer. Gathered in one place so that a faster internal path can
// replace them without touching the protocol code.
#ifndef KORVEX_EC_AFFINE_OPS_H
#define KORVEX_EC_AFFINE_OPS_H

#include "ec/point.h"

namespace kx {
namespace ec {

template <unsigned W, class CurveT>
struct AffineOps {
    using N = bn::Num<W>;
    using Curve = CurveT;

    // (x, y) = k * P for the base point of c.
    static void base_mul(N& x, N& y, const N& k, const Curve& c) { mul_k<W>(k, c.x, c.y, x, y, c.a, c.p); }

    // (x, y) = k * (px, py).
    static void point_mul(N& x, N& y, const N& k, const N& px, const N& py, const Curve& c) {
        mul_k<W>(k, px, py, x, y, c.a, c.p);
    }

    // (x, y) = u * P + v * (px, py).
    static void twin_mul(N& x, N& y, const N& u, const N& v, const N& px, const N& py, const Curve& c) {
        N tx, ty;
        base_mul(x, y, u, c);
        point_mul(tx, ty, v, px, py, c);
        add<W>(x, tx, y, ty, c.a, c.p);
    }

    // Whether x(u * P + v * (px, py)) mod q = r.
    static bool twin_check(const N& r, const N& u, const N& v, const N& px, const N& py, const Curve& c) {
        N x, y;
        twin_mul(x, y, u, v, px, py, c);
        bn::mod_p(x, c.q);
        return bn::equal(x, r);
    }

    // r = a * b mod q.
    static void mul_q(N& r, const N& a, const N& b, const Curve& c) { bn::mul_mod(r, a, b, c.q); }

    // r = t * d mod q for the VKO.
    static void vko_scalar(N& r, const N& t, const N& d, const Curve& c) { bn::mul_mod(r, t, d, c.q); }

    // r = 1 / a mod q (0 for a = 0).
    static void inv_q(N& r, const N& a, const Curve& c) {
        r = a;
        bn::div_mod<W>(r, nullptr, c.q);
    }
};

}  // namespace ec
}  // namespace kx

#endif
