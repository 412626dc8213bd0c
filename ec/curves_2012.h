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

// The published parameter sets (shared with the tests' reference runs).
// id-tc26-gost-3410-12-512-paramSetA, 1.2.643.7.1.2.1.2.1 (RFC 7836): p = 2^512 - 569
inline constexpr Curve512 kParamSetA = {
    hex512("FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"
           "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFDC7"),
    hex512("FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"
           "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFDC4"),
    hex512("FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"
           "27E69532F48D89116FF22B8D4E0560609B4B38ABFAD2B85DCACDB1411F10B275"),
    hex512("3"),
    hex512("7503CFE87A836AE3A61B8816E25450E6CE5E1C93ACF1ABC1778064FDCBEFA921"
           "DF1626BE4FD036E93D75E6A50E3A41E98028FE5FC235F5B889A589CB5215F2A4"),
};

// id-tc26-gost-3410-12-512-paramSetB, 1.2.643.7.1.2.1.2.2 (RFC 7836): p = 2^511 + 111
inline constexpr Curve512 kParamSetB = {
    hex512("8000000000000000000000000000000000000000000000000000000000000000"
           "000000000000000000000000000000000000000000000000000000000000006F"),
    hex512("8000000000000000000000000000000000000000000000000000000000000000"
           "000000000000000000000000000000000000000000000000000000000000006C"),
    hex512("8000000000000000000000000000000000000000000000000000000000000001"
           "49A1EC142565A545ACFDB77BD9D40CFA8B996712101BEA0EC6346C54374F25BD"),
    hex512("2"),
    hex512("1A8F7EDA389B094C2C071E3647A8940F3C123B697578C213BE6DD9E6C8EC7335"
           "DCB228FD1EDF4A39152CBCAAF8C0398828041055F94CEEEC7E21340780FE41BD"),
};

}  // namespace ec
}  // namespace kx

#endif
