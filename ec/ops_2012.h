// The operations behind the 512-bit keys, signatures and VKO: the fast engine
// on paramSetA and paramSetB; the caller-writable example curve keeps the
// reference affine arithmetic.
#ifndef KORVEX_EC_OPS_2012_H
#define KORVEX_EC_OPS_2012_H

#include "ec/curves_2012.h"
#include "ec/fast_ops.h"

namespace kx {
namespace ec {

using Ops512 = FastOps<8, Curve512>;

// A parameter set with its engine constants (same selector rule as curve_2012).
Bound<8, Curve512> bound_2012(unsigned char set);

}  // namespace ec
}  // namespace kx

#endif
