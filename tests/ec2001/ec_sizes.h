// The two sizes of the GOST R 34.10 arithmetic (256-bit: 2001 and 2012-256;
// 512-bit: 2012-512) behind one set of names, so that the typed suites run
// each check over both; each size's python3 fixture and curve constants.
#ifndef KORVEX_TESTS_EC_SIZES_H
#define KORVEX_TESTS_EC_SIZES_H

#include <gtest/gtest.h>

#include <cstring>
#include <ostream>

#include "GOST_34_10_2001.h"
#include "ec2012/ec2012_util.h"

namespace ecs {

// Values of either size, little-endian as in the fixtures.
template <class V>
V le(const std::string& h) { return ec2012::le<V>(h); }
template <class V>
V be(const std::string& h) { return le<V>(kt::to_hex(kt::reversed(kt::from_hex(h)))); }
template <class V>
V small(unsigned long long v) { return le<V>(kt::to_hex(&v, 8)); }
template <class V>
V pow2(unsigned bit) {
    V r{};
    r.b[bit / 8] = static_cast<unsigned char>(1u << (bit % 8));
    return r;
}
// All ones, with the low byte and the top byte replaced.
template <class V>
V ones(unsigned char low = 0xFF, unsigned char top = 0xFF) {
    V r;
    std::memset(r.b, 0xFF, sizeof r.b);
    r.b[0] = low, r.b[sizeof r.b - 1] = top;
    return r;
}
template <class V>
std::string hex(const V& v) { return kt::to_hex(v.b, sizeof v.b); }

template <class V>
struct Curve {
    V p, a, q, x, y;
};

struct Ec256 {
    using V = type_uN<32>;
    static constexpr const char* fixture = "ec2001/arith.txt";
    static constexpr const char* ours = "ec2001/ours.txt";
    static constexpr unsigned kAddSub = 24, kMod = 48, kPoint = 32, kSum = 4;
    static constexpr int sets[] = {0, 1, 2, 3};
    // The published parameter sets (RFC 4357, GOST R 34.10-2001 example), by selector.
    static Curve<V> curve(int which) {
        switch (which) {
            case 1:
                return {be<V>("FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFD97"),
                        be<V>("FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFD94"),
                        be<V>("FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF6C611070995AD10045841B09B761B893"), small<V>(1),
                        be<V>("8D91E471E0989CDA27DF505A453F2B7635294F2DDF23E3B122ACC99C9E9F1E14")};
            case 2:
                return {be<V>("8000000000000000000000000000000000000000000000000000000000000C99"),
                        be<V>("8000000000000000000000000000000000000000000000000000000000000C96"),
                        be<V>("800000000000000000000000000000015F700CFFF1A624E5E497161BCC8A198F"), small<V>(1),
                        be<V>("3FA8124359F96680B83D1C3EB2C070E5C545C9858D03ECFB744BF8D717717EFC")};
            case 3:
                return {be<V>("9B9F605F5A858107AB1EC85E6B41C8AACF846E86789051D37998F7B9022D759B"),
                        be<V>("9B9F605F5A858107AB1EC85E6B41C8AACF846E86789051D37998F7B9022D7598"),
                        be<V>("9B9F605F5A858107AB1EC85E6B41C8AA582CA3511EDDFB74F02F3A6598980BB9"), small<V>(0),
                        be<V>("41ECE55743711A8C3CBF3783CD08C0EE4D4DC440D4641A8F366E550DFDB3BB67")};
            default:
                return {be<V>("8000000000000000000000000000000000000000000000000000000000000431"), small<V>(7),
                        be<V>("8000000000000000000000000000000150FE8A1892976154C59CFC193ACCF5B3"), small<V>(2),
                        be<V>("08E2A8A0E65147D4BD6316030E16D19C85C97F0A9CA267122B96ABBCEA7E8FC8")};
        }
    }
    static V* zero() { return zero_256_bit_ptr; }
    static V* one() { return one_256_bit_ptr; }
    static constexpr auto add = GOST_34_10_2001_add_256_bit;
    static constexpr auto sub = GOST_34_10_2001_sub_256_bit;
    static constexpr auto shl = GOST_34_10_2001_shl_256_bit;
    static constexpr auto shr = GOST_34_10_2001_shr_256_bit;
    static constexpr auto set = GOST_34_10_2001_set_256_bit;
    static constexpr auto cmp = GOST_34_10_2001_comparison_256_bit;
    static constexpr auto cmp0 = GOST_34_10_2001_comparison_256_bit_zero;
    static constexpr auto cmp1 = GOST_34_10_2001_comparison_256_bit_one;
    static constexpr auto addm = GOST_34_10_2001_add_mod_p_256_bit;
    static constexpr auto subm = GOST_34_10_2001_sub_mod_p_256_bit;
    static constexpr auto mulm = GOST_34_10_2001_mul_mod_p_256_bit;
    static constexpr auto divm = GOST_34_10_2001_div_mod_p_256_bit;
    static constexpr auto modp = GOST_34_10_2001_mod_p_256_bit;
    static constexpr auto dbl = GOST_34_10_2001_mul_2_EP;
    static constexpr auto padd = GOST_34_10_2001_add_EP;
    static constexpr auto mulk = GOST_34_10_2001_mul_k_EP;
    using Sig = type_uN<64>;
    static constexpr auto genkp = GOST_34_10_2001_gen_key_pair;
    static constexpr auto open = GOST_34_10_2001_gen_open_key;
    static constexpr auto sign = GOST_34_10_2001_create_DS;
    static constexpr auto verify = GOST_34_10_2001_check_DS;
    static constexpr auto rotate = GOST_34_10_2001_rotate_DS_RFC4490;
};

// The 512-bit affine family is the generic *_test one; the unsuffixed and
// Jacobian variants have suites of their own (tests/ec2012).
struct Ec512 {
    using V = type_uN<64>;
    static constexpr const char* fixture = "ec2012/arith.txt";
    static constexpr const char* ours = "ec2012/ours.txt";
    static constexpr unsigned kAddSub = 0, kMod = 30, kPoint = 24, kSum = 3;
    static constexpr int sets[] = {0, 1, 2};
    static Curve<V> curve(int s) { auto c = ec2012::curve(s); return {c.p, c.a, c.q, c.x, c.y}; }
    static V* zero() { return zero_512_bit_ptr; }
    static V* one() { return one_512_bit_ptr; }
    static constexpr auto add = GOST_34_10_2012_add_512_bit;
    static constexpr auto sub = GOST_34_10_2012_sub_512_bit;
    static constexpr auto shl = GOST_34_10_2012_shl_512_bit;
    static constexpr auto shr = GOST_34_10_2012_shr_512_bit;
    static constexpr auto set = GOST_34_10_2012_set_512_bit;
    static constexpr auto cmp = GOST_34_10_2012_comparison_512_bit;
    static constexpr auto cmp0 = GOST_34_10_2012_comparison_512_bit_zero;
    static constexpr auto cmp1 = GOST_34_10_2012_comparison_512_bit_one;
    static constexpr auto addm = GOST_34_10_2012_add_mod_p_512_bit;
    static constexpr auto subm = GOST_34_10_2012_sub_mod_p_512_bit;
    static constexpr auto mulm = GOST_34_10_2012_mul_mod_p_512_bit;
    static constexpr auto divm = GOST_34_10_2012_div_mod_p_512_bit;
    static constexpr auto modp = GOST_34_10_2012_mod_p_512_bit;
    static constexpr auto dbl = GOST_34_10_2012_mul_2_EP_test;
    static constexpr auto padd = GOST_34_10_2012_add_EP_test;
    static constexpr auto mulk = GOST_34_10_2012_mul_k_EP_test;
    using Sig = type_uN<128>;
    static constexpr auto genkp = GOST_34_10_2012_512_gen_key_pair;
    static constexpr auto open = GOST_34_10_2012_512_gen_open_key;
    static constexpr auto sign = GOST_34_10_2012_create_DS_512_bit;
    static constexpr auto verify = GOST_34_10_2012_check_DS_512_bit;
    static constexpr auto rotate = GOST_34_10_2012_rotate_DS_TC26;
};

using Sizes = ::testing::Types<Ec256, Ec512>;

// The first line of a typed test over Sizes: S the size, V its values.
#define EC_SIZE using S = TypeParam; using V = typename S::V

template <class S>
std::vector<kt::Record> ops(const std::string& op) {
    std::vector<kt::Record> out;
    for (auto& r : kt::load_records(S::fixture))
        if (r["op"] == op) out.push_back(r);
    return out;
}

}  // namespace ecs

// In the namespace of type_uN, so that gtest finds them.
template <unsigned N>
inline bool operator==(const type_uN<N>& a, const type_uN<N>& b) { return std::memcmp(a.b, b.b, N) == 0; }
template <unsigned N>
inline void PrintTo(const type_uN<N>& v, std::ostream* os) { *os << kt::to_hex(v.b, N); }

#endif
