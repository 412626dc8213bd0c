// The operations the 512-bit key, signature and VKO code needs from the
// layers below, gathered in one place so that a faster internal path can
// replace them without touching the protocol code. Today they are the
// general affine double-and-add (the _test family) and the shift-and-add
// arithmetic, correct on every curve including a caller's example curve.
#ifndef KORVEX_EC_OPS_2012_H
#define KORVEX_EC_OPS_2012_H

#include "ec/curves_2012.h"
#include "ec/point.h"

namespace kx {
namespace ec {

struct Ops512 {
    using N = bn::Num<8>;
    using Curve = Curve512;

    // (x, y) = k * P for the base point of c.
    static void base_mul(N& x, N& y, const N& k, const Curve& c) { mul_k<8>(k, c.x, c.y, x, y, c.a, c.p); }

    // (x, y) = k * (px, py).
    static void point_mul(N& x, N& y, const N& k, const N& px, const N& py, const Curve& c) {
        mul_k<8>(k, px, py, x, y, c.a, c.p);
    }

    // (x, y) = u * P + v * (px, py).
    static void twin_mul(N& x, N& y, const N& u, const N& v, const N& px, const N& py, const Curve& c) {
        N tx, ty;
        base_mul(x, y, u, c);
        point_mul(tx, ty, v, px, py, c);
        add<8>(x, tx, y, ty, c.a, c.p);
    }

    // r = a * b mod q.
    static void mul_q(N& r, const N& a, const N& b, const Curve& c) { bn::mul_mod(r, a, b, c.q); }

    // r = 1 / a mod q (0 for a = 0).
    static void inv_q(N& r, const N& a, const Curve& c) {
        r = a;
        bn::div_mod<8>(r, nullptr, c.q);
    }
};

}  // namespace ec
}  // namespace kx

#endif
