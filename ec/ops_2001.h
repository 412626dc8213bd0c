// The operations behind the GOST R 34.10-2001 keys, signatures and VKO: the
// one place to swap in a faster path for the 256-bit curves.
#ifndef KORVEX_EC_OPS_2001_H
#define KORVEX_EC_OPS_2001_H

#include "ec/affine_ops.h"
#include "ec/curves_2001.h"

namespace kx {
namespace ec {

using Ops256 = AffineOps<4, Curve256>;

}  // namespace ec
}  // namespace kx

#endif
