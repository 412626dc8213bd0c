// Multiplications of the 512-bit layer for moduli of special form, and the
// small modular helpers of the Jacobian point code (the "MP" family).
#ifndef KORVEX_EC_MP_512_H
#define KORVEX_EC_MP_512_H

#include "ec/bignum.h"

namespace kx {
namespace mp {

using N512 = bn::Num<8>;

// r = a * b mod 2^512 - 569 when the low byte of m is 0xC7, else the low half
// of a * b; the reduced result may lie in [p, 2^512). Fits ec::MulFn<8>.
void mul_p(N512& r, const N512& a, const N512& b, const N512& m);

// r = a * b mod m by folding with c = 2^512 - m; fully reduced when m is
// close to 2^512 (c below 2^510 or so).
void mul_q(N512& r, const N512& a, const N512& b, const N512& m);

// r = a * a mod m through the generic shift-and-add multiplication.
inline void squ(N512& r, const N512& a, const N512& m) { bn::mul_mod(r, a, a, m); }

// r = 2a mod m.
inline void mul2(N512& r, const N512& a, const N512& m) { bn::add_mod(r, a, a, m); }

// r = 3a mod m, as (a + a) + a; a is read before r is written.
inline void mul3(N512& r, const N512& a, const N512& m) {
    N512 t;
    bn::add_mod(t, a, a, m);
    bn::add_mod(r, t, a, m);
}

// a = a / 2 mod m (m odd): an odd a gets m added, the carry entering bit 511.
// Returns the bit shifted out.
inline unsigned char div2(N512& a, const N512& m) { return bn::half_mod(a, m); }

// r = a - 2b mod m.
inline void sub_mul2(N512& r, const N512& a, const N512& b, const N512& m) {
    N512 t;
    bn::add_mod(t, b, b, m);
    bn::sub_mod(r, a, t, m);
}

}  // namespace mp
}  // namespace kx

#endif
