// The two sizes of the GOST R 34.10 arithmetic (256-bit: 2001 and 2012-256;
// 512-bit: 2012-512) behind one set of names, so that the typed suites run
// each check over both; each size's python3 fixture and curve constants.
#ifndef KORVEX_TESTS_EC_SIZES_H
#define KORVEX_TESTS_EC_SIZES_H

#include <gtest/gtest.h>

#include "ec2001/ec_test_util.h"
#include "ec2012/ec2012_util.h"

namespace ecs {

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
    static Curve<V> curve(int s) { auto c = ect::curve(s); return {c.p, c.a, c.q, c.x, c.y}; }
    static V* zero() { return zero_256_bit_ptr; }
    static V* one() { return one_256_bit_ptr; }
    static constexpr auto add = GOST_34_10_2001_add_256_bit, sub = GOST_34_10_2001_sub_256_bit;
    static constexpr auto shl = GOST_34_10_2001_shl_256_bit, shr = GOST_34_10_2001_shr_256_bit;
    static constexpr auto set = GOST_34_10_2001_set_256_bit;
    static constexpr auto cmp = GOST_34_10_2001_comparison_256_bit;
    static constexpr auto cmp0 = GOST_34_10_2001_comparison_256_bit_zero;
    static constexpr auto cmp1 = GOST_34_10_2001_comparison_256_bit_one;
    static constexpr auto addm = GOST_34_10_2001_add_mod_p_256_bit, subm = GOST_34_10_2001_sub_mod_p_256_bit;
    static constexpr auto mulm = GOST_34_10_2001_mul_mod_p_256_bit, divm = GOST_34_10_2001_div_mod_p_256_bit;
    static constexpr auto modp = GOST_34_10_2001_mod_p_256_bit;
    static constexpr auto dbl = GOST_34_10_2001_mul_2_EP, padd = GOST_34_10_2001_add_EP;
    static constexpr auto mulk = GOST_34_10_2001_mul_k_EP;
    using Sig = type_uN<64>;
    static constexpr auto genkp = GOST_34_10_2001_gen_key_pair, open = GOST_34_10_2001_gen_open_key;
    static constexpr auto sign = GOST_34_10_2001_create_DS, verify = GOST_34_10_2001_check_DS;
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
    static constexpr auto add = GOST_34_10_2012_add_512_bit, sub = GOST_34_10_2012_sub_512_bit;
    static constexpr auto shl = GOST_34_10_2012_shl_512_bit, shr = GOST_34_10_2012_shr_512_bit;
    static constexpr auto set = GOST_34_10_2012_set_512_bit;
    static constexpr auto cmp = GOST_34_10_2012_comparison_512_bit;
    static constexpr auto cmp0 = GOST_34_10_2012_comparison_512_bit_zero;
    static constexpr auto cmp1 = GOST_34_10_2012_comparison_512_bit_one;
    static constexpr auto addm = GOST_34_10_2012_add_mod_p_512_bit, subm = GOST_34_10_2012_sub_mod_p_512_bit;
    static constexpr auto mulm = GOST_34_10_2012_mul_mod_p_512_bit, divm = GOST_34_10_2012_div_mod_p_512_bit;
    static constexpr auto modp = GOST_34_10_2012_mod_p_512_bit;
    static constexpr auto dbl = GOST_34_10_2012_mul_2_EP_test, padd = GOST_34_10_2012_add_EP_test;
    static constexpr auto mulk = GOST_34_10_2012_mul_k_EP_test;
    using Sig = type_uN<128>;
    static constexpr auto genkp = GOST_34_10_2012_512_gen_key_pair, open = GOST_34_10_2012_512_gen_open_key;
    static constexpr auto sign = GOST_34_10_2012_create_DS_512_bit, verify = GOST_34_10_2012_check_DS_512_bit;
    static constexpr auto rotate = GOST_34_10_2012_rotate_DS_TC26;
};

using Sizes = ::testing::Types<Ec256, Ec512>;

// The first line of a typed test over Sizes: S the size, V its values.
#define EC_SIZE using S = TypeParam; using V = typename S::V

// Values of either size, little-endian as in the fixtures.
template <class V>
V le(const std::string& h) { return ec2012::le<V>(h); }
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

template <class S>
std::vector<kt::Record> ops(const std::string& op) {
    std::vector<kt::Record> out;
    for (auto& r : kt::load_records(S::fixture))
        if (r["op"] == op) out.push_back(r);
    return out;
}

}  // namespace ecs

#endif
