// 256-bit arithmetic: result codes, carries, aliasing, the single
// conditional subtraction, and modular results against python3 integers.
#include <gtest/gtest.h>

#include "ec2001/ec_test_util.h"

using ect::small;
using ect::u256;
using T = type_uN<32>;

namespace {

const T kMax = u256(std::string(64, 'f'));

T pow2(unsigned bit) {
    T r{};
    r.b[bit / 8] = static_cast<unsigned char>(1u << (bit % 8));
    return r;
}

TEST(Arith256, AddSubCarryAndBorrow) {
    T r, one = small(1), zero{};
    EXPECT_EQ(GOST_34_10_2001_add_256_bit(&r, const_cast<T*>(&kMax), &one), 1);
    EXPECT_EQ(r, zero);
    EXPECT_EQ(GOST_34_10_2001_sub_256_bit(&r, &zero, &one), 1);
    EXPECT_EQ(r, kMax);
    EXPECT_EQ(GOST_34_10_2001_sub_256_bit(&r, &one, &one), 0);
    EXPECT_EQ(r, zero);
    // A carry that ripples through every 32-bit limb.
    T low = u256("ffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffff7f");
    EXPECT_EQ(GOST_34_10_2001_add_256_bit(&r, &low, &one), 0);
    EXPECT_EQ(r, pow2(255));
}

TEST(Arith256, AddSubAgainstPython) {
    int n = 0;
    for (auto& rec : kt::load_records("ec2001/arith.txt")) {
        if (rec["op"] != "addsub") continue;
        T a = u256(rec["a"]), b = u256(rec["b"]), r;
        EXPECT_EQ(GOST_34_10_2001_add_256_bit(&r, &a, &b), std::stoi(rec["carry"]));
        EXPECT_EQ(ect::hex(r), rec["sum"]);
        EXPECT_EQ(GOST_34_10_2001_sub_256_bit(&r, &a, &b), std::stoi(rec["borrow"]));
        EXPECT_EQ(ect::hex(r), rec["diff"]);
        // In place, both positions.
        T x = a;
        GOST_34_10_2001_add_256_bit(&x, &x, &b);
        EXPECT_EQ(ect::hex(x), rec["sum"]);
        x = b;
        GOST_34_10_2001_sub_256_bit(&x, &a, &x);
        EXPECT_EQ(ect::hex(x), rec["diff"]);
        ++n;
    }
    EXPECT_GT(n, 10);
}

TEST(Arith256, Shifts) {
    T a = pow2(255);
    EXPECT_EQ(GOST_34_10_2001_shl_256_bit(&a), 1);
    EXPECT_EQ(a, T{});
    a = small(1);
    EXPECT_EQ(GOST_34_10_2001_shr_256_bit(&a), 1);
    EXPECT_EQ(a, T{});
    // Bits cross every 64-bit word boundary, and a zero enters at the top.
    a = kMax;
    EXPECT_EQ(GOST_34_10_2001_shr_256_bit(&a), 1);
    EXPECT_EQ(a, u256(std::string(62, 'f') + "7f"));
    EXPECT_EQ(GOST_34_10_2001_shl_256_bit(&a), 0);
    EXPECT_EQ(a, u256("fe" + std::string(62, 'f')));
    for (unsigned bit : {63u, 64u, 127u, 128u, 191u, 192u}) {
        T v = pow2(bit);
        EXPECT_EQ(GOST_34_10_2001_shl_256_bit(&v), 0);
        EXPECT_EQ(v, pow2(bit + 1)) << bit;
        EXPECT_EQ(GOST_34_10_2001_shr_256_bit(&v), 0);
        EXPECT_EQ(v, pow2(bit)) << bit;
    }
}

TEST(Arith256, ComparisonCodes) {
    struct Case { T a, b; unsigned char code; };
    const Case cases[] = {
        {small(5), small(5), 1},
        {small(6), small(5), 2},
        {small(5), small(6), 0},
        {pow2(255), kMax, 0},         // top word decides
        {pow2(64), small(~0ull), 2},  // word 1 beats word 0
        {kMax, kMax, 1},
    };
    for (const auto& c : cases) {
        T a = c.a, b = c.b;
        EXPECT_EQ(GOST_34_10_2001_comparison_256_bit(&a, &b), c.code) << ect::hex(a) << " " << ect::hex(b);
    }
    T x = small(9);
    EXPECT_EQ(GOST_34_10_2001_comparison_256_bit(&x, &x), 1);
}

TEST(Arith256, ZeroAndOneTests) {
    struct Case { T a; unsigned char zero, one; };
    const Case cases[] = {
        {T{}, 1, 0},
        {small(1), 2, 1},
        {small(2), 2, 2},
        {pow2(64), 2, 2},
        {pow2(255), 2, 2},
        {u256("01" + std::string(46, '0') + "01" + std::string(14, '0')), 2, 2},  // 1 + 2^192
    };
    for (auto c : cases) {
        EXPECT_EQ(GOST_34_10_2001_comparison_256_bit_zero(&c.a), c.zero) << ect::hex(c.a);
        EXPECT_EQ(GOST_34_10_2001_comparison_256_bit_one(&c.a), c.one) << ect::hex(c.a);
    }
}

TEST(Arith256, ConstantsAndSet) {
    EXPECT_EQ(*zero_256_bit_ptr, T{});
    EXPECT_EQ(*one_256_bit_ptr, small(1));
    T r;
    GOST_34_10_2001_set_256_bit(&r, one_256_bit_ptr);
    EXPECT_EQ(r, small(1));
    // Caller buffers may sit at any alignment.
    unsigned char raw[64 + 3];
    for (unsigned i = 0; i < sizeof raw; ++i) raw[i] = static_cast<unsigned char>(i);
    T* odd1 = reinterpret_cast<T*>(raw + 1);
    T* odd2 = reinterpret_cast<T*>(raw + 34);
    T expect;
    T a = *odd1, b = *odd2;
    GOST_34_10_2001_add_256_bit(&expect, &a, &b);
    GOST_34_10_2001_add_256_bit(odd1, odd1, odd2);
    EXPECT_EQ(*odd1, expect);
}

TEST(Arith256, SingleConditionalSubtraction) {
    T p = small(5);
    struct Case { unsigned long long a, r; };
    for (auto c : {Case{4, 4}, Case{5, 0}, Case{9, 4}, Case{11, 6}, Case{16, 11}}) {
        T a = small(c.a);
        GOST_34_10_2001_mod_p_256_bit(&a, &p);
        EXPECT_EQ(a, small(c.r)) << c.a;
    }
}

TEST(Arith256, ModularEdgeCases) {
    ect::Curve c = ect::curve(1);  // p > 2^255: sums of reduced values can pass 2^256
    T pm1 = c.p, one = small(1), two = small(2), r;
    GOST_34_10_2001_sub_256_bit(&pm1, &pm1, &one);
    GOST_34_10_2001_add_mod_p_256_bit(&r, &pm1, &pm1, &c.p);
    T expect = c.p;
    GOST_34_10_2001_sub_256_bit(&expect, &expect, &two);
    EXPECT_EQ(r, expect);  // 2p - 2 - p
    T zero{};
    GOST_34_10_2001_sub_mod_p_256_bit(&r, &zero, &one, &c.p);
    EXPECT_EQ(r, pm1);
    GOST_34_10_2001_add_mod_p_256_bit(&r, &pm1, &one, &c.p);
    EXPECT_EQ(r, zero);

    // Out-of-range operands: only one subtraction, so results stay unreduced.
    T p7 = small(7), a = small(22), b = small(1), z{};
    GOST_34_10_2001_add_mod_p_256_bit(&r, &a, &z, &p7);
    EXPECT_EQ(r, small(15));
    GOST_34_10_2001_mul_mod_p_256_bit(&r, &a, &b, &p7);
    EXPECT_EQ(r, small(15));  // r = 0 + A mod p, one subtraction
    GOST_34_10_2001_mul_mod_p_256_bit(&r, &b, &a, &p7);
    EXPECT_EQ(r, small(1));   // a large multiplier only shifts: 22 mod 7
    // A borrow adds p back once, the carry dropped: 3 - 22 + 7 wraps to 2^256 - 12.
    T three = small(3), wrapped = kMax;
    GOST_34_10_2001_sub_256_bit(&wrapped, &wrapped, &(r = small(11)));
    GOST_34_10_2001_sub_mod_p_256_bit(&r, &three, &a, &p7);
    EXPECT_EQ(r, wrapped);
    // No borrow, no reduction: 22 - 1 stays 21.
    GOST_34_10_2001_sub_mod_p_256_bit(&r, &a, &b, &p7);
    EXPECT_EQ(r, small(21));

    // mul by zero; mul aliasing both operands.
    T x = small(123);
    GOST_34_10_2001_mul_mod_p_256_bit(&r, &x, &z, &c.p);
    EXPECT_EQ(r, z);
    GOST_34_10_2001_mul_mod_p_256_bit(&x, &x, &x, &c.p);
    EXPECT_EQ(x, small(123 * 123));
}

TEST(Arith256, DivisionCases) {
    ect::Curve c = ect::curve(2);
    T x{}, r;
    GOST_34_10_2001_div_mod_p_256_bit(&x, nullptr, &c.p);
    EXPECT_EQ(x, T{});  // division by zero gives 0
    T n = small(5);
    x = T{};
    GOST_34_10_2001_div_mod_p_256_bit(&x, &n, &c.p);
    EXPECT_EQ(x, T{});
    // A null numerator is 1.
    T a = small(3), b = small(3);
    GOST_34_10_2001_div_mod_p_256_bit(&a, nullptr, &c.p);
    GOST_34_10_2001_div_mod_p_256_bit(&b, one_256_bit_ptr, &c.p);
    EXPECT_EQ(a, b);
    GOST_34_10_2001_mul_mod_p_256_bit(&r, &a, &(n = small(3)), &c.p);
    EXPECT_EQ(r, small(1));
    // x = 1 and numerator n: n itself.
    T one = small(1), n7 = small(77);
    GOST_34_10_2001_div_mod_p_256_bit(&one, &n7, &c.p);
    EXPECT_EQ(one, small(77));
    // x >= p coprime to p still inverts (the Euclid loop does not care).
    T big = c.p, three = small(3);
    GOST_34_10_2001_add_256_bit(&big, &big, &three);
    GOST_34_10_2001_div_mod_p_256_bit(&big, nullptr, &c.p);
    EXPECT_EQ(big, b);
    // Not coprime (p = 9, x = 3): the loop ends with u = 0 and returns x2,
    // which the steps make 4.
    T p9 = small(9), x3 = small(3);
    GOST_34_10_2001_div_mod_p_256_bit(&x3, nullptr, &p9);
    EXPECT_EQ(x3, small(4));
    // Small field by hand: 1/2 mod 7 = 4, 3/5 mod 7 = 2.
    T p7 = small(7), two = small(2), five = small(5), n3 = small(3);
    GOST_34_10_2001_div_mod_p_256_bit(&two, nullptr, &p7);
    EXPECT_EQ(two, small(4));
    GOST_34_10_2001_div_mod_p_256_bit(&five, &n3, &p7);
    EXPECT_EQ(five, small(2));
}

// a + b, a - b, a * b, 1 / a and b / a modulo every p and q of the four
// curves, against python3; each also with the result over an operand.
TEST(Arith256, ModularAgainstPython) {
    int n = 0;
    for (auto& rec : kt::load_records("ec2001/arith.txt")) {
        if (rec["op"] != "mod") continue;
        T m = u256(rec["m"]), a = u256(rec["a"]), b = u256(rec["b"]), r;
        GOST_34_10_2001_add_mod_p_256_bit(&r, &a, &b, &m);
        EXPECT_EQ(ect::hex(r), rec["add"]);
        GOST_34_10_2001_sub_mod_p_256_bit(&r, &a, &b, &m);
        EXPECT_EQ(ect::hex(r), rec["sub"]);
        GOST_34_10_2001_mul_mod_p_256_bit(&r, &a, &b, &m);
        EXPECT_EQ(ect::hex(r), rec["mul"]);
        T x = a;
        GOST_34_10_2001_div_mod_p_256_bit(&x, nullptr, &m);
        EXPECT_EQ(ect::hex(x), rec["inv"]);
        x = a;
        GOST_34_10_2001_div_mod_p_256_bit(&x, &b, &m);
        EXPECT_EQ(ect::hex(x), rec["div"]);
        T y = b;
        GOST_34_10_2001_mul_mod_p_256_bit(&y, &a, &y, &m);
        EXPECT_EQ(ect::hex(y), rec["mul"]);
        y = a;
        GOST_34_10_2001_sub_mod_p_256_bit(&y, &y, &b, &m);
        EXPECT_EQ(ect::hex(y), rec["sub"]);
        ++n;
    }
    EXPECT_EQ(n, 48);
}

}  // namespace
