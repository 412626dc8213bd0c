// The 512-bit MP family against python3 integers (tests/vectors/ec2012/arith.txt)
// and the edge cases of its definitions; the generic arithmetic of both sizes
// is tests/ec2001/arith_test.cpp.
#include "ec2012_util.h"

using namespace ec2012;

static const U64 kOnes = le(std::string(128, 'f'));

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
