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

// The published parameter sets (shared with the tests' reference runs).
// id-GostR3410-2001-CryptoPro-A-ParamSet, 1.2.643.2.2.35.1
inline constexpr Curve256 kCryptoProA = {
    {{0xFFFFFFFFFFFFFD97ull, 0xFFFFFFFFFFFFFFFFull, 0xFFFFFFFFFFFFFFFFull, 0xFFFFFFFFFFFFFFFFull}},  // p
    {{0xFFFFFFFFFFFFFD94ull, 0xFFFFFFFFFFFFFFFFull, 0xFFFFFFFFFFFFFFFFull, 0xFFFFFFFFFFFFFFFFull}},  // a = p - 3
    {{0x45841B09B761B893ull, 0x6C611070995AD100ull, 0xFFFFFFFFFFFFFFFFull, 0xFFFFFFFFFFFFFFFFull}},  // q
    {{1, 0, 0, 0}},                                                                                  // x
    {{0x22ACC99C9E9F1E14ull, 0x35294F2DDF23E3B1ull, 0x27DF505A453F2B76ull, 0x8D91E471E0989CDAull}},  // y
};

// id-GostR3410-2001-CryptoPro-B-ParamSet, 1.2.643.2.2.35.2
inline constexpr Curve256 kCryptoProB = {
    {{0x0000000000000C99ull, 0, 0, 0x8000000000000000ull}},                                          // p
    {{0x0000000000000C96ull, 0, 0, 0x8000000000000000ull}},                                          // a = p - 3
    {{0xE497161BCC8A198Full, 0x5F700CFFF1A624E5ull, 0x0000000000000001ull, 0x8000000000000000ull}},  // q
    {{1, 0, 0, 0}},                                                                                  // x
    {{0x744BF8D717717EFCull, 0xC545C9858D03ECFBull, 0xB83D1C3EB2C070E5ull, 0x3FA8124359F96680ull}},  // y
};

// id-GostR3410-2001-CryptoPro-C-ParamSet, 1.2.643.2.2.35.3
inline constexpr Curve256 kCryptoProC = {
    {{0x7998F7B9022D759Bull, 0xCF846E86789051D3ull, 0xAB1EC85E6B41C8AAull, 0x9B9F605F5A858107ull}},  // p
    {{0x7998F7B9022D7598ull, 0xCF846E86789051D3ull, 0xAB1EC85E6B41C8AAull, 0x9B9F605F5A858107ull}},  // a = p - 3
    {{0xF02F3A6598980BB9ull, 0x582CA3511EDDFB74ull, 0xAB1EC85E6B41C8AAull, 0x9B9F605F5A858107ull}},  // q
    {{0, 0, 0, 0}},                                                                                  // x
    {{0x366E550DFDB3BB67ull, 0x4D4DC440D4641A8Full, 0x3CBF3783CD08C0EEull, 0x41ECE55743711A8Cull}},  // y
};

// id-GostR3410-2001-TestParamSet, the example curve of GOST R 34.10-2001
inline constexpr Curve256 kTest = {
    {{0x0000000000000431ull, 0, 0, 0x8000000000000000ull}},                                          // p
    {{7, 0, 0, 0}},                                                                                  // a
    {{0xC59CFC193ACCF5B3ull, 0x50FE8A1892976154ull, 0x0000000000000001ull, 0x8000000000000000ull}},  // q
    {{2, 0, 0, 0}},                                                                                  // x
    {{0x2B96ABBCEA7E8FC8ull, 0x85C97F0A9CA26712ull, 0xBD6316030E16D19Cull, 0x08E2A8A0E65147D4ull}},  // y
};

}  // namespace ec
}  // namespace kx

#endif
