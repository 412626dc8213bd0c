// The 2001 PKCS#15 container: fixed layout, usage flags, readers, update.
#include <gtest/gtest.h>

#include <algorithm>

#include "pkcs15/pkcs15_fixture.h"

namespace kt {
namespace {

class Container2001 : public ::testing::Test {
   protected:
    void SetUp() override { seed(11); }
    static unsigned get_key(Bytes& c, type_uN<32>* out, const Bytes& pwd, bool check = true) {
        Bytes p = pwd;
        return check ? pkcs15_get_key(c.data(), out, p.data(), (unsigned char)p.size())
                     : pkcs15_get_key_no_pass_chek(c.data(), out, p.data(), (unsigned char)p.size());
    }
    static unsigned get_rnd(Bytes& c, unsigned char* out, const Bytes& pwd, bool check = true) {
        Bytes p = pwd;
        return check ? pkcs15_get_rnd(c.data(), out, p.data(), (unsigned char)p.size())
                     : pkcs15_get_rnd_no_pass_chek(c.data(), out, p.data(), (unsigned char)p.size());
    }
    static unsigned update(Bytes& c, const Bytes& pwd) {
        Bytes p = pwd;
        return pkcs15_update(c.data(), p.data(), (unsigned char)p.size());
    }
};

// Usage argument -> size and the key attributes' last element (the KeyUsageFlags BIT STRING).
struct UsageCase {
    unsigned short usage;
    unsigned size;
    const char* flags;
};
const UsageCase kUsage[] = {
    {0x00, 787, "0303 06 74C0"},  // 0 is taken as 255: everything
    {0xFF, 787, "0303 06 74C0"},
    {0x40, 787, "0303 06 0040"},  // nonRepudiation
    {0x08, 787, "0303 07 0080"},  // keyAgreement -> derive
    {0x88, 787, "0303 07 3080"},
    {0x48, 787, "0303 06 00C0"},
    {0x60, 787, "0303 06 0440"},
    {0x80, 786, "0302 04 30"},    // digitalSignature -> sign, signRecover
    {0x04, 786, "0302 04 30"},    // keyCertSign
    {0x02, 786, "0302 04 30"},    // cRLSign
    {0x10, 786, "0302 06 40"},    // dataEncipherment -> decrypt
    {0x20, 786, "0302 02 04"},    // keyEncipherment -> unwrap
    {0x30, 786, "0302 02 44"},    // unused bits of the last flag that applies
    {0x90, 786, "0302 04 70"},
    {0xB0, 786, "0302 02 74"},
    {0x01, 786, "0302 06 00"},    // encipherOnly: no flag
    {0x100, 786, "0302 06 00"},
};

TEST_F(Container2001, SizesAndUsageFlags) {
    Bytes plain = make_2001(0, false);
    ASSERT_EQ(plain.size(), 786u);
    EXPECT_EQ(to_hex(Bytes(plain.begin() + 463, plain.begin() + 494)),
              "30110c0b50726976617465204b6579030207803"
              "00a0404000000020302" "0600");
    for (const UsageCase& u : kUsage) {
        Bytes c = make_2001(u.usage);  // empty unless the size query gave the size written
        ASSERT_EQ(c.size(), u.size) << u.usage;
        Bytes flags = from_hex(u.flags);
        // Label, flags, then 30 L { key identifier 2, usage flags }.
        EXPECT_EQ(to_hex(Bytes(c.begin() + 463, c.begin() + 482)), "30110c0b507269766174652" "04b657903020780");
        EXPECT_EQ(to_hex(Bytes(c.begin() + 482 + 8, c.begin() + 490 + flags.size())), to_hex(flags)) << u.usage;
    }
}

// The fixed offsets of the readers agree with a walk of the structure.
TEST_F(Container2001, FixedOffsets) {
    for (unsigned short usage : {0x80, 0x40}) {
        Bytes c = make_2001(usage);
        unsigned s = c.size() == 787 ? 1 : 0;
        unsigned char* p = c.data();
        ASSERT_EQ(pkcs15_get_pkcs15content(p), p + 149);
        pkcs15_KEK_t kek = pkcs15_get_pkcs15_KEK(p + 149);
        EXPECT_EQ(kek.salt, p + 176);
        EXPECT_EQ(kek.iterations, 2000u);
        struct Object {
            unsigned a2, ukm, cek, mac, iv, enc, enc_len;
        };
        const Object objs[] = {{269, 314, 328, 362, 393, 412, 42},
                               {497 + s, 542 + s, 556 + s, 590 + s, 621 + s, 640 + s, 34}};
        for (const Object& o : objs) {
            Der a2 = der(c, o.a2);
            ASSERT_EQ(a2.tag, 0xA2);
            pkcs15_CEK_t k = pkcs15_get_pkcs15_CEK(p + a2.value() + 3);
            EXPECT_EQ(k.ptr[PKCS15_CEK_UKM], p + o.ukm - 2);
            EXPECT_EQ(k.ptr[PKCS15_CEK_ENC], p + o.cek - 2);
            EXPECT_EQ(k.ptr[PKCS15_CEK_MAC], p + o.mac - 2);
            pkcs15_data_t d = pkcs15_get_pkcs15_data(p + a2.value() + 94);
            EXPECT_EQ(d.iv, p + o.iv - 2);
            EXPECT_EQ(d.content, p + o.enc - 2);
            EXPECT_EQ(der(c, o.enc - 2).len, o.enc_len);
        }
        AdParts ad = ad_parts(c);
        EXPECT_EQ(ad.ukm, 46u);
        EXPECT_EQ(ad.wrapped, 60u);
        EXPECT_EQ(ad.wrap_mac, 94u);
        EXPECT_EQ(ad.content_os.value(), 142u);
        EXPECT_EQ(ad.content_os.len, 532u + s);
        EXPECT_EQ(ad.attrs.at, 674u + s);
        EXPECT_EQ(ad.digest, 720u + s);
        EXPECT_EQ(ad.mac.value(), 754u + s);
        EXPECT_EQ(ad.mac.end(), c.size());
        EXPECT_EQ(pkcs15_get_version(p), 1u);
        // As built, the digest covers the token in both sizes.
        AdCheck r = check_ad(c, kek_of(false, password(), &c[178]), false);
        EXPECT_TRUE(r.key_mac && r.digest && r.hmac_82);
    }
}

TEST_F(Container2001, RoundTrips) {
    std::vector<Bytes> passwords = {password(), Bytes(), Bytes(255, 0x5A), Bytes{0}};
    for (const Bytes& pwd : passwords)
        for (unsigned short usage : {0x80, 0x40}) {
            Bytes c = make_2001(usage, true, pwd);
            type_uN<32> key = sample_key(), out{};
            Bytes rnd(40);
            EXPECT_EQ(get_key(c, &out, pwd), 0u);
            EXPECT_EQ(to_hex(out.b, 32), to_hex(key.b, 32));
            EXPECT_EQ(get_key(c, nullptr, pwd), 0u);
            EXPECT_EQ(get_rnd(c, rnd.data(), pwd), 0u);
            EXPECT_EQ(rnd, sample_rnd());
            std::fill(rnd.begin(), rnd.end(), 0);
            EXPECT_EQ(get_rnd(c, rnd.data(), pwd, false), 0u);
            EXPECT_EQ(rnd, sample_rnd());
            EXPECT_EQ(get_key(c, &out, pwd, false), 0u);
            EXPECT_EQ(to_hex(out.b, 32), to_hex(key.b, 32));
        }
}

TEST_F(Container2001, OnlyFourSaltOctetsEnterTheKey) {
    Bytes c = make_2001(0x80);
    // Changing salt octets 4..31 changes nothing the reader derives.
    for (int i = 182; i < 210; ++i) c[i] ^= 0x5A;
    type_uN<32> out;
    EXPECT_EQ(get_key(c, &out, password()), 0u);
    EXPECT_EQ(to_hex(out.b, 32), to_hex(sample_key().b, 32));
    c[178] ^= 1;
    EXPECT_EQ(get_key(c, &out, password()), 32u);
}

TEST_F(Container2001, WrongPassword) {
    for (unsigned short usage : {0x80, 0x40}) {
        Bytes c = make_2001(usage), before = c;
        type_uN<32> out;
        std::memset(out.b, 0xCC, 32);
        Bytes rnd(40, 0xCC);
        EXPECT_EQ(get_key(c, &out, wrong_password()), 32u);
        EXPECT_EQ(to_hex(out.b, 32), std::string(64, 'c')) << "nothing written after 32";
        EXPECT_EQ(get_key(c, nullptr, wrong_password()), 32u);
        EXPECT_EQ(get_rnd(c, rnd.data(), wrong_password()), 32u);
        EXPECT_EQ(rnd, Bytes(40, 0xCC));
        // Without the check: result 0 and wrong octets.
        EXPECT_EQ(get_key(c, &out, wrong_password(), false), 0u);
        EXPECT_NE(to_hex(out.b, 32), to_hex(sample_key().b, 32));
        EXPECT_EQ(get_rnd(c, rnd.data(), wrong_password(), false), 0u);
        EXPECT_NE(rnd, sample_rnd());
        EXPECT_EQ(update(c, wrong_password()), 32u);
        EXPECT_EQ(c, before);
    }
}

// What the 2001 readers check: the first tag, that the first child is an
// INTEGER (of any value) and that the outer length covers their offsets.
// Neither the versions nor the AuthenticatedData are looked at; the content
// getter, which walks the DER, wants both versions 0.
TEST_F(Container2001, WhatTheReadersCheck) {
    Bytes c = make_2001(0x80);
    type_uN<32> out;
    Bytes rnd(40);
    struct Case {
        const char* what;
        size_t at;
        unsigned char v;  // new octet; 0 flips all bits
        unsigned key, rnd, upd;
        bool content;
    };
    const Case cases[] = {
        {"first tag", 0, 0x31, 30, 30, 30, false},
        {"no leading INTEGER", 4, 0x04, 30, 30, 30, false},
        {"outer length 0x1F0", 3, 0xF0, 30, 0, 30, false},  // covers the random object (to 454), not the key (674)
        {"AuthenticatedData version 1", 6, 0x01, 0, 0, 0, false},
        {"token version 1", 148, 0x01, 0, 0, 0, false},
        {"messageDigest value", 720, 0, 0, 0, 0, true},
        {"AuthenticatedData MAC", 760, 0, 0, 0, 0, true},
        {"wrapped MAC key", 60, 0, 0, 0, 0, true},
    };
    for (const Case& k : cases) {
        Bytes d = c;
        d.resize(d.size() + 0x100, 0);
        d[k.at] = k.v ? k.v : d[k.at] ^ 0xFF;
        if (k.at == 3) d[2] = 0x01;
        EXPECT_EQ(pkcs15_get_pkcs15content(d.data()) != nullptr, k.content) << k.what;
        std::memset(out.b, 0, 32);
        EXPECT_EQ(pkcs15_get_key(d.data(), &out, password().data(), 11), k.key) << k.what;
        if (k.key == 0) EXPECT_EQ(to_hex(out.b, 32), to_hex(sample_key().b, 32)) << k.what;
        EXPECT_EQ(pkcs15_get_key_no_pass_chek(d.data(), &out, password().data(), 11), k.key) << k.what;
        EXPECT_EQ(pkcs15_get_rnd(d.data(), rnd.data(), password().data(), 11), k.rnd) << k.what;
        EXPECT_EQ(pkcs15_update(d.data(), password().data(), 11), k.upd) << k.what;
    }
    EXPECT_EQ(pkcs15_get_pkcs15content(nullptr), nullptr);
    EXPECT_EQ(pkcs15_get_version(Bytes{0x04, 0x00}.data()), 0u);
}

TEST_F(Container2001, UpdateRenewsAndKeepsKey) {
    for (unsigned short usage : {0x80, 0x40}) {
        Bytes c = make_2001(usage), before = c;
        unsigned s = c.size() == 787 ? 1 : 0;
        for (int round = 0; round < 2; ++round) {
            Bytes prev = c;
            // The blocks the update will draw, to find them in the container.
            seed(41 + round);
            std::vector<std::string> drawn;
            for (int i = 0; i < 8; ++i) {
                type_uN<32> b;
                PRNG_get(&b);
                drawn.push_back(to_hex(b.b, 32));
            }
            auto was_drawn = [&](const unsigned char* p) {
                return std::find(drawn.begin(), drawn.end(), to_hex(p, 32)) != drawn.end();
            };
            seed(41 + round);
            ASSERT_EQ(update(c, password()), 0u);
            ASSERT_EQ(c.size(), before.size());
            // Fresh MAC key, CEKs, IVs and UKMs; salt and structure unchanged.
            for (unsigned at : {46u, 60u, 314u, 328u, 393u, 542 + s, 556 + s, 621 + s})
                EXPECT_NE(to_hex(&prev[at], 8), to_hex(&c[at], 8)) << at;
            EXPECT_EQ(to_hex(&prev[0], 46), to_hex(&c[0], 46));
            EXPECT_EQ(to_hex(&prev[146], 81), to_hex(&c[146], 81));
            type_uN<32> out;
            EXPECT_EQ(get_key(c, &out, password()), 0u);
            EXPECT_EQ(to_hex(out.b, 32), to_hex(sample_key().b, 32));
            // The random value: first 32 octets a drawn block whose first
            // 32-bit word (little-endian) is counted up by one, last 8 kept.
            Bytes rnd(40);
            EXPECT_EQ(get_rnd(c, rnd.data(), password()), 0u);
            EXPECT_FALSE(was_drawn(rnd.data()));
            uint32_t w = rnd[0] | rnd[1] << 8 | rnd[2] << 16 | (uint32_t)rnd[3] << 24;
            w -= 1;
            for (int i = 0; i < 4; ++i) rnd[i] = (unsigned char)(w >> 8 * i);
            EXPECT_TRUE(was_drawn(rnd.data())) << to_hex(rnd);
            EXPECT_EQ(to_hex(&rnd[32], 8), to_hex(&sample_rnd()[32], 8));
            // Both CEKs and the MAC key are drawn blocks.
            type_uN<32> kek = kek_of(false, password(), &c[178]), k;
            for (const Recipient& r : {Recipient(object_parts(c, 0)), Recipient(object_parts(c, 1)), Recipient(ad_parts(c))}) {
                ASSERT_TRUE(unwrap(&c[r.ukm], &c[r.wrapped], &c[r.wrap_mac], kek, 2, k));
                EXPECT_TRUE(was_drawn(k.b)) << r.wrapped;
            }
            // Digest and HMAC recomputed. The update digests 532 + s octets
            // from 142 + s: the token (at 142 in both sizes) for 786 octets,
            // a range shifted by one octet for 787.
            AdCheck r = check_ad(c, kek_of(false, password(), &c[178]), false);
            EXPECT_TRUE(r.key_mac && r.hmac_82);
            EXPECT_EQ(r.digest, s == 0);
            EXPECT_EQ(to_hex(digest(false, &c[142 + s], 532 + s)), to_hex(&c[720 + s], 32));
        }
    }
}

TEST_F(Container2001, UpdateWithUnseededGenerator) {
    Bytes c = make_2001(0x80), before = c;
    unseed();
    EXPECT_EQ(update(c, password()), 33u);
    EXPECT_EQ(c, before);
    // The generator is checked before the password.
    EXPECT_EQ(update(c, wrong_password()), 33u);
    type_uN<32> key = sample_key();
    Bytes rnd = sample_rnd(), pwd = password(), out(800);
    EXPECT_EQ(pkcs15_create_conteiner(out.data(), &key, rnd.data(), pwd.data(), 11), 0u);
    EXPECT_EQ(pkcs15_create_conteiner_new(out.data(), &key, rnd.data(), pwd.data(), 11, 0x40), 0u);
    // Size queries draw nothing.
    EXPECT_EQ(pkcs15_create_conteiner(nullptr, &key, rnd.data(), pwd.data(), 11), 786u);
    seed(11);
}

// One DER element (test-side writer).
Bytes tlv(unsigned char tag, const Bytes& v) {
    Bytes e{tag};
    if (v.size() >= 128) e.push_back(0x81);
    e.push_back((unsigned char)v.size());
    e.insert(e.end(), v.begin(), v.end());
    return e;
}
Bytes cat(std::initializer_list<Bytes> parts) {
    Bytes r;
    for (const Bytes& p : parts) r.insert(r.end(), p.begin(), p.end());
    return r;
}

// The getters on hand-made elements: what they accept, zero when not found.
TEST_F(Container2001, GettersOnHandMadeElements) {
    // [0] { SEQ { key id, [0] { SEQ { PBKDF2 OID, SEQ { salt, count, 32 } } } } }
    auto kmi = [](const Bytes& salt, const Bytes& count) {
        Bytes params = tlv(0x30, cat({salt, count, from_hex("020120")}));
        Bytes alg = tlv(0x30, cat({from_hex("06092A864886F70D01050C"), params}));
        return tlv(0xA0, tlv(0x30, cat({from_hex("040400000001"), tlv(0xA0, alg)})));
    };
    Bytes salt = tlv(0x04, Bytes(32, 0x5A));
    struct KekCase {
        const char* what;
        Bytes element;
        bool salt;
        unsigned iterations;
    };
    const KekCase kek[] = {
        {"one-octet count", kmi(salt, from_hex("020164")), true, 100},
        {"two-octet count", kmi(salt, from_hex("0202FFFF")), true, 65535},
        {"three-octet count", kmi(salt, from_hex("0203010000")), true, 0},
        {"count not an INTEGER", kmi(salt, from_hex("040164")), true, 0},
        {"salt not an OCTET STRING", kmi(tlv(0x03, Bytes(32, 0)), from_hex("020164")), false, 0},
        {"not [0]", from_hex("3003020101"), false, 0},
    };
    for (const KekCase& k : kek) {
        Bytes e = k.element;
        pkcs15_KEK_t r = pkcs15_get_pkcs15_KEK(e.data());
        EXPECT_EQ(r.salt != nullptr, k.salt) << k.what;
        if (r.salt) EXPECT_EQ(to_hex(r.salt, 34), to_hex(salt)) << k.what;
        EXPECT_EQ(r.iterations, k.iterations) << k.what;
    }
    // Encrypted content info { id-data, alg { OID, { IV, set } }, content }:
    // the content only when tagged 0x80.
    Bytes alg = tlv(0x30, cat({from_hex("06062A8503020215"), tlv(0x30, from_hex("0408 0102030405060708 06072A850302021F01"))}));
    for (unsigned char tag : {0x80, 0xA0, 0x04}) {
        Bytes info = tlv(0x30, cat({from_hex("06092A864886F70D010701"), alg, tlv(tag, Bytes(10, 1))}));
        pkcs15_data_t d = pkcs15_get_pkcs15_data(info.data());
        ASSERT_NE(d.iv, nullptr);
        EXPECT_EQ(to_hex(d.iv, 10), "04080102030405060708");
        EXPECT_EQ(d.content, tag == 0x80 ? info.data() + info.size() - 12 : nullptr) << int(tag);
    }
    Bytes junk = from_hex("3003 020101");
    EXPECT_EQ(pkcs15_get_pkcs15content(junk.data()), nullptr);
    pkcs15_CEK_t k = pkcs15_get_pkcs15_CEK(junk.data());
    for (auto* p : k.ptr) EXPECT_EQ(p, nullptr);
    pkcs15_data_t d = pkcs15_get_pkcs15_data(junk.data());
    EXPECT_EQ(d.iv, nullptr);
    EXPECT_EQ(d.content, nullptr);
}

}  // namespace
}  // namespace kt
