// The GOST R 34.10-2001 parameter sets by selector.
#include "ec/curves_2001.h"

namespace kx {
namespace ec {
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
