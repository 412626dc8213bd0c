// 256- and 512-bit arithmetic, one typed suite: result codes, carries,
// aliasing, the single conditional subtraction, and modular results against
// python3 integers (tests/vectors/ec2001/arith.txt, ec2012/arith.txt).
#include "ec2001/ec_sizes.h"

namespace {

using namespace ecs;

template <class S>
class Arith : public ::testing::Test {};
TYPED_TEST_SUITE(Arith, Sizes);

TYPED_TEST(Arith, AddSubCarryBorrowAndAliasing) {
    EC_SIZE;
    const unsigned top = 8 * sizeof(V) - 1;
    V r, one = small<V>(1), zero{};
    struct Case { V a, b, sum, diff; int carry, borrow; };
    const Case cases[] = {
        {ones<V>(), one, zero, ones<V>(0xFE), 1, 0},
        {zero, one, one, ones<V>(), 0, 1},
        {one, one, small<V>(2), zero, 0, 0},
        // A carry that ripples through every limb.
        {ones<V>(0xFF, 0x7F), one, pow2<V>(top), ones<V>(0xFE, 0x7F), 0, 0},
    };
    for (auto c : cases) {
        EXPECT_EQ(S::add(&r, &c.a, &c.b), c.carry);
        EXPECT_EQ(r, c.sum);
        EXPECT_EQ(S::sub(&r, &c.a, &c.b), c.borrow);
        EXPECT_EQ(r, c.diff);
    }
    auto recs = ops<S>("addsub");
    EXPECT_EQ(recs.size(), S::kAddSub);
    for (auto& rec : recs) {
        V a = le<V>(rec["a"]), b = le<V>(rec["b"]), x = a, y = b;
        EXPECT_EQ(S::add(&r, &a, &b), std::stoi(rec["carry"]));
        EXPECT_EQ(hex(r), rec["sum"]);
        EXPECT_EQ(S::sub(&r, &a, &b), std::stoi(rec["borrow"]));
        EXPECT_EQ(hex(r), rec["diff"]);
        S::add(&x, &x, &b);  // in place, both positions
        EXPECT_EQ(hex(x), rec["sum"]);
        S::sub(&y, &a, &y);
        EXPECT_EQ(hex(y), rec["diff"]);
    }
}

// {value, shift left?, bit out, result}: bits cross every 64-bit word
// boundary, and a zero enters at the top.
TYPED_TEST(Arith, Shifts) {
    EC_SIZE;
    const unsigned top = 8 * sizeof(V) - 1;
    struct Case { V v; bool left; int out; V r; };
    std::vector<Case> cases = {{pow2<V>(top), true, 1, V{}}, {small<V>(1), false, 1, V{}},
                               {ones<V>(), false, 1, ones<V>(0xFF, 0x7F)},
                               {ones<V>(0xFF, 0x7F), true, 0, ones<V>(0xFE)}};
    for (unsigned bit = 63; bit < top; bit += 64)
        for (unsigned b : {bit, bit + 1})
            cases.insert(cases.end(), {{pow2<V>(b), true, 0, pow2<V>(b + 1)}, {pow2<V>(b + 1), false, 0, pow2<V>(b)}});
    for (auto c : cases) {
        EXPECT_EQ(c.left ? S::shl(&c.v) : S::shr(&c.v), c.out);
        EXPECT_EQ(c.v, c.r);
    }
}

// Three-way comparison against b, the zero test and the one test of a.
TYPED_TEST(Arith, ComparisonCodes) {
    EC_SIZE;
    const unsigned top = 8 * sizeof(V) - 1;
    V low192 = pow2<V>(192);
    low192.b[0] = 1;
    struct Case { V a, b; int cmp, zero, one; };
    const Case cases[] = {
        {V{}, V{}, 1, 1, 0},
        {V{}, small<V>(1), 0, 1, 0},
        {small<V>(1), small<V>(2), 0, 2, 1},
        {small<V>(1), pow2<V>(top), 0, 2, 1},
        {small<V>(6), small<V>(5), 2, 2, 2},
        {pow2<V>(top), small<V>(1), 2, 2, 2},
        {pow2<V>(top), ones<V>(), 0, 2, 2},          // top word decides
        {pow2<V>(64), small<V>(~0ull), 2, 2, 2},     // word 1 beats word 0
        {low192, ones<V>(), 0, 2, 2},                // 1 + 2^192
        {small<V>(3), small<V>(3), 1, 2, 2},
        {ones<V>(), ones<V>(), 1, 2, 2},
    };
    for (auto c : cases) {
        SCOPED_TRACE(hex(c.a));
        EXPECT_EQ(S::cmp(&c.a, &c.b), c.cmp);
        EXPECT_EQ(S::cmp(&c.a, &c.a), 1);
        EXPECT_EQ(S::cmp0(&c.a), c.zero);
        EXPECT_EQ(S::cmp1(&c.a), c.one);
    }
}

TYPED_TEST(Arith, ConstantsSetAndMisalignedOperands) {
    EC_SIZE;
    EXPECT_EQ(*S::zero(), V{});
    EXPECT_EQ(*S::one(), small<V>(1));
    V r;
    S::set(&r, S::one());
    EXPECT_EQ(r, small<V>(1));
    unsigned char raw[2 * sizeof(V) + 3];
    for (unsigned i = 0; i < sizeof raw; ++i) raw[i] = static_cast<unsigned char>(i);
    V *odd1 = reinterpret_cast<V*>(raw + 1), *odd2 = reinterpret_cast<V*>(raw + sizeof(V) + 2);
    V a = *odd1, b = *odd2, expect;
    S::add(&expect, &a, &b);
    S::add(odd1, odd1, odd2);
    EXPECT_EQ(*odd1, expect);
}

// Modular results on hand-picked operands: one subtraction or addition of p
// only, so out-of-range operands stay unreduced.
TYPED_TEST(Arith, ModularEdgeCases) {
    EC_SIZE;
    enum Op { Mod, Add, Sub, Mul, Div, Inv };
    V pA = S::curve(1).p, pB = S::curve(2).p, one = small<V>(1), three = small<V>(3);
    V pA1 = pA, pB3 = pB, invB3 = three;
    pA1.b[0] -= 1, pB3.b[0] += 3;  // neither low byte wraps
    S::divm(&invB3, nullptr, &pB);
    struct Case { Op op; V a, b, p, r; const char* what; };
    const Case cases[] = {
        {Mod, small<V>(4), {}, small<V>(5), small<V>(4), "below p"},
        {Mod, small<V>(5), {}, small<V>(5), small<V>(0), "equal to p"},
        {Mod, small<V>(11), {}, small<V>(5), small<V>(6), "one subtraction only"},
        {Add, pA1, one, pA, {}, "p - 1 + 1"},
        {Add, small<V>(22), {}, small<V>(7), small<V>(15), "22 + 0: one subtraction"},
        {Sub, {}, one, pA, pA1, "0 - 1"},
        {Sub, small<V>(3), small<V>(22), small<V>(7), ones<V>(0xF4), "borrow adds p once, carry dropped"},
        {Sub, small<V>(22), one, small<V>(7), small<V>(21), "no borrow, no reduction"},
        {Mul, small<V>(22), one, small<V>(7), small<V>(15), "r = 0 + A mod p, one subtraction"},
        {Mul, one, small<V>(22), small<V>(7), small<V>(1), "a large multiplier only shifts"},
        {Mul, small<V>(123), {}, pA, {}, "times zero"},
        {Div, {}, small<V>(5), pB, {}, "division by zero gives 0"},
        {Inv, {}, {}, pB, {}, "1 / 0 gives 0"},
        {Div, three, one, pB, invB3, "numerator 1 = null numerator"},
        {Div, one, small<V>(77), pB, small<V>(77), "77 / 1"},
        {Inv, pB3, {}, pB, invB3, "x >= p coprime to p still inverts"},
        {Inv, three, {}, small<V>(9), small<V>(4), "not coprime: Euclid ends on u = 0, returns x2"},
    };
    for (auto c : cases) {
        V r = c.a;
        switch (c.op) {
            case Mod: S::modp(&r, &c.p); break;
            case Add: S::addm(&r, &c.a, &c.b, &c.p); break;
            case Sub: S::subm(&r, &c.a, &c.b, &c.p); break;
            case Mul: S::mulm(&r, &c.a, &c.b, &c.p); break;
            case Div: S::divm(&r, &c.b, &c.p); break;
            case Inv: S::divm(&r, nullptr, &c.p); break;
        }
        EXPECT_EQ(r, c.r) << c.what;
    }
    V x = three, r;  // the inverse times its input is 1
    S::mulm(&r, &invB3, &x, &pB);
    EXPECT_EQ(r, one);
    S::mulm(&x, &x, &x, &pA);  // both operands aliased with r
    EXPECT_EQ(x, small<V>(9));
}

// a + b, a - b, a * b, 1 / a and b / a modulo every p and q of the curves,
// against python3; also with the result over either operand. The first
// record of each modulus adds m - 1 and m - 2: past 2^256 (2^512) for
// CryptoPro-A's (paramSetA's) p, still one subtraction.
TYPED_TEST(Arith, ModularAgainstPython) {
    EC_SIZE;
    auto recs = ops<S>("mod");
    EXPECT_EQ(recs.size(), S::kMod);
    for (auto& rec : recs) {
        V m = le<V>(rec["m"]), a = le<V>(rec["a"]), b = le<V>(rec["b"]), r;
        S::addm(&r, &a, &b, &m);
        EXPECT_EQ(hex(r), rec["add"]);
        S::subm(&r, &a, &b, &m);
        EXPECT_EQ(hex(r), rec["sub"]);
        S::mulm(&r, &a, &b, &m);
        EXPECT_EQ(hex(r), rec["mul"]);
        r = a;
        S::divm(&r, nullptr, &m);
        EXPECT_EQ(hex(r), rec["inv"]);
        r = a;
        S::divm(&r, &b, &m);
        EXPECT_EQ(hex(r), rec["div"]);
        V x = a, y = b, z = a, w = b;
        S::mulm(&x, &x, &b, &m);
        S::mulm(&y, &a, &y, &m);
        S::subm(&z, &z, &b, &m);
        S::addm(&w, &a, &w, &m);
        EXPECT_EQ(hex(x) + hex(y) + hex(z) + hex(w), rec["mul"] + rec["mul"] + rec["sub"] + rec["add"]);
    }
}

}  // namespace
