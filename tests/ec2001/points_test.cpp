// Affine points on the four GOST R 34.10-2001 curves: the infinity rules,
// scalar multiples against python3, and the three table builders.
#include <gtest/gtest.h>

#include <vector>

#include "ec2001/ec_test_util.h"

using ect::small;
using ect::u256;
using T = type_uN<32>;

namespace {

struct Pt {
    T x, y;
};

Pt mul(const T& k, const Pt& P, const ect::Curve& c) {
    T kk = k, px = P.x, py = P.y, a = c.a, p = c.p;
    Pt r;
    GOST_34_10_2001_mul_k_EP(&kk, &px, &py, &r.x, &r.y, &a, &p);
    return r;
}

Pt base(const ect::Curve& c) { return {c.x, c.y}; }

bool same(const Pt& a, const Pt& b) { return a.x == b.x && a.y == b.y; }

Pt neg(const Pt& P, ect::Curve c) {
    Pt r = P;
    T zero{};
    GOST_34_10_2001_sub_mod_p_256_bit(&r.y, &zero, &r.y, &c.p);
    return r;
}

TEST(Points256, MultiplesAgainstPython) {
    int n = 0;
    for (auto& rec : kt::load_records("ec2001/arith.txt")) {
        if (rec["op"] != "point") continue;
        ect::Curve c = ect::curve(std::stoi(rec["set"]));
        Pt r = mul(u256(rec["k"]), base(c), c);
        EXPECT_EQ(ect::hex(r.x), rec["x"]) << "set " << rec["set"] << " k " << rec["k"];
        EXPECT_EQ(ect::hex(r.y), rec["y"]) << "set " << rec["set"] << " k " << rec["k"];
        ++n;
    }
    EXPECT_EQ(n, 32);
}

TEST(Points256, SumAgainstPython) {
    int n = 0;
    for (auto& rec : kt::load_records("ec2001/arith.txt")) {
        if (rec["op"] != "sum") continue;
        ect::Curve c = ect::curve(std::stoi(rec["set"]));
        T x1 = u256(rec["x1"]), y1 = u256(rec["y1"]), x2 = u256(rec["x2"]), y2 = u256(rec["y2"]);
        GOST_34_10_2001_add_EP(&x1, &x2, &y1, &y2, &c.a, &c.p);
        EXPECT_EQ(ect::hex(x1), rec["x"]);
        EXPECT_EQ(ect::hex(y1), rec["y"]);
        ++n;
    }
    EXPECT_EQ(n, 4);
}

class PerCurve : public ::testing::TestWithParam<int> {};

TEST_P(PerCurve, InfinityRules) {
    ect::Curve c = ect::curve(GetParam());
    Pt P = base(c), Q = mul(small(5), P, c), inf{};
    // P + (-P) = infinity.
    Pt r = Q, m = neg(Q, c);
    GOST_34_10_2001_add_EP(&r.x, &m.x, &r.y, &m.y, &c.a, &c.p);
    EXPECT_TRUE(same(r, inf));
    // infinity + P = P; P + infinity = P.
    r = inf;
    GOST_34_10_2001_add_EP(&r.x, &Q.x, &r.y, &Q.y, &c.a, &c.p);
    EXPECT_TRUE(same(r, Q));
    r = Q;
    GOST_34_10_2001_add_EP(&r.x, &inf.x, &r.y, &inf.y, &c.a, &c.p);
    EXPECT_TRUE(same(r, Q));
    // Equal points double; doubling infinity leaves it.
    r = Q;
    Pt s = Q;
    GOST_34_10_2001_add_EP(&r.x, &s.x, &r.y, &s.y, &c.a, &c.p);
    GOST_34_10_2001_mul_2_EP(&s.x, &s.y, &c.a, &c.p);
    EXPECT_TRUE(same(r, s));
    EXPECT_TRUE(same(r, mul(small(10), P, c)));
    r = Q;
    GOST_34_10_2001_add_EP(&r.x, &r.x, &r.y, &r.y, &c.a, &c.p);  // the same buffers twice
    EXPECT_TRUE(same(r, s));
    r = inf;
    GOST_34_10_2001_mul_2_EP(&r.x, &r.y, &c.a, &c.p);
    EXPECT_TRUE(same(r, inf));
    // k = 0 and k = q give infinity, k = 1 gives P.
    EXPECT_TRUE(same(mul(T{}, P, c), inf));
    EXPECT_TRUE(same(mul(c.q, P, c), inf));
    EXPECT_TRUE(same(mul(small(1), P, c), P));
}

TEST_P(PerCurve, NullOutputCoordinate) {
    ect::Curve c = ect::curve(GetParam());
    T k = small(7), x, y, keep = small(0xAB);
    Pt full = mul(k, base(c), c);
    y = keep;
    GOST_34_10_2001_mul_k_EP(&k, &c.x, &c.y, &x, nullptr, &c.a, &c.p);
    EXPECT_EQ(x, full.x);
    x = keep;
    GOST_34_10_2001_mul_k_EP(&k, &c.x, &c.y, nullptr, &y, &c.a, &c.p);
    EXPECT_EQ(y, full.y);
    EXPECT_EQ(x, keep);
}

INSTANTIATE_TEST_SUITE_P(Sets, PerCurve, ::testing::Values(0, 1, 2, 3));

// A point with y = 0 is doubled through a division by zero: lambda = 0, so
// x3 = -2x and y3 = 0.
TEST(Points256, DoublingOrderTwoPoint) {
    ect::Curve c = ect::curve(1);
    T x = small(5), y{}, expect = c.p, ten = small(10);
    GOST_34_10_2001_mul_2_EP(&x, &y, &c.a, &c.p);
    GOST_34_10_2001_sub_256_bit(&expect, &expect, &ten);
    EXPECT_EQ(x, expect);
    EXPECT_EQ(y, T{});
}

// Equal x: infinity only when y1 = 0 - y2 mod p (so two order-two points
// (x, 0) cancel); any other y1 is taken as the same point and (x1, y1) is
// doubled, whatever y2 holds.
TEST(Points256, AdditionWithEqualX) {
    ect::Curve c = ect::curve(1);
    T x = small(5), y0{};
    T x1 = x, y1 = y0;
    GOST_34_10_2001_add_EP(&x1, &x, &y1, &y0, &c.a, &c.p);
    EXPECT_EQ(x1, T{});
    EXPECT_EQ(y1, T{});

    T y_first = small(1234), y_second = small(99);
    T dx = x, dy = y_first;
    GOST_34_10_2001_mul_2_EP(&dx, &dy, &c.a, &c.p);
    x1 = x;
    y1 = y_first;
    GOST_34_10_2001_add_EP(&x1, &x, &y1, &y_second, &c.a, &c.p);
    EXPECT_EQ(x1, dx);
    EXPECT_EQ(y1, dy);
}

// Set 3 has a base point with x = 0: it must not be taken for infinity.
TEST(Points256, BasePointWithZeroX) {
    ect::Curve c = ect::curve(3);
    Pt P = base(c), inf{};
    Pt r = inf;
    GOST_34_10_2001_add_EP(&r.x, &P.x, &r.y, &P.y, &c.a, &c.p);
    EXPECT_TRUE(same(r, P));
    r = P;
    GOST_34_10_2001_add_EP(&r.x, &inf.x, &r.y, &inf.y, &c.a, &c.p);
    EXPECT_TRUE(same(r, P));
}

using Table = std::vector<unsigned char>;

Pt entry(const Table& t, unsigned i) {
    Pt r;
    std::memcpy(r.x.b, &t[64 * i], 32);
    std::memcpy(r.y.b, &t[64 * i + 32], 32);
    return r;
}

TEST(Tables256, DoublingTableIsPTable) {
    Table t(16384);
    GOST_34_10_2001_2P_table(t.data(), 1);
    EXPECT_EQ(std::memcmp(t.data(), p_table, 16384), 0);
    ect::Curve c = ect::curve(1);
    EXPECT_TRUE(same(entry(t, 0), base(c)));
    for (unsigned i : {1u, 2u, 100u, 255u}) {
        T ki{};
        ki.b[i / 8] = static_cast<unsigned char>(1u << (i % 8));
        EXPECT_TRUE(same(entry(t, i), mul(ki, base(c), c))) << i;
    }
}

TEST(Tables256, DoublingTableOtherSets) {
    for (int set : {0, 3, 200}) {
        Table t(16384);
        GOST_34_10_2001_2P_table(t.data(), static_cast<unsigned char>(set));
        ect::Curve c = ect::curve(set);
        EXPECT_TRUE(same(entry(t, 0), base(c)));
        T k{};
        k.b[17] = 0x10;  // 2^140
        EXPECT_TRUE(same(entry(t, 140), mul(k, base(c), c))) << set;
    }
}

TEST(Tables256, CombTable) {
    Table t(16384, 0xEE);
    GOST_34_10_2001_xP_table(t.data(), 2);
    ect::Curve c = ect::curve(2);
    EXPECT_TRUE(same(entry(t, 0), Pt{}));
    EXPECT_TRUE(same(entry(t, 1), base(c)));
    // Entry b is sum over set bits j of b of 2^(32j) P: the scalar whose
    // 32-bit limb j is 1 for each such j.
    for (unsigned b : {2u, 5u, 128u, 255u}) {
        T k{};
        for (unsigned j = 0; j < 8; ++j)
            if (b >> j & 1) k.b[4 * j] = 1;
        EXPECT_TRUE(same(entry(t, b), mul(k, base(c), c))) << b;
    }
}

TEST(Tables256, OddMultiplesTable) {
    Table t(16384);
    GOST_34_10_2001_NAF_2kP_table(t.data(), 0);
    ect::Curve c = ect::curve(0);
    EXPECT_TRUE(same(entry(t, 0), base(c)));
    for (unsigned i : {1u, 2u, 77u, 255u})
        EXPECT_TRUE(same(entry(t, i), mul(small(2 * i + 1), base(c), c))) << i;
}

}  // namespace
