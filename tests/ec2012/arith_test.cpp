// 512-bit arithmetic and the MP family against python3 integers
// (tests/vectors/ec2012/arith.txt) and the edge cases of the definitions.
#include "ec2012_util.h"

using namespace ec2012;

namespace {

std::vector<kt::Record> ops(const std::string& op) {
    std::vector<kt::Record> out;
    for (auto& r : kt::load_records("ec2012/arith.txt"))
        if (r["op"] == op) out.push_back(r);
    return out;
}

U64 all_ones() {
    U64 r;
    for (auto& c : r.b) c = 0xFF;
    return r;
}

}  // namespace

TEST(Arith512, ModularOpsOnEveryCurveModulus) {
    auto recs = ops("mod");
    ASSERT_EQ(recs.size(), 30u);
    for (auto& r : recs) {
        U64 m = le(r["m"]), a = le(r["a"]), b = le(r["b"]), out;
        GOST_34_10_2012_add_mod_p_512_bit(&out, &a, &b, &m);
        EXPECT_EQ(hex(out), r["add"]);
        GOST_34_10_2012_sub_mod_p_512_bit(&out, &a, &b, &m);
        EXPECT_EQ(hex(out), r["sub"]);
        GOST_34_10_2012_mul_mod_p_512_bit(&out, &a, &b, &m);
        EXPECT_EQ(hex(out), r["mul"]);
        out = a;
        GOST_34_10_2012_div_mod_p_512_bit(&out, nullptr, &m);
        EXPECT_EQ(hex(out), r["inv"]);
        out = a;
        GOST_34_10_2012_div_mod_p_512_bit(&out, &b, &m);
        EXPECT_EQ(hex(out), r["div"]);
        // In place: result over an operand.
        U64 x = a;
        GOST_34_10_2012_mul_mod_p_512_bit(&x, &x, &b, &m);
        EXPECT_EQ(hex(x), r["mul"]);
        x = b;
        GOST_34_10_2012_add_mod_p_512_bit(&x, &a, &x, &m);
        EXPECT_EQ(hex(x), r["add"]);
    }
}

TEST(Arith512, CarryBorrowShiftAndCodes) {
    U64 ones = all_ones(), one = small(1), zero{}, r;
    EXPECT_EQ(GOST_34_10_2012_add_512_bit(&r, &ones, &one), 1);
    EXPECT_EQ(hex(r), hex(zero));
    EXPECT_EQ(GOST_34_10_2012_sub_512_bit(&r, &zero, &one), 1);
    EXPECT_EQ(hex(r), hex(ones));
    EXPECT_EQ(GOST_34_10_2012_sub_512_bit(&r, &one, &one), 0);

    U64 top{};
    top.b[63] = 0x80;
    r = top;
    EXPECT_EQ(GOST_34_10_2012_shl_512_bit(&r), 1);
    EXPECT_EQ(hex(r), hex(zero));
    r = top;
    EXPECT_EQ(GOST_34_10_2012_shr_512_bit(&r), 0);
    EXPECT_EQ(r.b[63], 0x40);
    r = one;
    EXPECT_EQ(GOST_34_10_2012_shr_512_bit(&r), 1);
    // A bit crossing from word 1 to word 0.
    U64 w{};
    w.b[8] = 1;
    GOST_34_10_2012_shr_512_bit(&w);
    EXPECT_EQ(w.b[7], 0x80);

    EXPECT_EQ(GOST_34_10_2012_comparison_512_bit(&top, &one), 2);
    EXPECT_EQ(GOST_34_10_2012_comparison_512_bit(&one, &top), 0);
    EXPECT_EQ(GOST_34_10_2012_comparison_512_bit(&top, &top), 1);
    EXPECT_EQ(GOST_34_10_2012_comparison_512_bit_zero(&zero), 1);
    EXPECT_EQ(GOST_34_10_2012_comparison_512_bit_zero(&top), 2);
    U64 two64{};
    two64.b[8] = 1;
    EXPECT_EQ(GOST_34_10_2012_comparison_512_bit_one(&zero), 0);
    EXPECT_EQ(GOST_34_10_2012_comparison_512_bit_one(&one), 1);
    EXPECT_EQ(GOST_34_10_2012_comparison_512_bit_one(&two64), 2);
    U64 three = small(3);
    EXPECT_EQ(GOST_34_10_2012_comparison_512_bit_one(&three), 2);

    // The exported constants.
    EXPECT_EQ(hex(*zero_512_bit_ptr), hex(zero));
    EXPECT_EQ(hex(*one_512_bit_ptr), hex(one));
    GOST_34_10_2012_set_512_bit(&r, one_512_bit_ptr);
    EXPECT_EQ(hex(r), hex(one));
}

TEST(Arith512, SingleReductionAndDivisionByZero) {
    Curve B = curve(2);
    // mod_p subtracts once: 2^512 - 1 mod (2^511 + 111) leaves 2^511 - 112.
    U64 x = all_ones();
    GOST_34_10_2012_mod_p_512_bit(&x, &B.p);
    U64 want = all_ones();
    want.b[63] = 0x7F;
    want.b[0] = 0x90;  // 2^511 - 112 = 0x7FFF..FF90
    EXPECT_EQ(hex(x), hex(want));
    // A value below p is left alone.
    x = small(5);
    GOST_34_10_2012_mod_p_512_bit(&x, &B.p);
    EXPECT_EQ(hex(x), hex(small(5)));
    // Dividing by zero gives 0, with or without a numerator.
    U64 z{}, n = small(9);
    GOST_34_10_2012_div_mod_p_512_bit(&z, &n, &B.p);
    EXPECT_EQ(hex(z), hex(U64{}));
    GOST_34_10_2012_div_mod_p_512_bit(&z, nullptr, &B.p);
    EXPECT_EQ(hex(z), hex(U64{}));
    // add_mod with a + b >= 2^512 (paramSetA's p is above 2^511) still
    // subtracts p once.
    Curve A = curve(1);
    U64 a = A.p, b = A.p, r;
    a.b[0] -= 1;
    b.b[0] -= 2;
    GOST_34_10_2012_add_mod_p_512_bit(&r, &a, &b, &A.p);
    U64 expect = A.p;
    expect.b[0] -= 3;  // (p - 1) + (p - 2) - p
    EXPECT_EQ(hex(r), hex(expect));
}

TEST(ArithMP, MulModPAgreesWithGenericOnParamSetA) {
    auto recs = ops("mulmp");
    ASSERT_EQ(recs.size(), 12u);
    Curve A = curve(1);
    for (auto& r : recs) {
        U64 m = le(r["m"]), a = le(r["a"]), b = le(r["b"]), fast, slow;
        GOST_34_10_2012_mul_MP_mod_p_512_bit(&fast, &a, &b, &m);
        GOST_34_10_2012_mul_mod_p_512_bit(&slow, &a, &b, &m);
        EXPECT_EQ(hex(slow), r["prod"]);
        // Equal, or one prime above (no final comparison is made).
        if (hex(fast) != r["prod"]) {
            U64 back;
            EXPECT_EQ(GOST_34_10_2012_sub_512_bit(&back, &fast, &A.p), 0);
            EXPECT_EQ(hex(back), r["prod"]);
        }
        // Aliased result.
        GOST_34_10_2012_mul_MP_mod_p_512_bit(&a, &a, &b, &m);
        EXPECT_EQ(hex(a), hex(fast));
    }
}

TEST(ArithMP, MulModPLeavesUnreducedValuesAbovePrime) {
    // (p + 5) * 1 stays p + 5: the product has no high half, no carry, and no
    // final comparison is made.
    Curve A = curve(1);
    U64 a = A.p, one = small(1), r;
    a.b[0] += 5;
    GOST_34_10_2012_mul_MP_mod_p_512_bit(&r, &a, &one, &A.p);
    EXPECT_EQ(hex(r), hex(a));
    // (2^512 - 1)^2 = 2^1024 - 2^513 + 1 folds to a value congruent to
    // (569 - 1)^2 = 322624.
    U64 ones = all_ones();
    GOST_34_10_2012_mul_MP_mod_p_512_bit(&r, &ones, &ones, &A.p);
    U64 expect{};
    expect.b[0] = 322624 & 0xFF;
    expect.b[1] = (322624 >> 8) & 0xFF;
    expect.b[2] = 322624 >> 16;
    EXPECT_EQ(hex(r), hex(expect));
}

TEST(ArithMP, MulModPReturnsPlainLowHalfForOtherModuli) {
    auto recs = ops("mulmp_raw");
    ASSERT_EQ(recs.size(), 9u);
    for (auto& r : recs) {
        U64 m = le(r["m"]), a = le(r["a"]), b = le(r["b"]), out;
        ASSERT_NE(m.b[0], 0xC7);
        GOST_34_10_2012_mul_MP_mod_p_512_bit(&out, &a, &b, &m);
        EXPECT_EQ(hex(out), r["low"]);
    }
    // Only the low byte is looked at: a modulus ending in C7 reduces by 2^512 - 569.
    U64 m = small(0xC7), a = all_ones(), b = small(2), out;
    GOST_34_10_2012_mul_MP_mod_p_512_bit(&out, &a, &b, &m);
    // 2 * (2^512 - 1) = 2^513 - 2 = 2 * 569 - 2 mod (2^512 - 569).
    EXPECT_EQ(hex(out), hex(small(2 * 569 - 2)));
}

TEST(ArithMP, MulModQOnParamSetAOrder) {
    auto recs = ops("mulq");
    ASSERT_EQ(recs.size(), 12u);
    for (auto& r : recs) {
        U64 m = le(r["m"]), a = le(r["a"]), b = le(r["b"]), out;
        GOST_34_10_2012_mul_MP_mod_q_512_bit(&out, &a, &b, &m);
        EXPECT_EQ(hex(out), r["prod"]);
        GOST_34_10_2012_mul_MP_mod_q_512_bit(&b, &a, &b, &m);
        EXPECT_EQ(hex(b), r["prod"]);
    }
    // Nothing to fold (a * 1 < 2^512): only the final comparison reduces.
    U64 q = curve(1).q, one = small(1), out;
    for (U64 a : {q, all_ones()}) {
        U64 want;
        GOST_34_10_2012_sub_512_bit(&want, &a, &q);
        GOST_34_10_2012_mul_MP_mod_q_512_bit(&out, &a, &one, &q);
        EXPECT_EQ(hex(out), hex(want));
    }
}

TEST(ArithMP, Wrappers) {
    kt::Rng rng(512);
    for (int set : {1, 2}) {
        U64 m = curve(set).p;
        for (int i = 0; i < 8; ++i) {
            kt::Bytes ra = rng.bytes(64), rb = rng.bytes(64);
            U64 a, b;
            for (int j = 0; j < 64; ++j) a.b[j] = ra[j], b.b[j] = rb[j];
            a.b[63] &= 0x3F;
            b.b[63] &= 0x3F;  // below both primes
            U64 r, t, e;
            GOST_34_10_2012_squ_MP_mod_p_512_bit(&r, &a, &m);
            GOST_34_10_2012_mul_mod_p_512_bit(&e, &a, &a, &m);
            EXPECT_EQ(hex(r), hex(e));
            GOST_34_10_2012_mul2_MP_512_bit(&r, &a, &m);
            GOST_34_10_2012_add_mod_p_512_bit(&e, &a, &a, &m);
            EXPECT_EQ(hex(r), hex(e));
            GOST_34_10_2012_mul3_MP_512_bit(&r, &a, &m);
            GOST_34_10_2012_add_mod_p_512_bit(&e, &e, &a, &m);
            EXPECT_EQ(hex(r), hex(e));
            t = a;
            GOST_34_10_2012_mul3_MP_512_bit(&t, &t, &m);  // in place
            EXPECT_EQ(hex(t), hex(e));
            GOST_34_10_2012_sub_mul2_MP_512_bit(&r, &a, &b, &m);
            GOST_34_10_2012_add_mod_p_512_bit(&t, &b, &b, &m);
            GOST_34_10_2012_sub_mod_p_512_bit(&e, &a, &t, &m);
            EXPECT_EQ(hex(r), hex(e));
            // Halving: 2 * (a / 2) = a.
            t = a;
            GOST_34_10_2012_div2_mod_MP_512_bit(&t, &m);
            GOST_34_10_2012_add_mod_p_512_bit(&t, &t, &t, &m);
            EXPECT_EQ(hex(t), hex(a));
        }
        // 1 / 2 = (m + 1) / 2.
        U64 h = small(1), expect = m;
        EXPECT_EQ(GOST_34_10_2012_div2_mod_MP_512_bit(&h, &m), 0);
        GOST_34_10_2012_add_512_bit(&expect, &expect, one_512_bit_ptr);
        GOST_34_10_2012_shr_512_bit(&expect);
        EXPECT_EQ(hex(h), hex(expect));
    }
    // The carry of a + m enters bit 511 (a 513-bit halving).
    Curve A = curve(1);
    U64 a = A.p, r;
    a.b[0] -= 2;  // p - 2 is odd; p - 2 + p >= 2^512
    r = a;
    GOST_34_10_2012_div2_mod_MP_512_bit(&r, &A.p);
    U64 expect = A.p;
    expect.b[0] -= 1;  // (2p - 2) / 2 = p - 1
    EXPECT_EQ(hex(r), hex(expect));
}
