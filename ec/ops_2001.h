// The operations the GOST R 34.10-2001 key, signature and VKO code needs from
// the layers below, gathered in one place so that a faster internal path can
// replace them without touching the protocol code. Today they are the plain
// affine double-and-add and shift-and-add arithmetic of the exported layer.
#ifndef KORVEX_EC_OPS_2001_H
#define KORVEX_EC_OPS_2001_H

#include "ec/curves_2001.h"
#include "ec/point.h"

namespace kx {
namespace ec {
namespace ops2001 {

using N = bn::Num<4>;

// (x, y) = k * P for the base point of c.
inline void base_mul(N& x, N& y, const N& k, const Curve256& c) { mul_k<4>(k, c.x, c.y, x, y, c.a, c.p); }

// (x, y) = k * (px, py).
inline void point_mul(N& x, N& y, const N& k, const N& px, const N& py, const Curve256& c) {
    mul_k<4>(k, px, py, x, y, c.a, c.p);
}

// (x, y) = u * P + v * (px, py).
inline void twin_mul(N& x, N& y, const N& u, const N& v, const N& px, const N& py, const Curve256& c) {
    N tx, ty;
    base_mul(x, y, u, c);
    point_mul(tx, ty, v, px, py, c);
    add<4>(x, tx, y, ty, c.a, c.p);
}

// r = a * b mod q.
inline void mul_q(N& r, const N& a, const N& b, const Curve256& c) { bn::mul_mod(r, a, b, c.q); }

// r = 1 / a mod q (0 for a = 0).
inline void inv_q(N& r, const N& a, const Curve256& c) {
    r = a;
    bn::div_mod<4>(r, nullptr, c.q);
}

}  // namespace ops2001
}  // namespace ec
}  // namespace kx

#endif
