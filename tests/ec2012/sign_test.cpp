// GOST R 34.10-2012 (512-bit) keys and signatures: the example of the
// standard, OpenSSL's signatures (tests/vectors/ec2012), the TC26 layout, the
// single subtraction of the hash and the replaceable example curve. Our
// signatures, round trips, the key draw, early returns and the generator
// failure run over both sizes in tests/ec2001/sign_test.cpp.
#include <cstring>

#include "PRNG.h"
#include "ec2012_util.h"

using namespace ec2012;

namespace {

// GOST R 34.10-2012, appendix A.2 (512-bit example).
const char* kD = "0BA6048AADAE241BA40936D47756D7C93091A0E8514669700EE7508E508B102072E8123B2200A0563322DAD2827E2714A2636B7BFD18AADFC62967821FA18DD4";
const char* kQx = "115DC5BC96760C7B48598D8AB9E740D4C4A85A65BE33C1815B5C320C854621DD5A515856D13314AF69BC5B924C8B4DDFF75C45415C1D9DD9DD33612CD530EFE1";
const char* kQy = "37C7C90CD40B0F5621DC3AC1B751CFA0E2634FA0503B3D52639F5D7FB72AFD61EA199441D943FFE7F0C70A2759A3CDB84C114E1F9339FDF27F35ECA93677BEEC";
const char* kE = "3754F3CFACC9E0615C4F4A7C4D8DAB531B09B6F9C170C533A71D147035B0C5917184EE536593F4414339976C647C5D5A407ADEDB1D560C4FC6777D2972075B8C";
const char* kK = "0359E7F4B1410FEACC570456C6801496946312120B39D019D455986E364F365886748ED7A44B3E794434006011842286212273A6D14CF70EA3AF71BB1AE679F1";
const char* kR = "2F86FA60A081091A23DD795E1E3C689EE512A3C82EE0DCC2643C78EEA8FCACD35492558486B20F1C9EC197C90699850260C93BCBCD9C5C3317E19344E173AE36";
const char* kS = "1081B394696FFE8E6585E7A9362D26B6325F56778AADBC081C0BFBE933D52FF5823CE288E8C4F362526080DF7F70CE406A6EEB1F56919CB92A9853BDE73E5B4A";

// Internal layout (s, r little-endian) turned into the exported one.
U128 exported(const U64& s, const U64& r) {
    U128 sig = join(s, r);
    GOST_34_10_2012_rotate_DS_TC26(&sig);
    return sig;
}

int check(U64 h, U128 Q, U128* sig, int set) {
    return GOST_34_10_2012_check_DS_512_bit(&h, &Q, sig, static_cast<unsigned char>(set));
}

// Saves the generator state and restores it on scope exit.
struct GeneratorState {
    unsigned char saved[40];
    GeneratorState() { std::memcpy(saved, PRNG_get_RAND_ptr(), 40); }
    ~GeneratorState() { std::memcpy(PRNG_get_RAND_ptr(), saved, 40); }
};

void seed(unsigned char first) {
    unsigned char s[40];
    for (int i = 0; i < 40; ++i) s[i] = static_cast<unsigned char>(first + i);
    ASSERT_EQ(PRNG_init(s), 0);
}

}  // namespace

TEST(Example512, CurveObjectsAndPublicKeyOnEveryExampleSelector) {
    Curve c = curve(0);
    EXPECT_EQ(pt(p_test, a_test) + pt(q_test, x_test) + hex(y_test), pt(c.p, c.a) + pt(c.q, c.x) + hex(c.y));
    EXPECT_EQ(hex(k_test), hex(be(kK)));
    U64 d = be(kD), rx, k = k_test;
    for (int set : {0, 3, 4, 255}) {
        U128 Q;
        GOST_34_10_2012_512_gen_open_key(&d, &Q, static_cast<unsigned char>(set));
        EXPECT_EQ(hex(Q), hex(join(be(kQx), be(kQy)))) << "selector " << set;
    }
    // k_test times the base point gives the example's r.
    GOST_34_10_2012_mul_k_EP_test(&k, &x_test, &y_test, &rx, nullptr, &a_test, &p_test);
    EXPECT_EQ(hex(rx), hex(be(kR)));
}

// r stays little-endian in bytes 64..127; s is two reversed halves, low half
// first. A full check leaves the buffer as it was.
TEST(Example512, SignatureVerifiesInThisLibrarysLayout) {
    U64 e = be(kE), e2 = e;
    U128 Q = join(be(kQx), be(kQy)), sig = exported(be(kS), be(kR)), copy = sig;
    kt::Bytes sbe = kt::from_hex(kS);
    EXPECT_EQ(hex(sig), kt::to_hex(sbe.data() + 32, 32) + kt::to_hex(sbe.data(), 32) + hex(be(kR)));
    EXPECT_EQ(check(e, Q, &sig, 0), 1);
    EXPECT_EQ(hex(sig), hex(copy));
    for (int byte : {0, 40, 70, 127}) {
        U128 bad = sig;
        bad.b[byte] ^= 0x10;
        EXPECT_EQ(check(e, Q, &bad, 0), 0) << "byte " << byte;
    }
    e2.b[0] ^= 1;
    EXPECT_EQ(check(e2, Q, &sig, 0), 0);
    EXPECT_EQ(check(e, Q, &sig, 1), 0);  // in the 512-bit numbering 1 is paramSetA
}

TEST(Sign512, OpenSslSignaturesVerify) {
    auto recs = kt::load_records("ec2012/sign.txt");
    ASSERT_EQ(recs.size(), 8u);
    for (auto& r : recs) {
        int set = std::stoi(r["set"]);
        U64 d = le(r["d"]), h = le(r["digest"]);
        U128 Q = le128(r["Q"]), mine, sig = from_openssl(kt::from_hex(r["osl_sig"])), raw = le128(r["osl_sig"]);
        GOST_34_10_2012_512_gen_open_key(&d, &mine, static_cast<unsigned char>(set));
        EXPECT_EQ(hex(mine), hex(Q));
        EXPECT_EQ(check(h, Q, &sig, set), 1) << r["paramset"];
        EXPECT_EQ(check(h, Q, &raw, set), 0);  // OpenSSL's raw bytes are not this layout
        h.b[3] ^= 4;
        EXPECT_EQ(check(h, Q, &sig, set), 0);
    }
}

// On the example curve a hash of e + q reduces to e and signs as e, but
// e + 2q stays e + q and enters e * k unreduced, so the same k gives the same
// r and another s.
TEST(Sign512, ExampleCurveHashKeepsTheSingleSubtraction) {
    GeneratorState keep;
    U64 d = be(kD), h[3] = {small(5)};
    GOST_34_10_2012_add_512_bit(&h[1], &h[0], &q_test);
    GOST_34_10_2012_add_512_bit(&h[2], &h[1], &q_test);
    U128 sig[3];
    for (int i = 0; i < 3; ++i) {
        seed(51);
        ASSERT_EQ(GOST_34_10_2012_create_DS_512_bit(&h[i], &d, &sig[i], 0), 0);
    }
    EXPECT_EQ(hex(sig[1]), hex(sig[0]));
    EXPECT_EQ(hex(half(sig[2], 1)), hex(half(sig[0], 1)));
    EXPECT_NE(hex(half(sig[2], 0)), hex(half(sig[0], 0)));
    EXPECT_EQ(check(h[1], join(be(kQx), be(kQy)), &sig[0], 0), 1);
}

TEST(Sign512, ExampleCurveIsReadAtCallTime) {
    U64 saved[5] = {p_test, a_test, q_test, x_test, y_test};
    Curve B = curve(2);
    p_test = B.p, a_test = B.a, q_test = B.q, x_test = B.x, y_test = B.y;
    U64 d = small(0x1234);
    U128 Q0, Q2;
    GOST_34_10_2012_512_gen_open_key(&d, &Q0, 0);
    GOST_34_10_2012_512_gen_open_key(&d, &Q2, 2);
    p_test = saved[0], a_test = saved[1], q_test = saved[2], x_test = saved[3], y_test = saved[4];
    EXPECT_EQ(hex(Q0), hex(Q2));
}
