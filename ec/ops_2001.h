// The operations behind the GOST R 34.10-2001 keys, signatures and VKO: the
// fast engine on the four 256-bit curves.
#ifndef KORVEX_EC_OPS_2001_H
#define KORVEX_EC_OPS_2001_H

#include "ec/curves_2001.h"
#include "ec/fast_ops.h"

namespace kx {
namespace ec {

using Ops256 = FastOps<4, Curve256>;

// A parameter set with its engine constants (same selector rule as curve_2001).
Bound<4, Curve256> bound_2001(unsigned char set);

}  // namespace ec
}  // namespace kx

#endif
