// The 512-bit parameter sets of GOST R 34.10-2012: paramSetA and paramSetB
// of RFC 7836 as read-only words, and the example curve of the standard, which
// lives in the writable exported objects p_test .. y_test. b is not kept: no
// operation needs it.
#ifndef KORVEX_EC_CURVES_2012_H
#define KORVEX_EC_CURVES_2012_H

#include <stddef.h>

#include "ec/bignum.h"

namespace kx {
namespace ec {

struct Curve512 {
    bn::Num<8> p, a, q, x, y;  // field prime, coefficient a, group order, base point
};

// 1 = id-tc26-gost-3410-12-512-paramSetA, 2 = paramSetB; 0 and every other
// value select the example curve, with no error. The example curve is read
// from the exported objects at every call, so a caller may replace it.
Curve512 curve_2012(unsigned char set);

// A number written as in the standards (big-endian hex, up to 128 digits),
// turned into little-endian words at compile time.
template <size_t L>
constexpr bn::Num<8> hex512(const char (&s)[L]) {
    bn::Num<8> r{};
    unsigned bit = 0;
    for (size_t i = L - 1; i-- > 0; bit += 4) {
        char c = s[i];
        uint64_t v = c >= 'a' ? c - 'a' + 10 : c >= 'A' ? c - 'A' + 10 : c - '0';
        r.w[bit / 64] |= v << (bit % 64);
    }
    return r;
}

}  // namespace ec
}  // namespace kx

#endif
