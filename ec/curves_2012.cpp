// Published values of the 512-bit parameter sets of GOST R 34.10-2012.
#include "GOST_34_10_2012.h"
#include "ec/curves_2012.h"
#include "ec/fast_ops.h"

namespace kx {
namespace ec {
namespace {

constexpr type_uN<64> bytes(const bn::Num<8>& n) {
    type_uN<64> r{};
    for (unsigned i = 0; i < 64; ++i) r.b[i] = static_cast<unsigned char>(n.w[i / 8] >> (8 * (i % 8)));
    return r;
}

// id-tc26-gost-3410-12-512-paramSetA, 1.2.643.7.1.2.1.2.1 (RFC 7836): p = 2^512 - 569
constexpr Curve512 kParamSetA = {
    hex512("FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"
           "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFDC7"),
    hex512("FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"
           "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFDC4"),
    hex512("FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"
           "27E69532F48D89116FF22B8D4E0560609B4B38ABFAD2B85DCACDB1411F10B275"),
    hex512("3"),
    hex512("7503CFE87A836AE3A61B8816E25450E6CE5E1C93ACF1ABC1778064FDCBEFA921"
           "DF1626BE4FD036E93D75E6A50E3A41E98028FE5FC235F5B889A589CB5215F2A4"),
};

// id-tc26-gost-3410-12-512-paramSetB, 1.2.643.7.1.2.1.2.2 (RFC 7836): p = 2^511 + 111
constexpr Curve512 kParamSetB = {
    hex512("8000000000000000000000000000000000000000000000000000000000000000"
           "000000000000000000000000000000000000000000000000000000000000006F"),
    hex512("8000000000000000000000000000000000000000000000000000000000000000"
           "000000000000000000000000000000000000000000000000000000000000006C"),
    hex512("8000000000000000000000000000000000000000000000000000000000000001"
           "49A1EC142565A545ACFDB77BD9D40CFA8B996712101BEA0EC6346C54374F25BD"),
    hex512("2"),
    hex512("1A8F7EDA389B094C2C071E3647A8940F3C123B697578C213BE6DD9E6C8EC7335"
           "DCB228FD1EDF4A39152CBCAAF8C0398828041055F94CEEEC7E21340780FE41BD"),
};

constexpr grp::Curve<8> kFastA = make_curve<8>(kParamSetA);
constexpr grp::Curve<8> kFastB = make_curve<8>(kParamSetB);

}  // namespace

// The example curve gets no engine constants: a caller may rewrite it.
Bound<8, Curve512> bound_2012(unsigned char set) {
    switch (set) {
        case 1: return {kParamSetA, &kFastA};
        case 2: return {kParamSetB, &kFastB};
        default: return {curve_2012(set), nullptr};
    }
}

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
