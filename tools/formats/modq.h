// Arithmetic modulo the group order q of a GOST R 34.10 curve, for taking
// the mask off a CryptoPro container key: fixed 64-bit limbs, Montgomery
// multiplication and inversion by Fermat's little theorem (q is prime). No
// branch or memory index depends on the operands; q and the exponent q - 2
// are public and may be branched on.
#ifndef KORVEX_TOOLS_FORMATS_MODQ_H
#define KORVEX_TOOLS_FORMATS_MODQ_H

#include <string>

#include "formats/error.h"

namespace formats {

// q of a curve the library supports, little-endian (32 or 64 bytes); throws
// for other curves.
Bytes curve_order(const std::string& curve_oid);

// x * m^-1 mod q, little-endian, as long as q. x and m are little-endian of
// q's length and may exceed q; m = 0 gives 0.
Secret mul_inverse_mod(const Bytes& x, const Bytes& m, const Bytes& q);

}  // namespace formats

#endif
