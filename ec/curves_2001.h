// The four GOST R 34.10-2001 parameter sets (RFC 4357 section 11.4 and the
// example of the standard) as little-endian words. b is not kept: no
// operation needs it.
#ifndef KORVEX_EC_CURVES_2001_H
#define KORVEX_EC_CURVES_2001_H

#include "ec/bignum.h"

namespace kx {
namespace ec {

struct Curve256 {
    bn::Num<4> p, a, q, x, y;  // field prime, coefficient a, group order, base point
};

// Selector = last arc of 1.2.643.2.2.35.x: 1 CryptoPro-A (XchA), 2 CryptoPro-B,
// 3 CryptoPro-C (XchB); 0 and every other value select the test curve, with
// no error.
const Curve256& curve_2001(unsigned char set);

}  // namespace ec
}  // namespace kx

#endif
