// Sample containers of tests/vectors/pkcs15 (generate.sh), checked by
// OpenSSL; the library must rebuild them octet for octet from the same seed,
// read them back and agree with the peer's values.
#include <gtest/gtest.h>

#include "pkcs15/pkcs15_fixture.h"

namespace kt {
namespace {

class Samples : public ::testing::TestWithParam<Record> {};

std::vector<Record> samples() { return load_records("pkcs15/samples.txt"); }

TEST(SamplesFile, Present) { EXPECT_EQ(samples().size(), 4u); }

TEST_P(Samples, RebuiltFromTheSameSeed) {
    const Record& r = GetParam();
    Bytes seed = from_hex(r.at("seed")), pwd = from_hex(r.at("password")), key = from_hex(r.at("key")),
          rnd = from_hex(r.at("rnd")), want = from_hex(r.at("container"));
    PRNG_init(seed.data());
    Bytes out(1024);
    unsigned n = 0;
    int fn = std::stoi(r.at("function"));
    unsigned short usage = (unsigned short)std::stoi(r.at("usage"));
    if (fn < 2) {
        type_uN<32> k = key32(key.data());
        n = fn == 0 ? pkcs15_create_conteiner(out.data(), &k, rnd.data(), pwd.data(), (unsigned char)pwd.size())
                    : pkcs15_create_conteiner_new(out.data(), &k, rnd.data(), pwd.data(), (unsigned char)pwd.size(), usage);
    } else {
        TSecretKey k{};
        std::copy(key.begin(), key.end(), k.b);
        n = pkcs15_create_conteiner_2012(out.data(), &k, rnd.data(), usage, pwd.data(), (unsigned char)pwd.size(),
                                         (unsigned char)std::stoi(r.at("kind")));
    }
    out.resize(n);
    EXPECT_EQ(to_hex(out), to_hex(want));
}

TEST_P(Samples, ReadBack) {
    const Record& r = GetParam();
    Bytes c = from_hex(r.at("container")), pwd = from_hex(r.at("password")), key = from_hex(r.at("key"));
    Bytes rnd(40);
    if (r.at("function") == "2") {
        TSecretKey k;
        EXPECT_EQ(pkcs15_get_key_2012(c.data(), &k, pwd.data(), (unsigned char)pwd.size()), 0u);
        EXPECT_EQ(to_hex(k.b, key.size()), to_hex(key));
        EXPECT_EQ(pkcs15_get_rnd_2012(c.data(), rnd.data(), pwd.data(), (unsigned char)pwd.size()), 0u);
    } else {
        type_uN<32> k;
        EXPECT_EQ(pkcs15_get_key(c.data(), &k, pwd.data(), (unsigned char)pwd.size()), 0u);
        EXPECT_EQ(to_hex(k.b, 32), to_hex(key));
        EXPECT_EQ(pkcs15_get_rnd(c.data(), rnd.data(), pwd.data(), (unsigned char)pwd.size()), 0u);
    }
    EXPECT_EQ(to_hex(rnd), r.at("rnd"));
}

// OpenSSL walked the whole container with asn1parse, derived the KEK with its
// PBKDF2, digested the token, opened both objects, computed the key-wrap MACs
// and checked the HMAC (with the attributes' first octet as 0x82); the
// library's own values agree.
TEST_P(Samples, AgreesWithOpenSSL) {
    const Record& r = GetParam();
    bool g2012 = r.at("function") == "2";
    EXPECT_EQ(r.at("asn1parse"), "complete");
    EXPECT_EQ(r.at("peer_key"), r.at("key"));
    EXPECT_EQ(r.at("peer_rnd"), r.at("rnd"));
    Bytes c = from_hex(r.at("container")), pwd = from_hex(r.at("password"));
    unsigned char* info = pkcs15_get_pkcs15content(c.data());
    ASSERT_NE(info, nullptr);
    pkcs15_KEK_t p = pkcs15_get_pkcs15_KEK(info);
    ASSERT_NE(p.salt, nullptr);
    EXPECT_EQ(to_hex(kek_of(g2012, pwd, p.salt + 2).b, 32), r.at("peer_kek"));
    AdParts ad = ad_parts(c);
    EXPECT_EQ(to_hex(&c[ad.digest], g2012 ? 64 : 32), r.at("peer_digest"));
    EXPECT_EQ(to_hex(&c[ad.attrs.at], ad.attrs.end() - ad.attrs.at), r.at("attrs"));
    EXPECT_EQ(to_hex(&c[ad.mac.value()], ad.mac.len), r.at("stored_mac"));
    EXPECT_EQ(r.at("peer_hmac_82"), r.at("stored_mac"));
    // The three key-wrap MACs (random object CEK, key object CEK, MAC key)
    // as OpenSSL's GOST 28147-89 MAC computes them.
    std::string stored;
    for (const Recipient& w : {Recipient(object_parts(c, 0)), Recipient(object_parts(c, 1)), Recipient(ad)})
        stored += to_hex(&c[w.wrap_mac], 4);
    EXPECT_EQ(stored, r.at("peer_wrap_macs"));
    // The MAC key unwrapped under the peer's KEK checks out (RFC 4357 MAC).
    AdCheck a = check_ad(c, key32(from_hex(r.at("peer_kek")).data()), g2012);
    EXPECT_TRUE(a.key_mac && a.digest && a.hmac_82);
}

INSTANTIATE_TEST_SUITE_P(Files, Samples, ::testing::ValuesIn(samples()),
                         [](const ::testing::TestParamInfo<Record>& i) { return i.param.at("name"); });

}  // namespace
}  // namespace kt
