// The built-in curves with their engine constants (computed by the compiler)
// and fixed-base tables (computed at build time).
#include "ec/ops_2001.h"
#include "ec/ops_2012.h"

namespace kx {
namespace ec {
namespace {

constexpr grp::Curve<4> kFast256[4] = {make_curve<4>(kCryptoProA), make_curve<4>(kCryptoProB),
                                       make_curve<4>(kCryptoProC), make_curve<4>(kTest)};
constexpr grp::Curve<8> kFast512[2] = {make_curve<8>(kParamSetA), make_curve<8>(kParamSetB)};

}  // namespace

Bound<4, Curve256> bound_2001(unsigned char set) {
    unsigned i = set >= 1 && set <= 3 ? set - 1u : 3u;
    return {curve_2001(set), &kFast256[i], &kComb256[i]};
}

// The example curve gets no engine constants: a caller may rewrite it.
Bound<8, Curve512> bound_2012(unsigned char set) {
    if (set == 1 || set == 2) return {curve_2012(set), &kFast512[set - 1], &kComb512[set - 1]};
    return {curve_2012(set), nullptr, nullptr};
}

}  // namespace ec
}  // namespace kx
