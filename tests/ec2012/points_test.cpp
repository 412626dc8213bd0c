// 512-bit points: affine multiples and sums against python3 integers, the
// infinity rules, the paramSetA-only affine variant, and the Jacobian family
// against its defined step sequences (tests/vectors/ec2012/arith.txt).
#include "ec2012_util.h"

using namespace ec2012;

namespace {

std::vector<kt::Record> ops(const std::string& op) {
    std::vector<kt::Record> out;
    for (auto& r : kt::load_records("ec2012/arith.txt"))
        if (r["op"] == op) out.push_back(r);
    return out;
}

}  // namespace

TEST(Points512, MultiplesOfTheBasePoints) {
    auto recs = ops("point");
    ASSERT_EQ(recs.size(), 24u);
    for (auto& r : recs) {
        Curve c = curve(std::stoi(r["set"]));
        U64 k = le(r["k"]), x, y;
        GOST_34_10_2012_mul_k_EP_test(&k, &c.x, &c.y, &x, &y, &c.a, &c.p);
        EXPECT_EQ(hex(x), r["x"]) << "set " << r["set"] << " k " << r["k"];
        EXPECT_EQ(hex(y), r["y"]);
        if (r["k"] != hex(small(3))) continue;
        // A null Qy stores x only; a null Qx y only.
        U64 x2{}, y2{};
        GOST_34_10_2012_mul_k_EP_test(&k, &c.x, &c.y, &x2, nullptr, &c.a, &c.p);
        EXPECT_EQ(hex(x2), r["x"]);
        GOST_34_10_2012_mul_k_EP_test(&k, &c.x, &c.y, nullptr, &y2, &c.a, &c.p);
        EXPECT_EQ(hex(y2), r["y"]);
    }
}

TEST(Points512, SumsAndInfinity) {
    for (auto& r : ops("sum")) {
        Curve c = curve(std::stoi(r["set"]));
        U64 x1 = le(r["x1"]), y1 = le(r["y1"]), x2 = le(r["x2"]), y2 = le(r["y2"]);
        GOST_34_10_2012_add_EP_test(&x1, &x2, &y1, &y2, &c.a, &c.p);
        EXPECT_EQ(hex(x1), r["x"]);
        EXPECT_EQ(hex(y1), r["y"]);
    }
    for (int set : {0, 1, 2}) {
        Curve c = curve(set);
        U64 zero{}, k0{};
        // P + (-P) = (0, 0).
        U64 x = c.x, y = c.y, ny;
        GOST_34_10_2012_sub_mod_p_512_bit(&ny, &zero, &c.y, &c.p);
        GOST_34_10_2012_add_EP_test(&x, &c.x, &y, &ny, &c.a, &c.p);
        EXPECT_EQ(hex(x), hex(zero));
        EXPECT_EQ(hex(y), hex(zero));
        // infinity + P = P; P + infinity = P.
        GOST_34_10_2012_add_EP_test(&x, &c.x, &y, &c.y, &c.a, &c.p);
        EXPECT_EQ(hex(x), hex(c.x));
        EXPECT_EQ(hex(y), hex(c.y));
        GOST_34_10_2012_add_EP_test(&x, &zero, &y, &zero, &c.a, &c.p);
        EXPECT_EQ(hex(x), hex(c.x));
        // P + P doubles.
        U64 dx = c.x, dy = c.y;
        GOST_34_10_2012_mul_2_EP_test(&dx, &dy, &c.a, &c.p);
        GOST_34_10_2012_add_EP_test(&x, &c.x, &y, &c.y, &c.a, &c.p);
        EXPECT_EQ(hex(x), hex(dx));
        EXPECT_EQ(hex(y), hex(dy));
        // Doubling infinity leaves it.
        U64 ix{}, iy{};
        GOST_34_10_2012_mul_2_EP_test(&ix, &iy, &c.a, &c.p);
        EXPECT_EQ(hex(ix), hex(zero));
        // k = 0 and k = q give infinity; k = 1 gives P.
        U64 qx, qy;
        GOST_34_10_2012_mul_k_EP_test(&k0, &c.x, &c.y, &qx, &qy, &c.a, &c.p);
        EXPECT_EQ(hex(qx) + hex(qy), hex(zero) + hex(zero));
        GOST_34_10_2012_mul_k_EP_test(&c.q, &c.x, &c.y, &qx, &qy, &c.a, &c.p);
        EXPECT_EQ(hex(qx) + hex(qy), hex(zero) + hex(zero)) << "set " << set;
        U64 one = small(1);
        GOST_34_10_2012_mul_k_EP_test(&one, &c.x, &c.y, &qx, &qy, &c.a, &c.p);
        EXPECT_EQ(hex(qx) + hex(qy), hex(c.x) + hex(c.y));
    }
}

TEST(Points512, ParamSetAVariantAgreesOnParamSetA) {
    Curve A = curve(1);
    U64 x = A.x, y = A.y, tx = A.x, ty = A.y;
    for (int i = 0; i < 6; ++i) {
        GOST_34_10_2012_mul_2_EP(&x, &y, &A.a, &A.p);
        GOST_34_10_2012_mul_2_EP_test(&tx, &ty, &A.a, &A.p);
        EXPECT_EQ(hex(x), hex(tx));
        EXPECT_EQ(hex(y), hex(ty));
        GOST_34_10_2012_add_EP(&x, &A.x, &y, &A.y, &A.a, &A.p);
        GOST_34_10_2012_add_EP_test(&tx, &A.x, &ty, &A.y, &A.a, &A.p);
        EXPECT_EQ(hex(x), hex(tx));
        EXPECT_EQ(hex(y), hex(ty));
    }
}

TEST(Points512, UnsuffixedVariantOnOtherModuliKeepsPlainLowHalves) {
    // paramSetB and the example curve: p does not end in 0xC7, so x^2,
    // lambda^2 and lambda (x - x3) are the low halves of the plain products
    // and the rest of the steps run on them unreduced (python3 model of the
    // exact sequence; off the curve, as expected).
    auto dbl = ops("udbl"), sum = ops("uadd");
    ASSERT_EQ(dbl.size(), 6u);
    ASSERT_EQ(sum.size(), 6u);
    for (auto& r : dbl) {
        Curve c = curve(std::stoi(r["set"]));
        U64 x = le(r["x"]), y = le(r["y"]), tx = x, ty = y;
        GOST_34_10_2012_mul_2_EP(&x, &y, &c.a, &c.p);
        EXPECT_EQ(hex(x), r["x2"]) << "set " << r["set"];
        EXPECT_EQ(hex(y), r["y2"]);
        GOST_34_10_2012_mul_2_EP_test(&tx, &ty, &c.a, &c.p);
        EXPECT_NE(hex(x) + hex(y), hex(tx) + hex(ty));
    }
    for (auto& r : sum) {
        Curve c = curve(std::stoi(r["set"]));
        U64 x1 = le(r["x1"]), y1 = le(r["y1"]), x2 = le(r["x2"]), y2 = le(r["y2"]);
        GOST_34_10_2012_add_EP(&x1, &x2, &y1, &y2, &c.a, &c.p);
        EXPECT_EQ(hex(x1), r["x"]) << "set " << r["set"];
        EXPECT_EQ(hex(y1), r["y"]);
    }
}

TEST(Jacobian512, DoublingFollowsItsSequence) {
    auto recs = ops("jdbl");
    ASSERT_EQ(recs.size(), 8u);
    for (auto& r : recs) {
        Curve c = curve(std::stoi(r["set"]));
        U64 X = le(r["X"]), Y = le(r["Y"]), Z = le(r["Z"]);
        GOST_34_10_2012_mul_J_2_EP(&X, &Y, &Z, &c.p);
        EXPECT_EQ(hex(X), r["X2"]);
        EXPECT_EQ(hex(Y), r["Y2"]);  // with 16 Y^4 subtracted, as defined
        EXPECT_EQ(hex(Z), r["Z2"]);
    }
    // Infinity (1, 1, 0) is left unchanged.
    Curve A = curve(1);
    U64 X = small(1), Y = small(1), Z{};
    GOST_34_10_2012_mul_J_2_EP(&X, &Y, &Z, &A.p);
    EXPECT_EQ(hex(X) + hex(Y) + hex(Z), hex(small(1)) + hex(small(1)) + hex(U64{}));
}

TEST(Jacobian512, DoublingIsNotTheTextbookDouble) {
    // From (Gx, Gy, 1): X3/Z3^2 is the true 2G.x (X3 and Z3 are textbook),
    // but Y3/Z3^3 is not 2G.y, because 16 Y^4 is subtracted instead of 8 Y^4.
    for (int set : {1, 2}) {
        Curve c = curve(set);
        U64 X = c.x, Y = c.y, Z = small(1);
        GOST_34_10_2012_mul_J_2_EP(&X, &Y, &Z, &c.p);
        U64 dx = c.x, dy = c.y;
        GOST_34_10_2012_mul_2_EP_test(&dx, &dy, &c.a, &c.p);
        U64 z2, z3, ax, ay;
        GOST_34_10_2012_mul_mod_p_512_bit(&z2, &Z, &Z, &c.p);
        GOST_34_10_2012_mul_mod_p_512_bit(&z3, &z2, &Z, &c.p);
        ax = z2;
        GOST_34_10_2012_div_mod_p_512_bit(&ax, &X, &c.p);
        ay = z3;
        GOST_34_10_2012_div_mod_p_512_bit(&ay, &Y, &c.p);
        EXPECT_EQ(hex(ax), hex(dx));
        EXPECT_NE(hex(ay), hex(dy));
    }
}

TEST(Jacobian512, MixedAdditionFollowsItsSequence) {
    auto recs = ops("jadd");
    ASSERT_EQ(recs.size(), 8u);
    for (auto& r : recs) {
        Curve c = curve(std::stoi(r["set"]));
        U64 X = le(r["X"]), Y = le(r["Y"]), Z = le(r["Z"]), x2 = le(r["x2"]), y2 = le(r["y2"]);
        GOST_34_10_2012_add_J_EP(&X, &x2, &Y, &y2, &Z, &c.p);
        EXPECT_EQ(hex(X), r["X3"]);
        EXPECT_EQ(hex(Y), r["Y3"]);
        EXPECT_EQ(hex(Z), r["Z3"]);
    }
    Curve A = curve(1);
    // infinity + P = (Px, Py, 1).
    U64 X = small(1), Y = small(1), Z{};
    GOST_34_10_2012_add_J_EP(&X, &A.x, &Y, &A.y, &Z, &A.p);
    EXPECT_EQ(hex(X) + hex(Y) + hex(Z), hex(A.x) + hex(A.y) + hex(small(1)));
    // P + P doubles (H = 0, R = 0).
    GOST_34_10_2012_add_J_EP(&X, &A.x, &Y, &A.y, &Z, &A.p);
    U64 DX = A.x, DY = A.y, DZ = small(1);
    GOST_34_10_2012_mul_J_2_EP(&DX, &DY, &DZ, &A.p);
    EXPECT_EQ(hex(X) + hex(Y) + hex(Z), hex(DX) + hex(DY) + hex(DZ));
    // P + (-P) = (1, 1, 0).
    U64 ny, zero{};
    GOST_34_10_2012_sub_mod_p_512_bit(&ny, &zero, &A.y, &A.p);
    X = A.x, Y = A.y, Z = small(1);
    GOST_34_10_2012_add_J_EP(&X, &A.x, &Y, &ny, &Z, &A.p);
    EXPECT_EQ(hex(X) + hex(Y) + hex(Z), hex(small(1)) + hex(small(1)) + hex(zero));
}

TEST(Jacobian512, ScalarMultiplicationAndItsConversionRule) {
    auto recs = ops("jmul");
    ASSERT_EQ(recs.size(), 12u);
    for (auto& r : recs) {
        Curve c = curve(std::stoi(r["set"]));
        U64 k = le(r["k"]), x, y, y_only;
        GOST_34_10_2012_mul_J_k_EP(&k, &c.x, &c.y, &x, &y, &c.p);
        EXPECT_EQ(hex(x), r["x"]);
        EXPECT_EQ(hex(y), r["y"]);
        // Without Qx the divisor of Y is Px * Z instead of Z^3.
        GOST_34_10_2012_mul_J_k_EP(&k, &c.x, &c.y, nullptr, &y_only, &c.p);
        EXPECT_EQ(hex(y_only), r["y_only"]);
    }
    // k = 1: the x-coordinate is that of P (the doubling of infinity and one
    // addition give (Px, Py, 1)), and so is y.
    Curve A = curve(1);
    U64 one = small(1), x, y;
    GOST_34_10_2012_mul_J_k_EP(&one, &A.x, &A.y, &x, &y, &A.p);
    EXPECT_EQ(hex(x) + hex(y), hex(A.x) + hex(A.y));
    // k = 0 leaves (1, 1, 0): both divisors are 0, and dividing by zero gives 0.
    U64 zero{}, y_only;
    GOST_34_10_2012_mul_J_k_EP(&zero, &A.x, &A.y, &x, &y, &A.p);
    EXPECT_EQ(hex(x) + hex(y), hex(zero) + hex(zero));
    GOST_34_10_2012_mul_J_k_EP(&zero, &A.x, &A.y, nullptr, &y_only, &A.p);
    EXPECT_EQ(hex(y_only), hex(zero));
}
