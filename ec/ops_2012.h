// The operations behind the 512-bit keys, signatures and VKO: the one place
// to swap in a faster path for the 512-bit curves. Today the general affine
// double-and-add (the _test family) and shift-and-add arithmetic, correct on
// every curve including a caller's example curve.
#ifndef KORVEX_EC_OPS_2012_H
#define KORVEX_EC_OPS_2012_H

#include "ec/affine_ops.h"
#include "ec/curves_2012.h"

namespace kx {
namespace ec {

using Ops512 = AffineOps<8, Curve512>;

}  // namespace ec
}  // namespace kx

#endif
