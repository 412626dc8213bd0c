// 512-bit arithmetic and the MP family against python3 integers
// (tests/vectors/ec2012/arith.txt) and the edge cases of the definitions.
#include "ec2012_util.h"

using namespace ec2012;

namespace {

U64 kOnes = le(std::string(128, 'f'));

U64 pow2(unsigned bit) {
    U64 r{};
    r.b[bit / 8] = static_cast<unsigned char>(1u << (bit % 8));
    return r;
}

}  // namespace

// The first record of each modulus is (m - 1) + (m - 2): past 2^512 for
// paramSetA's p, still one subtraction.
TEST(Arith512, ModularOpsOnEveryCurveModulus) {
    auto recs = ops("mod");
    ASSERT_EQ(recs.size(), 30u);
    for (auto& r : recs) {
        U64 m = le(r["m"]), a = le(r["a"]), b = le(r["b"]), out, x = a, y = b, z = a;
        GOST_34_10_2012_add_mod_p_512_bit(&out, &a, &b, &m);
        EXPECT_EQ(hex(out), r["add"]);
        GOST_34_10_2012_sub_mod_p_512_bit(&out, &a, &b, &m);
        EXPECT_EQ(hex(out), r["sub"]);
        GOST_34_10_2012_mul_mod_p_512_bit(&out, &a, &b, &m);
        EXPECT_EQ(hex(out), r["mul"]);
        GOST_34_10_2012_div_mod_p_512_bit(&x, nullptr, &m);
        EXPECT_EQ(hex(x), r["inv"]);
        GOST_34_10_2012_div_mod_p_512_bit(&z, &b, &m);
        EXPECT_EQ(hex(z), r["div"]);
        z = a;  // in place: result over an operand
        GOST_34_10_2012_mul_mod_p_512_bit(&z, &z, &b, &m);
        EXPECT_EQ(hex(z), r["mul"]);
        GOST_34_10_2012_add_mod_p_512_bit(&y, &a, &y, &m);
        EXPECT_EQ(hex(y), r["add"]);
    }
}

TEST(Arith512, CarryBorrowAndShifts) {
    U64 one = small(1), zero{}, r;
    EXPECT_EQ(GOST_34_10_2012_add_512_bit(&r, &kOnes, &one), 1);
    EXPECT_EQ(hex(r), hex(zero));
    EXPECT_EQ(GOST_34_10_2012_sub_512_bit(&r, &zero, &one), 1);
    EXPECT_EQ(hex(r), hex(kOnes));
    EXPECT_EQ(GOST_34_10_2012_sub_512_bit(&r, &one, &one), 0);
    // {value, shift left?, bit out, result}; 64 -> 63 crosses from word 1 to word 0.
    struct Case { U64 v; bool left; int out; U64 r; };
    for (auto c : {Case{pow2(511), true, 1, zero}, Case{pow2(511), false, 0, pow2(510)},
                   Case{one, false, 1, zero}, Case{pow2(64), false, 0, pow2(63)}, Case{pow2(63), true, 0, pow2(64)}}) {
        EXPECT_EQ(c.left ? GOST_34_10_2012_shl_512_bit(&c.v) : GOST_34_10_2012_shr_512_bit(&c.v), c.out);
        EXPECT_EQ(hex(c.v), hex(c.r));
    }
    EXPECT_EQ(hex(*zero_512_bit_ptr), hex(zero));
    EXPECT_EQ(hex(*one_512_bit_ptr), hex(one));
    GOST_34_10_2012_set_512_bit(&r, one_512_bit_ptr);
    EXPECT_EQ(hex(r), hex(one));
}

// Three-way comparison against b, the zero test and the one test of a.
TEST(Arith512, ComparisonCodes) {
    struct Case { U64 a, b; int cmp, zero, one; };
    const Case cases[] = {
        {U64{}, small(1), 0, 1, 0}, {small(1), pow2(511), 0, 2, 1}, {pow2(511), small(1), 2, 2, 2},
        {pow2(64), small(3), 2, 2, 2}, {small(3), small(3), 1, 2, 2}, {kOnes, kOnes, 1, 2, 2},
    };
    for (auto c : cases) {
        SCOPED_TRACE(hex(c.a));
        EXPECT_EQ(GOST_34_10_2012_comparison_512_bit(&c.a, &c.b), c.cmp);
        EXPECT_EQ(GOST_34_10_2012_comparison_512_bit_zero(&c.a), c.zero);
        EXPECT_EQ(GOST_34_10_2012_comparison_512_bit_one(&c.a), c.one);
    }
}

TEST(Arith512, SingleReductionAndDivisionByZero) {
    Curve B = curve(2);
    // mod_p subtracts once: 2^512 - 1 mod (2^511 + 111) leaves 2^511 - 112.
    U64 x = kOnes, want = kOnes;
    want.b[63] = 0x7F;
    want.b[0] = 0x90;
    GOST_34_10_2012_mod_p_512_bit(&x, &B.p);
    EXPECT_EQ(hex(x), hex(want));
    x = small(5);  // below p: left alone
    GOST_34_10_2012_mod_p_512_bit(&x, &B.p);
    EXPECT_EQ(hex(x), hex(small(5)));
    // Dividing by zero gives 0, with or without a numerator.
    U64 z{}, n = small(9);
    GOST_34_10_2012_div_mod_p_512_bit(&z, &n, &B.p);
    EXPECT_EQ(hex(z), hex(U64{}));
    GOST_34_10_2012_div_mod_p_512_bit(&z, nullptr, &B.p);
    EXPECT_EQ(hex(z), hex(U64{}));
}

// mul_MP_mod_p: python3 products; equal to the generic one or one prime above
// it (no final comparison); only a modulus whose low byte is C7 reduces, by
// 2^512 - 569, any other gives the plain low half.
TEST(ArithMP, MulModP) {
    auto recs = ops("mulmp"), raw = ops("mulmp_raw");
    ASSERT_EQ(recs.size(), 12u);
    ASSERT_EQ(raw.size(), 9u);
    Curve A = curve(1);
    for (auto& r : recs) {
        U64 m = le(r["m"]), a = le(r["a"]), b = le(r["b"]), fast, slow, back;
        GOST_34_10_2012_mul_MP_mod_p_512_bit(&fast, &a, &b, &m);
        GOST_34_10_2012_mul_mod_p_512_bit(&slow, &a, &b, &m);
        EXPECT_EQ(hex(slow), r["prod"]);
        if (hex(fast) != r["prod"]) {
            EXPECT_EQ(GOST_34_10_2012_sub_512_bit(&back, &fast, &A.p), 0);
            EXPECT_EQ(hex(back), r["prod"]);
        }
        GOST_34_10_2012_mul_MP_mod_p_512_bit(&a, &a, &b, &m);  // aliased result
        EXPECT_EQ(hex(a), hex(fast));
    }
    for (auto& r : raw) {
        U64 m = le(r["m"]), a = le(r["a"]), b = le(r["b"]), out;
        ASSERT_NE(m.b[0], 0xC7);
        GOST_34_10_2012_mul_MP_mod_p_512_bit(&out, &a, &b, &m);
        EXPECT_EQ(hex(out), r["low"]);
    }
    U64 ones = kOnes, p5 = A.p, one = small(1), two = small(2), c7 = small(0xC7), out;
    p5.b[0] += 5;
    struct Case { U64 a, b, m, r; const char* what; };
    const Case cases[] = {
        {p5, one, A.p, p5, "(p + 5) * 1: no high half, no carry, stays above p"},
        {ones, ones, A.p, small(322624), "(2^512 - 1)^2 folds to (569 - 1)^2"},
        {ones, two, c7, small(2 * 569 - 2), "only the low byte of m is looked at"},
    };
    for (auto c : cases) {
        GOST_34_10_2012_mul_MP_mod_p_512_bit(&out, &c.a, &c.b, &c.m);
        EXPECT_EQ(hex(out), hex(c.r)) << c.what;
    }
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
    U64 q = curve(1).q, one = small(1), out, want;
    for (U64 a : {q, kOnes}) {
        GOST_34_10_2012_sub_512_bit(&want, &a, &q);
        GOST_34_10_2012_mul_MP_mod_q_512_bit(&out, &a, &one, &q);
        EXPECT_EQ(hex(out), hex(want));
    }
}

// The small MP wrappers against the generic modular operations.
TEST(ArithMP, Wrappers) {
    kt::Rng rng(512);
    for (int set : {1, 2}) {
        U64 m = curve(set).p;
        for (int i = 0; i < 8; ++i) {
            U64 a = le(kt::to_hex(rng.bytes(64))), b = le(kt::to_hex(rng.bytes(64))), r[6], e[6], t;
            a.b[63] &= 0x3F, b.b[63] &= 0x3F;  // below both primes
            r[4] = r[5] = a;
            GOST_34_10_2012_squ_MP_mod_p_512_bit(&r[0], &a, &m);
            GOST_34_10_2012_mul2_MP_512_bit(&r[1], &a, &m);
            GOST_34_10_2012_mul3_MP_512_bit(&r[2], &a, &m);
            GOST_34_10_2012_sub_mul2_MP_512_bit(&r[3], &a, &b, &m);
            GOST_34_10_2012_mul3_MP_512_bit(&r[4], &r[4], &m);  // in place
            GOST_34_10_2012_div2_mod_MP_512_bit(&r[5], &m);      // 2 * (a / 2) = a
            GOST_34_10_2012_add_mod_p_512_bit(&r[5], &r[5], &r[5], &m);
            GOST_34_10_2012_mul_mod_p_512_bit(&e[0], &a, &a, &m);
            GOST_34_10_2012_add_mod_p_512_bit(&e[1], &a, &a, &m);
            GOST_34_10_2012_add_mod_p_512_bit(&e[2], &e[1], &a, &m);
            GOST_34_10_2012_add_mod_p_512_bit(&t, &b, &b, &m);
            GOST_34_10_2012_sub_mod_p_512_bit(&e[3], &a, &t, &m);
            e[4] = e[2], e[5] = a;
            for (int j = 0; j < 6; ++j) EXPECT_EQ(hex(r[j]), hex(e[j])) << j;
        }
        // 1 / 2 = (m + 1) / 2, with the bit shifted out returned.
        U64 h = small(1), expect = m;
        EXPECT_EQ(GOST_34_10_2012_div2_mod_MP_512_bit(&h, &m), 0);
        GOST_34_10_2012_add_512_bit(&expect, &expect, one_512_bit_ptr);
        GOST_34_10_2012_shr_512_bit(&expect);
        EXPECT_EQ(hex(h), hex(expect));
    }
    // The carry of a + m enters bit 511 (a 513-bit halving): (2p - 2) / 2.
    Curve A = curve(1);
    U64 r = A.p, expect = A.p;
    r.b[0] -= 2, expect.b[0] -= 1;
    GOST_34_10_2012_div2_mod_MP_512_bit(&r, &A.p);
    EXPECT_EQ(hex(r), hex(expect));
}
