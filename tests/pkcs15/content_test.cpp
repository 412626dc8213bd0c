// Enveloped content and AuthenticatedData builders of the PKCS#15 container.
#include <gtest/gtest.h>

#include "pkcs15/pkcs15_fixture.h"

namespace kt {
namespace {

using Builder = unsigned int (*)(unsigned char*, unsigned int, type_uN<32>*, unsigned int, unsigned char*);

struct Gen {
    const char* name;
    bool g2012;
    Builder envelope, authdata;
    unsigned char sbox;
    unsigned recipient, info, prefix, suffix, ukm_at, cek_at, mac_at;
    const char* recipient_head;  // template octets in front of the UKM
    const char* info_head;       // encrypted content info template in front of the IV
};
const Gen kGens[] = {
    {"2001", false, pkcs15_content_create, CMS_AuthenticatedData_pkcs15_create, 2, 94, 42, 114, 112, 42, 56, 90,
     "020102 3159 A257 020104 3006 0404 00000001 301E 06072A850302020D00 3013 06072A850302021F01 0408",
     "06092A864886F70D010701 301D 06062A8503020215 3013 0408"},
    {"2012", true, pkcs15_content_create_2012, CMS_AuthenticatedData_pkcs15_create_2012, 7, 96, 44, 120, 176, 44, 58,
     92, "020102 315B A259 020104 3006 0404 00000001 3020 06072A850302020D00 3015 06092A8503070102050101 0408",
     "06092A864886F70D010701 301F 06062A8503020215 3015 0408"},
};

class Builders : public ::testing::TestWithParam<Gen> {
   protected:
    void SetUp() override { seed(7); }
};

TEST_P(Builders, EnvelopeSizes) {
    const Gen& g = GetParam();
    type_uN<32> kek = key32(Rng(3).bytes(32).data());
    // 04 L value, 80 L of it, 30 L of template + that, recipient template.
    for (unsigned len : {0u, 1u, 32u, 40u, 64u, 100u, 200u, 300u}) {
        unsigned e = len + (len < 128 ? 2 : len < 256 ? 3 : 4);
        unsigned i = g.info + e + (e < 128 ? 2 : e < 256 ? 3 : 4);
        unsigned want = g.recipient + i + (i < 128 ? 2 : i < 256 ? 3 : 4);
        Bytes data = Rng(len).bytes(len), out(want + 8, 0xEE);
        EXPECT_EQ(g.envelope(data.data(), len, &kek, 0, nullptr), want) << len;
        EXPECT_EQ(g.envelope(data.data(), len, &kek, 0, out.data()), want) << len;
        EXPECT_EQ(out[want], 0xEE) << "written past the reported size";
    }
    if (!g.g2012) {
        EXPECT_EQ(g.envelope(nullptr, 32, &kek, 0, nullptr), 174u);
        EXPECT_EQ(g.envelope(nullptr, 40, &kek, 0, nullptr), 182u);
    }
}

TEST_P(Builders, EnvelopeOpensIndependently) {
    const Gen& g = GetParam();
    type_uN<32> kek = key32(Rng(5).bytes(32).data());
    for (unsigned len : {32u, 40u, 64u, 150u}) {
        Bytes data = Rng(len + 1).bytes(len);
        Bytes out(g.envelope(nullptr, len, &kek, 0, nullptr));
        ASSERT_EQ(g.envelope(data.data(), len, &kek, 0, out.data()), out.size());
        Bytes head = from_hex(g.recipient_head);
        EXPECT_TRUE(std::equal(head.begin(), head.end(), out.begin())) << to_hex(out);
        // The getters find the recipient fields at the template positions.
        pkcs15_CEK_t cek = pkcs15_get_pkcs15_CEK(out.data() + 3);
        EXPECT_EQ(cek.ptr[PKCS15_CEK_KEKID], out.data() + 12);  // content of 30 06 { 04 04 00000001 }
        EXPECT_EQ(cek.ptr[PKCS15_CEK_UKM], out.data() + g.ukm_at - 2);
        EXPECT_EQ(cek.ptr[PKCS15_CEK_ENC], out.data() + g.cek_at - 2);
        EXPECT_EQ(cek.ptr[PKCS15_CEK_MAC], out.data() + g.mac_at - 2);
        type_uN<32> k;
        ASSERT_TRUE(unwrap(out.data() + g.ukm_at, out.data() + g.cek_at, out.data() + g.mac_at, kek, g.sbox, k));
        // Encrypted content info: template with the IV at 25, then 80 L.
        Der info = der(out, g.recipient);
        ASSERT_EQ(info.tag, 0x30);
        Bytes ih = from_hex(g.info_head);
        EXPECT_TRUE(std::equal(ih.begin(), ih.end(), out.begin() + info.value()));
        pkcs15_data_t d = pkcs15_get_pkcs15_data(out.data() + g.recipient);
        EXPECT_EQ(d.iv, out.data() + info.value() + 23);
        ASSERT_NE(d.content, nullptr);
        Der enc = der(out, d.content - out.data());
        EXPECT_EQ(enc.end(), out.size());
        // The whole OCTET STRING element, header included, was encrypted.
        Bytes plain(out.begin() + enc.value(), out.begin() + enc.end());
        type_u64 iv;
        std::memcpy(&iv, d.iv + 2, 8);
        GOST_28147_89_R_CFB(plain.data(), (unsigned)plain.size(), &k, &iv, g.sbox);
        Der os = der(plain, 0);
        EXPECT_EQ(os.tag, 0x04);
        EXPECT_EQ(os.len, len);
        EXPECT_TRUE(std::equal(data.begin(), data.end(), plain.begin() + os.hl));
    }
}

// Random octets are drawn in a fixed order: creation takes the salt, then
// for each object (the random value first) a CEK and a block whose octets
// 0..7 are the IV and 8..15 the UKM, then the AuthenticatedData's block (UKM
// in octets 0..7) and its MAC key.
TEST_P(Builders, RandomDrawOrder) {
    const Gen& g = GetParam();
    seed(31);
    std::vector<Bytes> d;
    for (int i = 0; i < 7; ++i) {
        type_uN<32> b;
        ASSERT_EQ(PRNG_get(&b), 0u);
        d.emplace_back(b.b, b.b + 32);
    }
    seed(31);
    Bytes c = g.g2012 ? make_2012(1, 0x80) : make_2001(0x80);
    ASSERT_FALSE(c.empty());
    size_t salt = salt_at(c);
    EXPECT_EQ(to_hex(&c[salt], 32), to_hex(d[0]));
    type_uN<32> kek = kek_of(g.g2012, password(), &c[salt]);
    auto wrapped = [&](const Recipient& r, const Bytes& key, const Bytes& block, unsigned ukm_at, const char* what) {
        type_uN<32> k;
        EXPECT_TRUE(unwrap(&c[r.ukm], &c[r.wrapped], &c[r.wrap_mac], kek, g.sbox, k)) << what;
        EXPECT_EQ(to_hex(k.b, 32), to_hex(key)) << what;
        EXPECT_EQ(to_hex(&c[r.ukm], 8), to_hex(&block[ukm_at], 8)) << what;
    };
    for (int o = 0; o < 2; ++o) {
        ObjParts p = object_parts(c, o);
        wrapped(p, d[1 + 2 * o], d[2 + 2 * o], 8, o ? "key object" : "random object");
        EXPECT_EQ(to_hex(&c[p.iv], 8), to_hex(&d[2 + 2 * o][0], 8)) << o;
    }
    wrapped(ad_parts(c), d[6], d[5], 0, "AuthenticatedData");
}

TEST_P(Builders, UnseededGeneratorGivesZero) {
    const Gen& g = GetParam();
    type_uN<32> kek{};
    Bytes data(32, 1), out(400, 0);
    unseed();
    EXPECT_EQ(g.envelope(data.data(), 32, &kek, 0, out.data()), 0u);
    // A size query draws nothing.
    EXPECT_NE(g.envelope(data.data(), 32, &kek, 0, nullptr), 0u);
    Bytes content = from_hex("3012 060A2A864886F70D010F0301 A004 0402 AABB");
    Bytes buf(content.size() + 400);
    std::copy(content.begin(), content.end(), buf.begin());
    EXPECT_EQ(g.authdata(buf.data(), (unsigned)content.size(), &kek, 0, buf.data()), 0u);
    seed(7);
}

// SEQUENCE { token OID, [0] { OCTET STRING { payload } } }.
Bytes encapsulated(const Bytes& payload) {
    Bytes os{0x04};
    auto len = [](Bytes& b, size_t n) {
        if (n < 128) b.push_back((unsigned char)n);
        else if (n < 256) { b.push_back(0x81); b.push_back((unsigned char)n); }
        else { b.push_back(0x82); b.push_back((unsigned char)(n >> 8)); b.push_back((unsigned char)n); }
    };
    len(os, payload.size());
    os.insert(os.end(), payload.begin(), payload.end());
    Bytes a0{0xA0};
    len(a0, os.size());
    a0.insert(a0.end(), os.begin(), os.end());
    Bytes inner = from_hex("060A2A864886F70D010F0301");
    inner.insert(inner.end(), a0.begin(), a0.end());
    Bytes seq{0x30};
    len(seq, inner.size());
    seq.insert(seq.end(), inner.begin(), inner.end());
    return seq;
}

TEST_P(Builders, AuthenticatedDataLayoutAndMac) {
    const Gen& g = GetParam();
    type_uN<32> kek = key32(Rng(9).bytes(32).data());
    for (size_t n : {5u, 100u, 300u, 540u}) {
        Bytes content = encapsulated(Rng(n).bytes(n));
        unsigned len = (unsigned)content.size();
        unsigned inner = len + g.prefix + g.suffix;
        unsigned want = inner + (inner < 128 ? 2 : inner < 256 ? 3 : inner < 65536 ? 4 : 5);
        EXPECT_EQ(len + (g.g2012 ? 296u : 226u), inner);
        EXPECT_EQ(g.authdata(content.data(), len, &kek, 0, nullptr), want);
        Bytes buf(want + 4, 0xEE);
        std::copy(content.begin(), content.end(), buf.begin());
        ASSERT_EQ(g.authdata(buf.data(), len, &kek, 0, buf.data()), want);
        EXPECT_EQ(buf[want], 0xEE);
        buf.resize(want);
        Der top = der(buf, 0);
        EXPECT_EQ(top.end(), want);
        // Version 0, the recipient SET, then the algorithms.
        EXPECT_EQ(to_hex(Bytes(buf.begin() + top.hl, buf.begin() + top.hl + 5)), g.g2012 ? "020100315b" : "0201003159");
        // The content moved up intact behind the prefix.
        EXPECT_TRUE(std::equal(content.begin(), content.end(), buf.begin() + top.hl + g.prefix));
        AdCheck r = check_ad(buf, kek, g.g2012);
        EXPECT_TRUE(r.key_mac);
        EXPECT_TRUE(r.digest);
        // The HMAC is over the attributes with their first octet taken as
        // 0x82; neither the stored 0xA2 nor the SET OF tag of RFC 5652 9.2
        // gives it.
        EXPECT_TRUE(r.hmac_82);
        EXPECT_FALSE(r.hmac_a2);
        EXPECT_FALSE(r.hmac_31);
        // The tag is restored after the computation.
        EXPECT_EQ(buf[ad_parts(buf).attrs.at], 0xA2);
    }
}

TEST_P(Builders, AuthenticatedDataRejectsMalformedContent) {
    const Gen& g = GetParam();
    type_uN<32> kek{};
    const char* bad[] = {
        "3112 060A2A864886F70D010F0301 A004 0402 AABB",  // not a SEQUENCE
        "3012 050A2A864886F70D010F0301 A004 0402 AABB",  // no OID first
        "3012 060A2A864886F70D010F0301 A104 0402 AABB",  // no [0]
        "3012 060A2A864886F70D010F0301 A004 0302 AABB",  // no OCTET STRING
        "3012 060A2A864886F70D010F0301 A004 0405 AABB",  // OCTET STRING past its parent
        "3040 060A2A864886F70D010F0301 A004 0402 AABB",  // SEQUENCE past len
        "300C 060A2A864886F70D010F0301",                 // nothing encapsulated
    };
    for (const char* h : bad) {
        Bytes c = from_hex(h), buf(c.size() + 400, 0);
        std::copy(c.begin(), c.end(), buf.begin());
        EXPECT_EQ(g.authdata(buf.data(), (unsigned)c.size(), &kek, 0, buf.data()), 0u) << h;
        EXPECT_EQ(g.authdata(buf.data(), (unsigned)c.size(), &kek, 0, nullptr), 0u) << h;
    }
}

INSTANTIATE_TEST_SUITE_P(Generations, Builders, ::testing::ValuesIn(kGens),
                         [](const ::testing::TestParamInfo<Gen>& i) { return std::string("g") + i.param.name; });

}  // namespace
}  // namespace kt
