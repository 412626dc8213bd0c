// Helpers for the GOST R 34.10-2001 tests: 32/64-byte values from hex, the
// four curves' constants as bytes.
#ifndef KORVEX_TESTS_EC2001_UTIL_H
#define KORVEX_TESTS_EC2001_UTIL_H

#include <cstring>
#include <ostream>
#include <string>

#include "GOST_34_10_2001.h"
#include "common/test_util.h"

namespace ect {

template <unsigned N>
inline type_uN<N> from_hex(const std::string& h) {
    kt::Bytes b = kt::from_hex(h);
    if (b.size() != N) throw std::runtime_error("bad length for " + h);
    type_uN<N> v;
    std::memcpy(v.b, b.data(), N);
    return v;
}
inline type_uN<32> u256(const std::string& h) { return from_hex<32>(h); }

// A number given big-endian, as published.
inline type_uN<32> be256(const std::string& h) { return u256(kt::to_hex(kt::reversed(kt::from_hex(h)))); }
inline type_uN<32> small(unsigned long long v) { return u256(kt::to_hex(&v, 8) + std::string(48, '0')); }

template <unsigned N>
inline std::string hex(const type_uN<N>& v) { return kt::to_hex(v.b, N); }

struct Curve {
    type_uN<32> p, a, q, x, y;
};

// The published parameter sets (RFC 4357, GOST R 34.10-2001 example), by selector.
inline Curve curve(int set) {
    switch (set) {
        case 1:
            return {be256("FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFD97"),
                    be256("FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFD94"),
                    be256("FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF6C611070995AD10045841B09B761B893"), small(1),
                    be256("8D91E471E0989CDA27DF505A453F2B7635294F2DDF23E3B122ACC99C9E9F1E14")};
        case 2:
            return {be256("8000000000000000000000000000000000000000000000000000000000000C99"),
                    be256("8000000000000000000000000000000000000000000000000000000000000C96"),
                    be256("800000000000000000000000000000015F700CFFF1A624E5E497161BCC8A198F"), small(1),
                    be256("3FA8124359F96680B83D1C3EB2C070E5C545C9858D03ECFB744BF8D717717EFC")};
        case 3:
            return {be256("9B9F605F5A858107AB1EC85E6B41C8AACF846E86789051D37998F7B9022D759B"),
                    be256("9B9F605F5A858107AB1EC85E6B41C8AACF846E86789051D37998F7B9022D7598"),
                    be256("9B9F605F5A858107AB1EC85E6B41C8AA582CA3511EDDFB74F02F3A6598980BB9"), small(0),
                    be256("41ECE55743711A8C3CBF3783CD08C0EE4D4DC440D4641A8F366E550DFDB3BB67")};
        default:
            return {be256("8000000000000000000000000000000000000000000000000000000000000431"), small(7),
                    be256("8000000000000000000000000000000150FE8A1892976154C59CFC193ACCF5B3"), small(2),
                    be256("08E2A8A0E65147D4BD6316030E16D19C85C97F0A9CA267122B96ABBCEA7E8FC8")};
    }
}

}  // namespace ect

// In the namespace of type_uN, so that gtest finds them.
template <unsigned N>
inline bool operator==(const type_uN<N>& a, const type_uN<N>& b) { return std::memcmp(a.b, b.b, N) == 0; }
template <unsigned N>
inline void PrintTo(const type_uN<N>& v, std::ostream* os) { *os << kt::to_hex(v.b, N); }

#endif
