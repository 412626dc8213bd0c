// Jacobian points (X/Z^2, Y/Z^3) on the 512-bit curves with a = -3
// (paramSetA and paramSetB of RFC 7836); infinity is (1, 1, 0). Exported for
// callers; the signature code works in affine coordinates.
#include "GOST_34_10_2012.h"
#include "ec/mp_512.h"

namespace kx {
namespace {

using mp::N512;

struct Jac {
    N512 X, Y, Z;
};

bool is_infinity(const Jac& P) {
    return bn::cmp_one(P.X) == 1 && bn::cmp_one(P.Y) == 1 && bn::is_zero(P.Z);
}

constexpr Jac kInfinity = {{{1}}, {{1}}, {{0}}};

// The step order is part of the interface: M = 3(X - Z^2)(X + Z^2) uses
// a = -3, and the final subtraction takes T3 = (2Y)^4 = 16 Y^4 where the
// textbook doubling has 8 Y^4, so Y3 is not the true double's.
void dbl(Jac& P, const N512& p) {
    if (is_infinity(P)) return;
    N512 T1, T2, T3, M, S, X3, Y3, Z3;
    mp::squ(T1, P.Z, p);
    bn::sub_mod(T2, P.X, T1, p);
    bn::add_mod(T1, P.X, T1, p);
    bn::mul_mod(T2, T2, T1, p);
    mp::mul3(M, T2, p);
    bn::add_mod(T3, P.Y, P.Y, p);
    bn::mul_mod(Z3, T3, P.Z, p);
    mp::squ(T3, T3, p);
    bn::mul_mod(S, T3, P.X, p);
    mp::squ(T3, T3, p);
    mp::squ(X3, M, p);
    mp::sub_mul2(X3, X3, S, p);
    bn::sub_mod(Y3, S, X3, p);
    bn::mul_mod(Y3, M, Y3, p);
    bn::sub_mod(Y3, Y3, T3, p);
    P.X = X3;
    P.Y = Y3;
    P.Z = Z3;
}

// P = P + (x2, y2), the second point affine.
void add(Jac& P, const N512& x2, const N512& y2, const N512& p) {
    if (is_infinity(P)) {
        P = {x2, y2, bn::from_u64<8>(1)};
        return;
    }
    N512 U, H, R, t;
    mp::squ(U, P.Z, p);
    bn::mul_mod(H, x2, U, p);
    bn::sub_mod(H, H, P.X, p);      // H = x2 Z^2 - X
    bn::mul_mod(R, y2, U, p);
    bn::mul_mod(R, R, P.Z, p);
    bn::sub_mod(R, R, P.Y, p);      // R = y2 Z^3 - Y
    if (bn::is_zero(H)) {
        if (bn::is_zero(R)) {       // the same point: double it
            P = {x2, y2, bn::from_u64<8>(1)};
            dbl(P, p);
        } else {                    // opposite points
            P = kInfinity;
        }
        return;
    }
    N512 H2, H3, XH2, X3, Y3, Z3;
    bn::mul_mod(Z3, P.Z, H, p);
    mp::squ(H2, H, p);
    bn::mul_mod(H3, H2, H, p);
    bn::mul_mod(XH2, P.X, H2, p);
    mp::squ(X3, R, p);
    bn::sub_mod(X3, X3, H3, p);
    mp::sub_mul2(X3, X3, XH2, p);   // X3 = R^2 - H^3 - 2 X H^2
    bn::sub_mod(t, XH2, X3, p);
    bn::mul_mod(Y3, R, t, p);
    bn::mul_mod(t, P.Y, H3, p);
    bn::sub_mod(Y3, Y3, t, p);      // Y3 = R (X H^2 - X3) - Y H^3
    P.X = X3;
    P.Y = Y3;
    P.Z = Z3;
}

// Left-to-right double-and-add over all 512 bits, then the affine
// conversion. The divisor of Qy is built from the local copy of Px, which
// holds Z^2 only when Qx was requested: with a null Qx, Qy = Y / (Px Z).
void mul_k(const N512& k, const N512& px, const N512& py, void* qx, void* qy, const N512& p) {
    Jac R = kInfinity;
    N512 w = px;
    for (unsigned i = 8; i-- > 0;) {
        for (unsigned bit = 64; bit-- > 0;) {
            dbl(R, p);
            if ((k.w[i] >> bit) & 1) add(R, px, py, p);
        }
    }
    if (qx) {
        mp::squ(w, R.Z, p);
        N512 x = w;
        bn::div_mod(x, &R.X, p);
        bn::store(qx, x);
    }
    if (qy) {
        N512 y;
        bn::mul_mod(y, w, R.Z, p);
        bn::div_mod(y, &R.Y, p);
        bn::store(qy, y);
    }
}

}  // namespace
}  // namespace kx

using kx::bn::load;
using kx::bn::store;

KORVEX_API void GOST_34_10_2012_mul_J_2_EP(type_uN<64>* X, type_uN<64>* Y, type_uN<64>* Z, type_uN<64>* p) {
    kx::Jac P = {load<8>(X), load<8>(Y), load<8>(Z)};
    kx::dbl(P, load<8>(p));
    store(X, P.X);
    store(Y, P.Y);
    store(Z, P.Z);
}

KORVEX_API void GOST_34_10_2012_add_J_EP(type_uN<64>* X1, type_uN<64>* x2, type_uN<64>* Y1, type_uN<64>* y2,
                                         type_uN<64>* Z1, type_uN<64>* p) {
    kx::Jac P = {load<8>(X1), load<8>(Y1), load<8>(Z1)};
    kx::add(P, load<8>(x2), load<8>(y2), load<8>(p));
    store(X1, P.X);
    store(Y1, P.Y);
    store(Z1, P.Z);
}

KORVEX_API void GOST_34_10_2012_mul_J_k_EP(type_uN<64>* k, type_uN<64>* Px, type_uN<64>* Py, type_uN<64>* Qx,
                                           type_uN<64>* Qy, type_uN<64>* p) {
    kx::mul_k(load<8>(k), load<8>(Px), load<8>(Py), Qx, Qy, load<8>(p));
}
