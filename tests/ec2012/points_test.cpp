// 512-bit points beyond the generic affine family (tests/ec2001/points_test.cpp):
// the paramSetA-only affine variant, and the Jacobian family against its
// defined step sequences (tests/vectors/ec2012/arith.txt).
#include "ec2012_util.h"

using namespace ec2012;

TEST(Points512, ParamSetAVariantAgreesOnParamSetA) {
    Curve A = curve(1);
    U64 x = A.x, y = A.y, tx = A.x, ty = A.y;
    for (int i = 0; i < 6; ++i) {
        GOST_34_10_2012_mul_2_EP(&x, &y, &A.a, &A.p);
        GOST_34_10_2012_mul_2_EP_test(&tx, &ty, &A.a, &A.p);
        EXPECT_EQ(pt(x, y), pt(tx, ty));
        GOST_34_10_2012_add_EP(&x, &A.x, &y, &A.y, &A.a, &A.p);
        GOST_34_10_2012_add_EP_test(&tx, &A.x, &ty, &A.y, &A.a, &A.p);
        EXPECT_EQ(pt(x, y), pt(tx, ty));
    }
}

// paramSetB and the example curve: p does not end in 0xC7, so x^2, lambda^2
// and lambda (x - x3) are the low halves of the plain products and the rest of
// the steps run on them unreduced (python3 model of the exact sequence).
TEST(Points512, UnsuffixedVariantOnOtherModuliKeepsPlainLowHalves) {
    auto dbl = ops("udbl"), sum = ops("uadd");
    ASSERT_EQ(dbl.size(), 6u);
    ASSERT_EQ(sum.size(), 6u);
    for (auto& r : dbl) {
        Curve c = curve(std::stoi(r["set"]));
        U64 x = le(r["x"]), y = le(r["y"]);
        GOST_34_10_2012_mul_2_EP(&x, &y, &c.a, &c.p);
        EXPECT_EQ(pt(x, y), r["x2"] + r["y2"]) << "set " << r["set"];
    }
    for (auto& r : sum) {
        Curve c = curve(std::stoi(r["set"]));
        U64 x1 = le(r["x1"]), y1 = le(r["y1"]), x2 = le(r["x2"]), y2 = le(r["y2"]);
        GOST_34_10_2012_add_EP(&x1, &x2, &y1, &y2, &c.a, &c.p);
        EXPECT_EQ(pt(x1, y1), r["x"] + r["y"]) << "set " << r["set"];
    }
}

// The Jacobian doubling subtracts 16 Y^4 (not the textbook 8 Y^4), as the
// python3 model does; infinity (1, 1, 0) is left unchanged.
TEST(Jacobian512, DoublingAndMixedAdditionFollowTheirSequences) {
    auto dbl = ops("jdbl"), sum = ops("jadd");
    ASSERT_EQ(dbl.size(), 8u);
    ASSERT_EQ(sum.size(), 8u);
    for (auto& r : dbl) {
        Curve c = curve(std::stoi(r["set"]));
        U64 X = le(r["X"]), Y = le(r["Y"]), Z = le(r["Z"]);
        GOST_34_10_2012_mul_J_2_EP(&X, &Y, &Z, &c.p);
        EXPECT_EQ(pt(X, Y, Z), r["X2"] + r["Y2"] + r["Z2"]);
    }
    for (auto& r : sum) {
        Curve c = curve(std::stoi(r["set"]));
        U64 X = le(r["X"]), Y = le(r["Y"]), Z = le(r["Z"]), x2 = le(r["x2"]), y2 = le(r["y2"]);
        GOST_34_10_2012_add_J_EP(&X, &x2, &Y, &y2, &Z, &c.p);
        EXPECT_EQ(pt(X, Y, Z), r["X3"] + r["Y3"] + r["Z3"]);
    }
    Curve A = curve(1);
    U64 zero{}, one = small(1), ny, X = one, Y = one, Z{}, DX = A.x, DY = A.y, DZ = one;
    const std::string inf = pt(one, one, zero);
    GOST_34_10_2012_mul_J_2_EP(&X, &Y, &Z, &A.p);
    EXPECT_EQ(pt(X, Y, Z), inf);
    GOST_34_10_2012_add_J_EP(&X, &A.x, &Y, &A.y, &Z, &A.p);  // infinity + P = (Px, Py, 1)
    EXPECT_EQ(pt(X, Y, Z), pt(A.x, A.y, one));
    GOST_34_10_2012_add_J_EP(&X, &A.x, &Y, &A.y, &Z, &A.p);  // P + P doubles (H = 0, R = 0)
    GOST_34_10_2012_mul_J_2_EP(&DX, &DY, &DZ, &A.p);
    EXPECT_EQ(pt(X, Y, Z), pt(DX, DY, DZ));
    GOST_34_10_2012_sub_mod_p_512_bit(&ny, &zero, &A.y, &A.p);
    X = A.x, Y = A.y, Z = one;
    GOST_34_10_2012_add_J_EP(&X, &A.x, &Y, &ny, &Z, &A.p);  // P + (-P)
    EXPECT_EQ(pt(X, Y, Z), inf);
}

// Without Qx the divisor of Y is Px * Z instead of Z^3; k = 0 leaves
// (1, 1, 0), whose divisors are 0, so both coordinates come out 0.
TEST(Jacobian512, ScalarMultiplicationAndItsConversionRule) {
    auto recs = ops("jmul");
    ASSERT_EQ(recs.size(), 12u);
    for (auto& r : recs) {
        Curve c = curve(std::stoi(r["set"]));
        U64 k = le(r["k"]), x, y, y_only;
        GOST_34_10_2012_mul_J_k_EP(&k, &c.x, &c.y, &x, &y, &c.p);
        GOST_34_10_2012_mul_J_k_EP(&k, &c.x, &c.y, nullptr, &y_only, &c.p);
        EXPECT_EQ(pt(x, y, y_only), r["x"] + r["y"] + r["y_only"]);
    }
    Curve A = curve(1);
    U64 zero{}, x, y, y_only;
    GOST_34_10_2012_mul_J_k_EP(&zero, &A.x, &A.y, &x, &y, &A.p);
    GOST_34_10_2012_mul_J_k_EP(&zero, &A.x, &A.y, nullptr, &y_only, &A.p);
    EXPECT_EQ(pt(x, y, y_only), pt(zero, zero, zero));
}
