// Affine points of both sizes, one typed suite: the infinity rules, scalar
// multiples and sums against python3; and the three 256-bit table builders.
#include <vector>

#include "ec2001/ec_sizes.h"

namespace {

using namespace ecs;

template <class V>
struct Pt {
    V x, y;
    bool operator==(const Pt& o) const { return x == o.x && y == o.y; }
};

template <class S, class V = typename S::V>
Pt<V> mul(V k, Pt<V> P, Curve<V> c) {
    Pt<V> r;
    S::mulk(&k, &P.x, &P.y, &r.x, &r.y, &c.a, &c.p);
    return r;
}

template <class S, class V = typename S::V>
Pt<V> add(Pt<V> P, Pt<V> Q, Curve<V> c) {
    S::padd(&P.x, &Q.x, &P.y, &Q.y, &c.a, &c.p);
    return P;
}

template <class S>
class Points : public ::testing::Test {};
TYPED_TEST_SUITE(Points, Sizes);

TYPED_TEST(Points, MultiplesAndSumsAgainstPython) {
    EC_SIZE;
    auto muls = ops<S>("point"), sums = ops<S>("sum");
    EXPECT_EQ(muls.size(), S::kPoint);
    EXPECT_EQ(sums.size(), S::kSum);
    for (auto& rec : muls) {
        auto c = S::curve(std::stoi(rec["set"]));
        Pt<V> r = mul<S>(le<V>(rec["k"]), {c.x, c.y}, c);
        EXPECT_EQ(hex(r.x) + hex(r.y), rec["x"] + rec["y"]) << "set " << rec["set"] << " k " << rec["k"];
    }
    for (auto& rec : sums) {
        auto c = S::curve(std::stoi(rec["set"]));
        Pt<V> r = add<S>({le<V>(rec["x1"]), le<V>(rec["y1"])}, {le<V>(rec["x2"]), le<V>(rec["y2"])}, c);
        EXPECT_EQ(hex(r.x) + hex(r.y), rec["x"] + rec["y"]);
    }
}

// On the base point of every curve: 2001 set 3's has x = 0 and must not be
// taken for infinity, as first or as second operand. A null output
// coordinate is not stored.
TYPED_TEST(Points, InfinityRulesAndNullOutputs) {
    EC_SIZE;
    for (int set : S::sets) {
        SCOPED_TRACE(set);
        auto c = S::curve(set);
        Pt<V> P{c.x, c.y}, inf{}, negP = P, dbl = P;
        V zero{};
        S::subm(&negP.y, &zero, &P.y, &c.p);
        S::dbl(&dbl.x, &dbl.y, &c.a, &c.p);
        EXPECT_EQ(add<S>(P, negP, c), inf);
        EXPECT_EQ(add<S>(inf, P, c), P);
        EXPECT_EQ(add<S>(P, inf, c), P);
        EXPECT_EQ(add<S>(P, P, c), dbl);
        Pt<V> r = P;
        S::padd(&r.x, &r.x, &r.y, &r.y, &c.a, &c.p);  // the same buffers twice
        EXPECT_EQ(r, dbl);
        r = inf;
        S::dbl(&r.x, &r.y, &c.a, &c.p);
        EXPECT_EQ(r, inf);
        EXPECT_EQ(mul<S>(V{}, P, c), inf);
        EXPECT_EQ(mul<S>(c.q, P, c), inf);
        EXPECT_EQ(mul<S>(small<V>(1), P, c), P);

        V k = small<V>(7), x, y, keep = small<V>(0xAB);
        Pt<V> full = mul<S>(k, P, c);
        y = keep;
        S::mulk(&k, &c.x, &c.y, &x, nullptr, &c.a, &c.p);
        EXPECT_EQ(x, full.x);
        x = keep;
        S::mulk(&k, &c.x, &c.y, nullptr, &y, &c.a, &c.p);
        EXPECT_EQ(y, full.y);
        EXPECT_EQ(x, keep);
    }
}

// Points off the base point's group: y = 0 doubles through a division by zero
// (lambda = 0, so 2(x, 0) = (-2x, 0)); with equal x the sum is infinity only
// when y1 = -y2 (two order-two points cancel), and any other y1 doubles
// (x1, y1), whatever y2 holds.
TYPED_TEST(Points, OrderTwoAndEqualXCases) {
    EC_SIZE;
    auto c = S::curve(1);
    V minus10 = c.p;
    minus10.b[0] -= 10;  // no low byte of a p is below 10
    Pt<V> r{small<V>(5), {}};
    S::dbl(&r.x, &r.y, &c.a, &c.p);
    EXPECT_EQ(r, (Pt<V>{minus10, {}}));
    EXPECT_EQ(add<S>({small<V>(5), {}}, {small<V>(5), {}}, c), Pt<V>{});
    Pt<V> d{small<V>(5), small<V>(1234)};
    S::dbl(&d.x, &d.y, &c.a, &c.p);
    EXPECT_EQ(add<S>({small<V>(5), small<V>(1234)}, {small<V>(5), small<V>(99)}, c), d);
}

using T = type_uN<32>;
using Table = std::vector<unsigned char>;

Pt<T> entry(const Table& t, unsigned i) {
    return {le<T>(kt::to_hex(&t[64 * i], 32)), le<T>(kt::to_hex(&t[64 * i + 32], 32))};
}

// Entry i of each builder is k(i)·P of the chosen set.
TEST(Tables256, EntriesAreTheirMultiples) {
    struct Case { void (*build)(unsigned char*, unsigned char); int set; std::vector<unsigned> idx; T (*k)(unsigned); };
    auto two_i = [](unsigned i) { return pow2<T>(i); };
    // Comb: the scalar whose 32-bit limb j is 1 for each set bit j of the index.
    auto comb = [](unsigned b) { T k{}; for (unsigned j = 0; j < 8; ++j) k.b[4 * j] = b >> j & 1; return k; };
    auto odd = [](unsigned i) { return small<T>(2 * i + 1); };
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
        auto cv = Ec256::curve(c.set);
        for (unsigned i : c.idx) EXPECT_EQ(entry(t, i), mul<Ec256>(c.k(i), {cv.x, cv.y}, cv)) << c.set << " " << i;
    }
    Table t(16384);
    GOST_34_10_2001_2P_table(t.data(), 1);
    EXPECT_EQ(std::memcmp(t.data(), p_table, 16384), 0);
}

}  // namespace
