// Sample containers of tests/vectors/pkcs15 (generate.sh), opened and
// checked by OpenSSL: the library's readers agree with the peer's values.
#include <gtest/gtest.h>

#include "pkcs15/pkcs15_fixture.h"

namespace kt {
namespace {

class Samples : public ::testing::TestWithParam<Record> {};

std::vector<Record> samples() { return load_records("pkcs15/samples.txt"); }

// OpenSSL walked the whole container with asn1parse, derived the KEK with its
// PBKDF2, opened both objects and checked the digest, the key-wrap MACs and
// the HMAC (with the attributes' first octet as 0x82) when the samples were
// made; here the library's readers, its PBKDF2, and the digest, HMAC and key
// unwrap recomputed with its primitives agree with the peer's values.
TEST_P(Samples, AgreesWithOpenSSL) {
    const Record& r = GetParam();
    bool g2012 = r.at("function") == "2";
    Bytes c = from_hex(r.at("container")), pwd = from_hex(r.at("password"));
    // The library's readers give what OpenSSL opened.
    unsigned char pl = (unsigned char)pwd.size();
    TSecretKey key{};
    Bytes rnd(40);
    ASSERT_EQ((g2012 ? pkcs15_get_rnd_2012 : pkcs15_get_rnd)(c.data(), rnd.data(), pwd.data(), pl), 0u);
    ASSERT_EQ(g2012 ? pkcs15_get_key_2012(c.data(), &key, pwd.data(), pl)
                    : pkcs15_get_key(c.data(), reinterpret_cast<type_uN<32>*>(key.b), pwd.data(), pl),
              0u);
    EXPECT_EQ(to_hex(rnd), r.at("peer_rnd"));
    EXPECT_EQ(to_hex(key.b, r.at("peer_key").size() / 2), r.at("peer_key"));
    unsigned char* info = pkcs15_get_pkcs15content(c.data());
    ASSERT_NE(info, nullptr);
    pkcs15_KEK_t p = pkcs15_get_pkcs15_KEK(info);
    ASSERT_NE(p.salt, nullptr);
    EXPECT_EQ(to_hex(kek_of(g2012, pwd, p.salt + 2).b, 32), r.at("peer_kek"));
    // The MAC key unwrapped under the peer's KEK checks out (RFC 4357 MAC).
    EXPECT_TRUE(check_ad(c, key32(from_hex(r.at("peer_kek")).data()), g2012).ok());
}

INSTANTIATE_TEST_SUITE_P(Files, Samples, ::testing::ValuesIn(samples()),
                         [](const ::testing::TestParamInfo<Record>& i) { return i.param.at("name"); });

}  // namespace
}  // namespace kt
