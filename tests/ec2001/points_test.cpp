// Affine points on the four GOST R 34.10-2001 curves: the infinity rules,
// scalar multiples and sums against python3, and the three table builders.
#include <gtest/gtest.h>

#include <vector>

#include "ec2001/ec_test_util.h"

using ect::small;
using ect::u256;
using T = type_uN<32>;

namespace {

struct Pt {
    T x, y;
    bool operator==(const Pt& o) const { return x == o.x && y == o.y; }
};

Pt mul(const T& k, const Pt& P, ect::Curve c) {
    T kk = k, px = P.x, py = P.y;
    Pt r;
    GOST_34_10_2001_mul_k_EP(&kk, &px, &py, &r.x, &r.y, &c.a, &c.p);
    return r;
}

Pt add(Pt P, Pt Q, ect::Curve c) {
    GOST_34_10_2001_add_EP(&P.x, &Q.x, &P.y, &Q.y, &c.a, &c.p);
    return P;
}

TEST(Points256, MultiplesAndSumsAgainstPython) {
    auto muls = ect::ops("point"), sums = ect::ops("sum");
    EXPECT_EQ(muls.size(), 32u);
    EXPECT_EQ(sums.size(), 4u);
    for (auto& rec : muls) {
        ect::Curve c = ect::curve(std::stoi(rec["set"]));
        Pt r = mul(u256(rec["k"]), {c.x, c.y}, c);
        EXPECT_EQ(ect::hex(r.x) + ect::hex(r.y), rec["x"] + rec["y"]) << "set " << rec["set"] << " k " << rec["k"];
    }
    for (auto& rec : sums) {
        ect::Curve c = ect::curve(std::stoi(rec["set"]));
        Pt r = add({u256(rec["x1"]), u256(rec["y1"])}, {u256(rec["x2"]), u256(rec["y2"])}, c);
        EXPECT_EQ(ect::hex(r.x) + ect::hex(r.y), rec["x"] + rec["y"]);
    }
}

class PerCurve : public ::testing::TestWithParam<int> {};

// On the base point itself: set 3's has x = 0 and must not be taken for
// infinity, as first or as second operand.
TEST_P(PerCurve, InfinityRulesAndNullOutputs) {
    ect::Curve c = ect::curve(GetParam());
    Pt P{c.x, c.y}, inf{}, negP = P, dbl = P;
    T zero{};
    GOST_34_10_2001_sub_mod_p_256_bit(&negP.y, &zero, &P.y, &c.p);
    GOST_34_10_2001_mul_2_EP(&dbl.x, &dbl.y, &c.a, &c.p);
    EXPECT_EQ(add(P, negP, c), inf);
    EXPECT_EQ(add(inf, P, c), P);
    EXPECT_EQ(add(P, inf, c), P);
    EXPECT_EQ(add(P, P, c), dbl);
    Pt r = P;
    GOST_34_10_2001_add_EP(&r.x, &r.x, &r.y, &r.y, &c.a, &c.p);  // the same buffers twice
    EXPECT_EQ(r, dbl);
    r = inf;
    GOST_34_10_2001_mul_2_EP(&r.x, &r.y, &c.a, &c.p);
    EXPECT_EQ(r, inf);
    EXPECT_EQ(mul(T{}, P, c), inf);
    EXPECT_EQ(mul(c.q, P, c), inf);

    // A null output coordinate is not stored.
    T k = small(7), x, y, keep = small(0xAB);
    Pt full = mul(k, P, c);
    y = keep;
    GOST_34_10_2001_mul_k_EP(&k, &c.x, &c.y, &x, nullptr, &c.a, &c.p);
    EXPECT_EQ(x, full.x);
    x = keep;
    GOST_34_10_2001_mul_k_EP(&k, &c.x, &c.y, nullptr, &y, &c.a, &c.p);
    EXPECT_EQ(y, full.y);
    EXPECT_EQ(x, keep);
}

INSTANTIATE_TEST_SUITE_P(Sets, PerCurve, ::testing::Values(0, 1, 2, 3));

// Points off the base point's group: y = 0 doubles through a division by zero
// (lambda = 0, so 2(x, 0) = (-2x, 0)); with equal x the sum is infinity only
// when y1 = -y2 (two order-two points cancel), and any other y1 doubles
// (x1, y1), whatever y2 holds.
TEST(Points256, OrderTwoAndEqualXCases) {
    ect::Curve c = ect::curve(1);
    T ten = small(10), minus10;
    GOST_34_10_2001_sub_256_bit(&minus10, &c.p, &ten);
    Pt r{small(5), {}};
    GOST_34_10_2001_mul_2_EP(&r.x, &r.y, &c.a, &c.p);
    EXPECT_EQ(r, (Pt{minus10, {}}));
    EXPECT_EQ(add({small(5), {}}, {small(5), {}}, c), Pt{});
    Pt d{small(5), small(1234)};
    GOST_34_10_2001_mul_2_EP(&d.x, &d.y, &c.a, &c.p);
    EXPECT_EQ(add({small(5), small(1234)}, {small(5), small(99)}, c), d);
}

using Table = std::vector<unsigned char>;

Pt entry(const Table& t, unsigned i) {
    return {u256(kt::to_hex(&t[64 * i], 32)), u256(kt::to_hex(&t[64 * i + 32], 32))};
}

// Entry i of each builder is k(i)·P of the chosen set.
TEST(Tables256, EntriesAreTheirMultiples) {
    struct Case { void (*build)(unsigned char*, unsigned char); int set; std::vector<unsigned> idx; T (*k)(unsigned); };
    auto two_i = [](unsigned i) { T k{}; k.b[i / 8] = static_cast<unsigned char>(1u << (i % 8)); return k; };
    // Comb: the scalar whose 32-bit limb j is 1 for each set bit j of the index.
    auto comb = [](unsigned b) { T k{}; for (unsigned j = 0; j < 8; ++j) k.b[4 * j] = b >> j & 1; return k; };
    auto odd = [](unsigned i) { return small(2 * i + 1); };
    const Case cases[] = {
        {GOST_34_10_2001_2P_table, 1, {0, 1, 2, 100, 255}, two_i},
        {GOST_34_10_2001_2P_table, 0, {0, 140}, two_i},
        {GOST_34_10_2001_2P_table, 3, {0, 140}, two_i},
        {GOST_34_10_2001_2P_table, 200, {0, 140}, two_i},
        {GOST_34_10_2001_xP_table, 2, {0, 1, 2, 5, 128, 255}, comb},
        {GOST_34_10_2001_NAF_2kP_table, 0, {0, 1, 2, 77, 255}, odd},
    };
    for (const auto& c : cases) {
        Table t(16384, 0xEE);
        c.build(t.data(), static_cast<unsigned char>(c.set));
        ect::Curve cv = ect::curve(c.set);
        for (unsigned i : c.idx) EXPECT_EQ(entry(t, i), mul(c.k(i), {cv.x, cv.y}, cv)) << c.set << " " << i;
    }
    Table t(16384);
    GOST_34_10_2001_2P_table(t.data(), 1);
    EXPECT_EQ(std::memcmp(t.data(), p_table, 16384), 0);
}

}  // namespace
