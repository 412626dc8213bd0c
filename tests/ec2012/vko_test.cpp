// VKO_512 against OpenSSL's derives and an independent derivation
// (tests/vectors/ec2012/vko.txt).
//
// What `openssl pkeyutl -engine gost -derive` computes on gost2012_512 keys,
// found by trying it against python3 point arithmetic:
//  - with an 8-byte UKM (read little-endian): 32 bytes, GOST R 34.11-2012
//    256-bit hash of K.x || K.y (little-endian) - the RFC 7836 VKO with the
//    256-bit hash, so only the point K is comparable with VKO_512;
//  - with a 32-byte UKM: 64 bytes, the 512-bit hash of K.x || K.y with the
//    first 16 UKM bytes read big-endian as the multiplier (RFC 9189 KEG):
//    VKO_512 itself, given that 128-bit value as its (little-endian) ukm;
//  - no UKM, or another width: refused. No 512-bit UKM can be given to it,
//    so the full-width case is checked against an independent derivation.
#include "GOST_34_11_2012.h"
#include "ec2012_util.h"

using namespace ec2012;

namespace {

std::string vko(const U64* ukm, const U64& d, const U128& Q, unsigned char set) {
    U64 out, dd = d;
    U128 QQ = Q;
    GOST_34_10_2012_VKO_512(&out, const_cast<U64*>(ukm), &dd, &QQ, set);
    return hex(out);
}

}  // namespace

TEST(Vko512, AgreesWithOpenSslAndIndependentDerivation) {
    auto recs = kt::load_records("ec2012/vko.txt");
    ASSERT_EQ(recs.size(), 2u);
    for (auto& r : recs) {
        auto set = static_cast<unsigned char>(std::stoi(r["set"]));
        U64 ad = le(r["a_d"]), bd = le(r["b_d"]);
        U128 aQ = le128(r["a_Q"]), bQ = le128(r["b_Q"]);

        // Full 512-bit UKM, symmetric, equal to the python3 + OpenSSL-hash value.
        U64 ukm = le(r["ukm64"]);
        EXPECT_EQ(vko(&ukm, ad, bQ, set), r["key64"]) << r["paramset"];
        EXPECT_EQ(vko(&ukm, bd, aQ, set), r["key64"]);

        // OpenSSL with a 32-byte UKM (RFC 9189 KEG for 512-bit keys): VKO_512
        // with the first 16 UKM bytes read big-endian as the multiplier.
        kt::Bytes u32 = kt::from_hex(r["ukm32"]);
        U64 keg{};
        for (int i = 0; i < 16; ++i) keg.b[i] = u32[15 - i];
        EXPECT_EQ(vko(&keg, ad, bQ, set), r["keg"]);
        EXPECT_EQ(vko(&keg, bd, aQ, set), r["keg"]);

        // A null, zero or unit UKM all mean 1.
        U64 zero{}, one = small(1);
        EXPECT_EQ(vko(nullptr, ad, bQ, set), r["key1"]);
        EXPECT_EQ(vko(&zero, ad, bQ, set), r["key1"]);
        EXPECT_EQ(vko(&one, bd, aQ, set), r["key1"]);

        // OpenSSL with an 8-byte UKM hashes the same kind of point with the
        // 256-bit GOST R 34.11-2012: rebuild K from the exported arithmetic.
        Curve c = curve(set);
        U64 t = le(r["ukm8"]), qx = half(bQ, 0), qy = half(bQ, 1);
        GOST_34_10_2012_mul_mod_p_512_bit(&t, &t, &ad, &c.q);
        U64 kx, ky;
        GOST_34_10_2012_mul_k_EP_test(&t, &qx, &qy, &kx, &ky, &c.a, &c.p);
        U128 K = join(kx, ky);
        type_uN<32> h256;
        GOST_34_11_2012_hash_256_bit(K.b, 128, &h256);
        EXPECT_EQ(kt::to_hex(h256.b, 32), r["key8"]);
    }
}

TEST(Vko512, ExampleCurveWithItsKeys) {
    // Two key pairs on the example curve (selector 0): symmetric.
    U64 d1 = small(0x5151), d2 = small(0x7272), ukm = small(99);
    U128 Q1, Q2;
    GOST_34_10_2012_512_gen_open_key(&d1, &Q1, 0);
    GOST_34_10_2012_512_gen_open_key(&d2, &Q2, 0);
    EXPECT_EQ(vko(&ukm, d1, Q2, 0), vko(&ukm, d2, Q1, 0));
    EXPECT_NE(vko(&ukm, d1, Q2, 0), vko(nullptr, d1, Q2, 0));
}
