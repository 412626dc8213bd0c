// The 2001 PKCS#15 container: fixed layout, usage flags, readers, update.
#include <gtest/gtest.h>

#include <set>

#include "pkcs15/pkcs15_fixture.h"

namespace kt {
namespace {

unsigned get_key(Bytes& c, type_uN<32>* out, Bytes p = password(), bool check = true) {
    return (check ? pkcs15_get_key : pkcs15_get_key_no_pass_chek)(c.data(), out, p.data(), (unsigned char)p.size());
}
unsigned get_rnd(Bytes& c, unsigned char* out, Bytes p = password(), bool check = true) {
    return (check ? pkcs15_get_rnd : pkcs15_get_rnd_no_pass_chek)(c.data(), out, p.data(), (unsigned char)p.size());
}
unsigned update(Bytes& c, Bytes p = password()) { return pkcs15_update(c.data(), p.data(), (unsigned char)p.size()); }
std::string key_hex() { return to_hex(sample_key().b, 32); }

class Container2001 : public ::testing::Test {
   protected:
    void SetUp() override { seed(11); }
};

// Usage argument -> size and the KeyUsageFlags BIT STRING of the key attributes.
const struct { unsigned short usage; unsigned size; const char* flags; } kUsage[] = {
    {0x00, 787, "030306 74C0"},  // 0 is taken as 255: everything
    {0xFF, 787, "030306 74C0"},
    {0x40, 787, "030306 0040"},  // nonRepudiation
    {0x08, 787, "030307 0080"},  // keyAgreement -> derive
    {0x88, 787, "030307 3080"},
    {0x48, 787, "030306 00C0"},
    {0x60, 787, "030306 0440"},
    {0x80, 786, "030204 30"},    // digitalSignature -> sign, signRecover
    {0x04, 786, "030204 30"},    // keyCertSign
    {0x02, 786, "030204 30"},    // cRLSign
    {0x10, 786, "030206 40"},    // dataEncipherment -> decrypt
    {0x20, 786, "030202 04"},    // keyEncipherment -> unwrap
    {0x30, 786, "030202 44"},    // unused bits of the last flag that applies
    {0x90, 786, "030204 70"},
    {0xB0, 786, "030202 74"},
    {0x01, 786, "030206 00"},    // encipherOnly: no flag
    {0x100, 786, "030206 00"},
};

// Sizes, key attributes, and the fixed offsets of the readers against a
// walk of the structure, for every usage.
TEST_F(Container2001, UsageFlagsAndFixedOffsets) {
    // Label and flags, then 30 L { key identifier 2, usage flags }, at 463.
    const std::string label = "30110c0b50726976617465204b657903020780";
    Bytes plain = make_2001(0, false);
    ASSERT_EQ(plain.size(), 786u);
    EXPECT_EQ(to_hex(&plain[463], 31), label + "300a040400000002" "03020600");
    for (const auto& u : kUsage) {
        Bytes c = make_2001(u.usage);
        ASSERT_EQ(c.size(), u.size) << u.usage;
        EXPECT_EQ(to_hex(&c[463], u.size - 755),
                  label + (u.size == 787 ? "300b" : "300a") + "040400000002" + to_hex(from_hex(u.flags)))
            << u.usage;
        unsigned s = u.size - 786;
        unsigned char* p = c.data();
        ASSERT_EQ(pkcs15_get_pkcs15content(p), p + 149);
        pkcs15_KEK_t kek = pkcs15_get_pkcs15_KEK(p + 149);
        EXPECT_EQ(kek.salt, p + 176);
        EXPECT_EQ(kek.iterations, 2000u);
        // Per object: the A2 element, then the values of UKM, encrypted CEK,
        // CEK MAC, IV and encrypted content, and the content's length.
        const unsigned objs[2][7] = {{269, 314, 328, 362, 393, 412, 42},
                                     {497 + s, 542 + s, 556 + s, 590 + s, 621 + s, 640 + s, 34}};
        for (const auto& o : objs) {
            Der a2 = der(c, o[0]);
            ASSERT_EQ(a2.tag, 0xA2);
            pkcs15_CEK_t k = pkcs15_get_pkcs15_CEK(p + a2.value() + 3);
            pkcs15_data_t d = pkcs15_get_pkcs15_data(p + a2.value() + 94);
            const unsigned char* got[] = {k.ptr[PKCS15_CEK_UKM], k.ptr[PKCS15_CEK_ENC], k.ptr[PKCS15_CEK_MAC], d.iv,
                                          d.content};
            for (int i = 0; i < 5; ++i) EXPECT_EQ(got[i], p + o[i + 1] - 2) << u.usage << " " << o[i + 1];
            EXPECT_EQ(der(c, o[5] - 2).len, o[6]);
        }
        AdParts ad = ad_parts(c);
        EXPECT_EQ((std::vector<size_t>{ad.ukm, ad.wrapped, ad.wrap_mac, ad.content_os.value(), ad.content_os.len,
                                       ad.attrs.at, ad.digest, ad.mac.value(), ad.mac.end()}),
                  (std::vector<size_t>{46, 60, 94, 142, 532 + s, 674 + s, 720 + s, 754 + s, c.size()}))
            << u.usage;
    }
}

// Each reader with and without the password check, with the right and a
// wrong password; after a 32 nothing is written and the update leaves the
// container as it was.
TEST_F(Container2001, RoundTripsAndWrongPassword) {
    for (const Bytes& pwd : {password(), Bytes(), Bytes(255, 0x5A), Bytes{0}})
        for (unsigned short usage : {0x80, 0x40}) {
            Bytes c = make_2001(usage, true, pwd), before = c, rnd(40, 0xCC);
            type_uN<32> out;
            std::memset(out.b, 0xCC, 32);
            EXPECT_EQ(get_key(c, nullptr, pwd), 0u);
            EXPECT_EQ(get_key(c, nullptr, wrong_password()), 32u);
            EXPECT_EQ(get_key(c, &out, wrong_password()), 32u);
            EXPECT_EQ(get_rnd(c, rnd.data(), wrong_password()), 32u);
            EXPECT_EQ(to_hex(out.b, 32) + to_hex(rnd), std::string(144, 'c'));
            EXPECT_EQ(update(c, wrong_password()), 32u);
            EXPECT_EQ(c, before);
            for (bool check : {true, false}) {
                EXPECT_EQ(get_key(c, &out, pwd, check), 0u);
                EXPECT_EQ(to_hex(out.b, 32), key_hex());
                EXPECT_EQ(get_rnd(c, rnd.data(), pwd, check), 0u);
                EXPECT_EQ(rnd, sample_rnd());
            }
            // Unchecked, a wrong password gives result 0 and wrong octets.
            EXPECT_EQ(get_key(c, &out, wrong_password(), false), 0u);
            EXPECT_EQ(get_rnd(c, rnd.data(), wrong_password(), false), 0u);
            EXPECT_NE(to_hex(out.b, 32), key_hex());
            EXPECT_NE(rnd, sample_rnd());
        }
}

// What the 2001 readers check: the first tag, that the first child is an
// INTEGER (of any value) and that the outer length covers their offsets.
// Neither the versions nor the AuthenticatedData are looked at; the content
// getter, which walks the DER, wants both versions 0. Of the 32 salt octets
// only the first 4 enter the KEK.
TEST_F(Container2001, WhatTheReadersCheck) {
    Bytes c = make_2001(0x80), rnd(40);
    type_uN<32> out;
    // The octet at `at` set to v (0: all bits flipped); expected results.
    const struct { const char* what; size_t at; unsigned char v; unsigned key, rnd, upd; bool content; } cases[] = {
        {"first tag", 0, 0x31, 30, 30, 30, false},
        {"no leading INTEGER", 4, 0x04, 30, 30, 30, false},
        {"outer length 0x1F0", 3, 0xF0, 30, 0, 30, false},  // covers the random object (to 454), not the key (674)
        {"AuthenticatedData version 1", 6, 0x01, 0, 0, 0, false},
        {"token version 1", 148, 0x01, 0, 0, 0, false},
        {"messageDigest value", 720, 0, 0, 0, 0, true},
        {"AuthenticatedData MAC", 760, 0, 0, 0, 0, true},
        {"wrapped MAC key", 60, 0, 0, 0, 0, true},
        {"salt octet 0", 178, 0, 32, 32, 32, true},
        {"salt octet 4", 182, 0, 0, 0, 0, true},
        {"salt octet 31", 209, 0, 0, 0, 0, true},
    };
    for (const auto& k : cases) {
        Bytes d = c;
        d.resize(d.size() + 0x100, 0);
        d[k.at] = k.v ? k.v : d[k.at] ^ 0xFF;
        if (k.at == 3) d[2] = 0x01;
        EXPECT_EQ(pkcs15_get_pkcs15content(d.data()) != nullptr, k.content) << k.what;
        std::memset(out.b, 0, 32);
        EXPECT_EQ(get_key(d, &out), k.key) << k.what;
        if (k.key == 0) { EXPECT_EQ(to_hex(out.b, 32), key_hex()) << k.what; }
        EXPECT_EQ(get_key(d, &out, password(), false), k.key == 32 ? 0u : k.key) << k.what;
        EXPECT_EQ(get_rnd(d, rnd.data()), k.rnd) << k.what;
        EXPECT_EQ(update(d), k.upd) << k.what;
    }
    EXPECT_EQ(pkcs15_get_pkcs15content(nullptr), nullptr);
    EXPECT_EQ(pkcs15_get_version(Bytes{0x04, 0x00}.data()), 0u);
}

TEST_F(Container2001, UpdateRenewsAndKeepsKey) {
    for (unsigned short usage : {0x80, 0x40}) {
        Bytes c = make_2001(usage);
        unsigned s = c.size() == 787 ? 1 : 0;
        for (int round = 0; round < 2; ++round) {
            Bytes prev = c;
            // The blocks the update will draw, to find them in the container.
            std::vector<std::string> d = draws(41 + round, 8);
            std::set<std::string> drawn(d.begin(), d.end());
            ASSERT_EQ(update(c), 0u);
            ASSERT_EQ(c.size(), prev.size());
            // Fresh MAC key, CEKs, IVs and UKMs; salt and structure unchanged.
            for (unsigned at : {46u, 60u, 314u, 328u, 393u, 542 + s, 556 + s, 621 + s})
                EXPECT_NE(to_hex(&prev[at], 8), to_hex(&c[at], 8)) << at;
            EXPECT_EQ(to_hex(&prev[0], 46), to_hex(&c[0], 46));
            EXPECT_EQ(to_hex(&prev[146], 81), to_hex(&c[146], 81));
            type_uN<32> out;
            EXPECT_EQ(get_key(c, &out), 0u);
            EXPECT_EQ(to_hex(out.b, 32), key_hex());
            // The random value: first 32 octets a drawn block whose first
            // 32-bit word (little-endian) is counted up by one, last 8 kept.
            Bytes rnd(40);
            EXPECT_EQ(get_rnd(c, rnd.data()), 0u);
            EXPECT_EQ(drawn.count(to_hex(rnd.data(), 32)), 0u);
            for (int i = 0; i < 4 && rnd[i]-- == 0; ++i) continue;  // undo the +1, borrowing
            EXPECT_EQ(drawn.count(to_hex(rnd.data(), 32)), 1u) << to_hex(rnd);
            EXPECT_EQ(to_hex(&rnd[32], 8), to_hex(&sample_rnd()[32], 8));
            // Both CEKs and the MAC key are drawn blocks.
            type_uN<32> kek = kek_of(false, password(), &c[178]), k;
            for (const Recipient& r :
                 {Recipient(object_parts(c, 0)), Recipient(object_parts(c, 1)), Recipient(ad_parts(c))}) {
                ASSERT_TRUE(unwrap(&c[r.ukm], &c[r.wrapped], &c[r.wrap_mac], kek, 2, k));
                EXPECT_EQ(drawn.count(to_hex(k.b, 32)), 1u) << r.wrapped;
            }
            // Digest and HMAC recomputed. The update digests 532 + s octets
            // from 142 + s: the token (at 142 in both sizes) for 786 octets,
            // a range shifted by one octet for 787.
            AdCheck r = check_ad(c, kek, false);
            EXPECT_TRUE(r.key_mac && r.hmac_tag == 0x82);
            EXPECT_EQ(r.digest, s == 0);
            Bytes range(c.begin() + 142 + s, c.begin() + 142 + s + 532 + s);
            EXPECT_EQ(to_hex(hash(false, range)), to_hex(&c[720 + s], 32));
        }
    }
}

// The getters on hand-made elements: what they accept, zero when not found.
TEST_F(Container2001, GettersOnHandMadeElements) {
    // [0] { SEQ { key id, [0] { SEQ { PBKDF2 OID, SEQ { salt, count, 32 } } } } }
    auto kmi = [](const Bytes& salt, const char* count) {
        Bytes params = seq({salt, from_hex(count), from_hex("020120")});
        Bytes alg = seq({from_hex("06092A864886F70D01050C"), params});
        return tlv(0xA0, seq({from_hex("040400000001"), tlv(0xA0, alg)}));
    };
    Bytes salt = tlv(0x04, Bytes(32, 0x5A));
    const struct { const char* what; Bytes element; bool salt; unsigned iterations; } kek[] = {
        {"one-octet count", kmi(salt, "020164"), true, 100},
        {"two-octet count", kmi(salt, "0202FFFF"), true, 65535},
        {"three-octet count", kmi(salt, "0203010000"), true, 0},
        {"count not an INTEGER", kmi(salt, "040164"), true, 0},
        {"salt not an OCTET STRING", kmi(tlv(0x03, Bytes(32, 0)), "020164"), false, 0},
        {"not [0]", from_hex("3003020101"), false, 0},
    };
    for (const auto& k : kek) {
        Bytes e = k.element;
        pkcs15_KEK_t r = pkcs15_get_pkcs15_KEK(e.data());
        EXPECT_EQ(r.salt != nullptr, k.salt) << k.what;
        if (r.salt) { EXPECT_EQ(to_hex(r.salt, 34), to_hex(salt)) << k.what; }
        EXPECT_EQ(r.iterations, k.iterations) << k.what;
    }
    // Encrypted content info { id-data, alg { OID, { IV, set } }, content }:
    // the content only when tagged 0x80.
    Bytes alg = tlv(0x30, from_hex("06062A8503020215 3013 0408 0102030405060708 06072A850302021F01"));
    for (unsigned char tag : {0x80, 0xA0, 0x04}) {
        Bytes info = seq({from_hex("06092A864886F70D010701"), alg, tlv(tag, Bytes(10, 1))});
        pkcs15_data_t d = pkcs15_get_pkcs15_data(info.data());
        ASSERT_NE(d.iv, nullptr);
        EXPECT_EQ(to_hex(d.iv, 10), "04080102030405060708");
        EXPECT_EQ(d.content, tag == 0x80 ? info.data() + info.size() - 12 : nullptr) << int(tag);
    }
    Bytes junk = from_hex("3003 020101");
    EXPECT_EQ(pkcs15_get_pkcs15content(junk.data()), nullptr);
    pkcs15_CEK_t k = pkcs15_get_pkcs15_CEK(junk.data());
    pkcs15_data_t d = pkcs15_get_pkcs15_data(junk.data());
    EXPECT_EQ((std::vector<void*>{k.ptr[0], k.ptr[1], k.ptr[2], k.ptr[3], d.iv, d.content}), std::vector<void*>(6));
}

}  // namespace
}  // namespace kt
