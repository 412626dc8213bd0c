// The GOST R 34.10-2001 parameter sets by selector, with their engine constants.
#include "ec/curves_2001.h"
#include "ec/fast_ops.h"

namespace kx {
namespace ec {
namespace {

// The engine constants, computed by the compiler from the records above.
constexpr grp::Curve<4> kFastA = make_curve<4>(kCryptoProA);
constexpr grp::Curve<4> kFastB = make_curve<4>(kCryptoProB);
constexpr grp::Curve<4> kFastC = make_curve<4>(kCryptoProC);
constexpr grp::Curve<4> kFastTest = make_curve<4>(kTest);

}  // namespace

Bound<4, Curve256> bound_2001(unsigned char set) {
    switch (set) {
        case 1: return {kCryptoProA, &kFastA};
        case 2: return {kCryptoProB, &kFastB};
        case 3: return {kCryptoProC, &kFastC};
        default: return {kTest, &kFastTest};
    }
}

const Curve256& curve_2001(unsigned char set) {
    switch (set) {
        case 1: return kCryptoProA;
        case 2: return kCryptoProB;
        case 3: return kCryptoProC;
        default: return kTest;
    }
}

}  // namespace ec
}  // namespace kx
