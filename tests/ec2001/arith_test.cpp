// 256-bit arithmetic: result codes, carries, aliasing, the single
// conditional subtraction, and modular results against python3 integers.
#include <gtest/gtest.h>

#include <vector>

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

TEST(Arith256, AddSubCarryBorrowAndAliasing) {
    T r, one = small(1), zero{};
    struct Case { T a, b, sum, diff; int carry, borrow; };
    const Case cases[] = {
        {kMax, one, zero, u256("fe" + std::string(62, 'f')), 1, 0},
        {zero, one, one, kMax, 0, 1},
        {one, one, small(2), zero, 0, 0},
        // A carry that ripples through every 32-bit limb.
        {u256(std::string(62, 'f') + "7f"), one, pow2(255), u256("fe" + std::string(60, 'f') + "7f"), 0, 0},
    };
    for (auto c : cases) {
        EXPECT_EQ(GOST_34_10_2001_add_256_bit(&r, &c.a, &c.b), c.carry);
        EXPECT_EQ(r, c.sum);
        EXPECT_EQ(GOST_34_10_2001_sub_256_bit(&r, &c.a, &c.b), c.borrow);
        EXPECT_EQ(r, c.diff);
    }
    auto recs = ect::ops("addsub");
    EXPECT_EQ(recs.size(), 24u);
    for (auto& rec : recs) {
        T a = u256(rec["a"]), b = u256(rec["b"]), x = a, y = b;
        EXPECT_EQ(GOST_34_10_2001_add_256_bit(&r, &a, &b), std::stoi(rec["carry"]));
        EXPECT_EQ(ect::hex(r), rec["sum"]);
        EXPECT_EQ(GOST_34_10_2001_sub_256_bit(&r, &a, &b), std::stoi(rec["borrow"]));
        EXPECT_EQ(ect::hex(r), rec["diff"]);
        GOST_34_10_2001_add_256_bit(&x, &x, &b);  // in place, both positions
        EXPECT_EQ(ect::hex(x), rec["sum"]);
        GOST_34_10_2001_sub_256_bit(&y, &a, &y);
        EXPECT_EQ(ect::hex(y), rec["diff"]);
    }
}

// {value, shift left?, bit out, result}: bits cross every 64-bit word
// boundary, and a zero enters at the top.
TEST(Arith256, Shifts) {
    struct Case { T v; bool left; int out; T r; };
    std::vector<Case> cases = {{pow2(255), true, 1, T{}}, {small(1), false, 1, T{}},
                               {kMax, false, 1, u256(std::string(62, 'f') + "7f")},
                               {u256(std::string(62, 'f') + "7f"), true, 0, u256("fe" + std::string(62, 'f'))}};
    for (unsigned bit : {63u, 64u, 127u, 128u, 191u, 192u})
        cases.insert(cases.end(), {{pow2(bit), true, 0, pow2(bit + 1)}, {pow2(bit + 1), false, 0, pow2(bit)}});
    for (auto c : cases) {
        EXPECT_EQ(c.left ? GOST_34_10_2001_shl_256_bit(&c.v) : GOST_34_10_2001_shr_256_bit(&c.v), c.out);
        EXPECT_EQ(c.v, c.r);
    }
}

// Three-way comparison against b, the zero test and the one test of a.
TEST(Arith256, ComparisonCodes) {
    struct Case { T a, b; int cmp, zero, one; };
    const Case cases[] = {
        {T{}, T{}, 1, 1, 0},
        {small(1), small(2), 0, 2, 1},
        {small(6), small(5), 2, 2, 2},
        {pow2(255), kMax, 0, 2, 2},         // top word decides
        {pow2(64), small(~0ull), 2, 2, 2},  // word 1 beats word 0
        {u256("01" + std::string(46, '0') + "01" + std::string(14, '0')), kMax, 0, 2, 2},  // 1 + 2^192
        {kMax, kMax, 1, 2, 2},
    };
    for (auto c : cases) {
        SCOPED_TRACE(ect::hex(c.a));
        EXPECT_EQ(GOST_34_10_2001_comparison_256_bit(&c.a, &c.b), c.cmp);
        EXPECT_EQ(GOST_34_10_2001_comparison_256_bit(&c.a, &c.a), 1);
        EXPECT_EQ(GOST_34_10_2001_comparison_256_bit_zero(&c.a), c.zero);
        EXPECT_EQ(GOST_34_10_2001_comparison_256_bit_one(&c.a), c.one);
    }
}

TEST(Arith256, ConstantsSetAndMisalignedOperands) {
    EXPECT_EQ(*zero_256_bit_ptr, T{});
    EXPECT_EQ(*one_256_bit_ptr, small(1));
    T r;
    GOST_34_10_2001_set_256_bit(&r, one_256_bit_ptr);
    EXPECT_EQ(r, small(1));
    unsigned char raw[64 + 3];
    for (unsigned i = 0; i < sizeof raw; ++i) raw[i] = static_cast<unsigned char>(i);
    T *odd1 = reinterpret_cast<T*>(raw + 1), *odd2 = reinterpret_cast<T*>(raw + 34);
    T a = *odd1, b = *odd2, expect;
    GOST_34_10_2001_add_256_bit(&expect, &a, &b);
    GOST_34_10_2001_add_256_bit(odd1, odd1, odd2);
    EXPECT_EQ(*odd1, expect);
}

// Modular results on hand-picked operands: one subtraction or addition of p
// only, so out-of-range operands stay unreduced.
TEST(Arith256, ModularEdgeCases) {
    enum Op { Mod, Add, Sub, Mul, Div, Inv };
    T pA = ect::curve(1).p, pB = ect::curve(2).p, one = small(1), three = small(3), eleven = small(11);
    T pA1, pB3, wrapped, max = kMax, invB3 = three;
    GOST_34_10_2001_sub_256_bit(&pA1, &pA, &one);
    GOST_34_10_2001_add_256_bit(&pB3, &pB, &three);
    GOST_34_10_2001_sub_256_bit(&wrapped, &max, &eleven);  // 2^256 - 12
    GOST_34_10_2001_div_mod_p_256_bit(&invB3, nullptr, &pB);
    struct Case { Op op; T a, b, p, r; const char* what; };
    const Case cases[] = {
        {Mod, small(4), {}, small(5), small(4), "below p"},
        {Mod, small(5), {}, small(5), small(0), "equal to p"},
        {Mod, small(11), {}, small(5), small(6), "one subtraction only"},
        {Add, pA1, one, pA, {}, "p - 1 + 1"},
        {Add, small(22), {}, small(7), small(15), "22 + 0: one subtraction"},
        {Sub, {}, one, pA, pA1, "0 - 1"},
        {Sub, small(3), small(22), small(7), wrapped, "borrow adds p once, carry dropped"},
        {Sub, small(22), one, small(7), small(21), "no borrow, no reduction"},
        {Mul, small(22), one, small(7), small(15), "r = 0 + A mod p, one subtraction"},
        {Mul, one, small(22), small(7), small(1), "a large multiplier only shifts"},
        {Mul, small(123), {}, pA, {}, "times zero"},
        {Div, {}, small(5), pB, {}, "division by zero gives 0"},
        {Inv, {}, {}, pB, {}, "1 / 0 gives 0"},
        {Div, small(3), one, pB, invB3, "numerator 1 = null numerator"},
        {Div, one, small(77), pB, small(77), "77 / 1"},
        {Inv, pB3, {}, pB, invB3, "x >= p coprime to p still inverts"},
        {Inv, small(3), {}, small(9), small(4), "not coprime: Euclid ends on u = 0, returns x2"},
    };
    for (auto c : cases) {
        T r = c.a;
        switch (c.op) {
            case Mod: GOST_34_10_2001_mod_p_256_bit(&r, &c.p); break;
            case Add: GOST_34_10_2001_add_mod_p_256_bit(&r, &c.a, &c.b, &c.p); break;
            case Sub: GOST_34_10_2001_sub_mod_p_256_bit(&r, &c.a, &c.b, &c.p); break;
            case Mul: GOST_34_10_2001_mul_mod_p_256_bit(&r, &c.a, &c.b, &c.p); break;
            case Div: GOST_34_10_2001_div_mod_p_256_bit(&r, &c.b, &c.p); break;
            case Inv: GOST_34_10_2001_div_mod_p_256_bit(&r, nullptr, &c.p); break;
        }
        EXPECT_EQ(r, c.r) << c.what;
    }
    T x = small(3), r;  // the inverse times its input is 1
    GOST_34_10_2001_mul_mod_p_256_bit(&r, &invB3, &x, &pB);
    EXPECT_EQ(r, one);
    GOST_34_10_2001_mul_mod_p_256_bit(&x, &x, &x, &pA);  // both operands aliased with r
    EXPECT_EQ(x, small(9));
}

// a + b, a - b, a * b, 1 / a and b / a modulo every p and q of the four
// curves, against python3; some also with the result over an operand. The
// first record of each modulus adds m - 1 and m - 2: past 2^256 for
// CryptoPro-A's p, still one subtraction.
TEST(Arith256, ModularAgainstPython) {
    auto recs = ect::ops("mod");
    EXPECT_EQ(recs.size(), 48u);
    for (auto& rec : recs) {
        T m = u256(rec["m"]), a = u256(rec["a"]), b = u256(rec["b"]), r, x = a, y = b, z = a;
        GOST_34_10_2001_add_mod_p_256_bit(&r, &a, &b, &m);
        EXPECT_EQ(ect::hex(r), rec["add"]);
        GOST_34_10_2001_sub_mod_p_256_bit(&r, &a, &b, &m);
        EXPECT_EQ(ect::hex(r), rec["sub"]);
        GOST_34_10_2001_mul_mod_p_256_bit(&r, &a, &b, &m);
        EXPECT_EQ(ect::hex(r), rec["mul"]);
        GOST_34_10_2001_div_mod_p_256_bit(&x, nullptr, &m);
        EXPECT_EQ(ect::hex(x), rec["inv"]);
        x = a;
        GOST_34_10_2001_div_mod_p_256_bit(&x, &b, &m);
        EXPECT_EQ(ect::hex(x), rec["div"]);
        GOST_34_10_2001_mul_mod_p_256_bit(&y, &a, &y, &m);
        EXPECT_EQ(ect::hex(y), rec["mul"]);
        GOST_34_10_2001_sub_mod_p_256_bit(&z, &z, &b, &m);
        EXPECT_EQ(ect::hex(z), rec["sub"]);
    }
}

}  // namespace
