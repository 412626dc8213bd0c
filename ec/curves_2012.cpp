// Published values of the 512-bit parameter sets of GOST R 34.10-2012.
#include "GOST_34_10_2012.h"
#include "ec/curves_2012.h"

namespace kx {
namespace ec {
namespace {

constexpr type_uN<64> bytes(const bn::Num<8>& n) {
    type_uN<64> r{};
    for (unsigned i = 0; i < 64; ++i) r.b[i] = static_cast<unsigned char>(n.w[i / 8] >> (8 * (i % 8)));
    return r;
}

}  // namespace

Curve512 curve_2012(unsigned char set) {
    switch (set) {
        case 1: return kParamSetA;
        case 2: return kParamSetB;
        default:
            return {bn::load<8>(&p_test), bn::load<8>(&a_test), bn::load<8>(&q_test), bn::load<8>(&x_test),
                    bn::load<8>(&y_test)};
    }
}

}  // namespace ec
}  // namespace kx

// The 512-bit example of GOST R 34.10-2012 (appendix A.2): the curve, and the
// ephemeral k of its signature. Writable on purpose: the example curve is the
// one slot a caller can fill with a curve of its own. (Declared KORVEX_API in
// the header; the block form avoids an initialised extern declaration.)
extern "C" {
type_uN<64> p_test = kx::ec::bytes(kx::ec::hex512(
    "4531ACD1FE0023C7550D267B6B2FEE80922B14B2FFB90F04D4EB7C09B5D2D15D"
    "F1D852741AF4704A0458047E80E4546D35B8336FAC224DD81664BBF528BE6373"));
type_uN<64> a_test = kx::ec::bytes(kx::ec::hex512("7"));
type_uN<64> q_test = kx::ec::bytes(kx::ec::hex512(
    "4531ACD1FE0023C7550D267B6B2FEE80922B14B2FFB90F04D4EB7C09B5D2D15D"
    "A82F2D7ECB1DBAC719905C5EECC423F1D86E25EDBE23C595D644AAF187E6E6DF"));
type_uN<64> x_test = kx::ec::bytes(kx::ec::hex512(
    "24D19CC64572EE30F396BF6EBBFD7A6C5213B3B3D7057CC825F91093A68CD762"
    "FD60611262CD838DC6B60AA7EEE804E28BC849977FAC33B4B530F1B120248A9A"));
type_uN<64> y_test = kx::ec::bytes(kx::ec::hex512(
    "2BB312A43BD2CE6E0D020613C857ACDDCFBF061E91E5F2C3F32447C259F39B2C"
    "83AB156D77F1496BF7EB3351E1EE4E43DC1A18B91B24640B6DBB92CB1ADD371E"));
type_uN<64> k_test = kx::ec::bytes(kx::ec::hex512(
    "0359E7F4B1410FEACC570456C6801496946312120B39D019D455986E364F3658"
    "86748ED7A44B3E794434006011842286212273A6D14CF70EA3AF71BB1AE679F1"));
}
