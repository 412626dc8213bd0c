// The 2012 PKCS#15 container: 256- and 512-bit keys, DER-walking readers,
// the stored iteration count, update with its integrity and password checks.
#include <gtest/gtest.h>

#include "pkcs15/pkcs15_fixture.h"

namespace kt {
namespace {

unsigned get_key(Bytes& c, TSecretKey* out, Bytes p = password()) {
    return pkcs15_get_key_2012(c.data(), out, p.data(), (unsigned char)p.size());
}
unsigned get_rnd(Bytes& c, unsigned char* out, Bytes p = password()) {
    return pkcs15_get_rnd_2012(c.data(), out, p.data(), (unsigned char)p.size());
}
unsigned update(Bytes& c, Bytes p = password()) {
    return pkcs15_update_2012(c.data(), p.data(), (unsigned char)p.size());
}
std::string key_hex(TSecretKey& k) { return to_hex(k.b, 64); }
// The key as read back: a 256-bit key is followed by 32 zero octets.
std::string expected_key(unsigned char kind) {
    TSecretKey k = sample_key_2012();
    if (kind == 1) std::memset(k.b + 32, 0, 32);
    return key_hex(k);
}
AdCheck check(const Bytes& c) { return check_ad(c, kek_of(true, password(), &c[salt_at(c)]), true); }

class Container2012 : public ::testing::TestWithParam<unsigned char> {
   protected:
    void SetUp() override { seed(13); }
};

// Round trips; a wrong password is not detected by the readers (result 0,
// wrong octets), only by the update (32, container left as it was).
TEST_P(Container2012, SizesRoundTripAndWrongPassword) {
    unsigned char kind = GetParam();
    // Key usage 0x80 keeps one flag octet, 0x40 and 0 (= 255) take two.
    for (unsigned short usage : {0x80, 0x40, 0x00}) {
        Bytes c = make_2012(kind, usage), before = c, rnd(40);
        ASSERT_FALSE(c.empty());
        EXPECT_EQ(c.size(), (kind == 1 ? 866u : 898u) + (usage == 0x80 ? 0 : 1)) << int(usage);
        TSecretKey out;
        std::memset(out.b, 0xCC, 64);
        EXPECT_EQ(get_key(c, &out), 0u);
        EXPECT_EQ(key_hex(out), expected_key(kind));
        EXPECT_EQ(get_rnd(c, rnd.data()), 0u);
        EXPECT_EQ(rnd, sample_rnd());
        EXPECT_EQ(get_key(c, &out, wrong_password()), 0u);
        EXPECT_NE(key_hex(out), expected_key(kind));
        if (kind == 1) { EXPECT_EQ(to_hex(out.b + 32, 32), std::string(64, '0')); }
        EXPECT_EQ(get_rnd(c, rnd.data(), wrong_password()), 0u);
        EXPECT_NE(rnd, sample_rnd());
        EXPECT_EQ(update(c, wrong_password()), 32u);
        EXPECT_EQ(c, before);
    }
}

// Removes the token's password info element [0] and shortens the five
// enclosing lengths (all in the 0x82 form, all in front of the cut) to match.
Bytes without_password_info(const Bytes& c) {
    Der kmi = der(c, token_at(c));
    Bytes d(c.begin(), c.begin() + kmi.at);
    d.insert(d.end(), c.begin() + kmi.end(), c.end());
    // outer SEQUENCE, content SEQUENCE, [0], OCTET STRING, token SEQUENCE
    Der content = children(c, der(c, 0)).at(4), a0 = children(c, content).at(1);
    for (size_t h : {size_t(0), content.at, a0.at, a0.value(), der(c, a0.value()).value()}) {
        EXPECT_EQ(d[h + 1], 0x82);
        unsigned len = (d[h + 2] << 8 | d[h + 3]) - (unsigned)(kmi.end() - kmi.at);
        d[h + 2] = (unsigned char)(len >> 8), d[h + 3] = (unsigned char)len;
    }
    return d;
}

// The KEK comes from the stored password info: its salt (32 octets) and its
// iteration count, honoured as stored; without the info the KEK is zero.
TEST_P(Container2012, KekFromPasswordInfo) {
    Bytes good = make_2012(GetParam());
    size_t salt = salt_at(good), count = salt + 32;
    ASSERT_EQ(to_hex(&good[count], 4), "020207d0");
    // Octets written at `at`; kek -1: result 30, 0: zero KEK, n: n iterations.
    const struct { const char* what; size_t at; const char* octets; int kek; } cases[] = {
        {"count 1000", count + 2, "03E8", 1000},
        {"count 0", count + 2, "0000", -1},
        {"salt of 31 octets", salt - 1, "1F", -1},
        {"no password info", 0, "", 0},
    };
    for (const auto& k : cases) {
        Bytes c = k.kek == 0 ? without_password_info(good) : good, o = from_hex(k.octets), rnd(40);
        std::copy(o.begin(), o.end(), c.begin() + k.at);
        TSecretKey out;
        std::memset(out.b, 0xCC, 64);
        unsigned rc = get_key(c, &out);
        if (k.kek < 0) {
            EXPECT_EQ(rc, 30u) << k.what;
            EXPECT_EQ(key_hex(out), std::string(128, '0')) << k.what << ": the key record is cleared first";
            continue;
        }
        EXPECT_EQ(rc, 0u) << k.what;
        EXPECT_EQ(pkcs15_get_version(c.data()), 2u) << k.what;  // the [0] is skipped when present
        type_uN<32> kek = k.kek == 0 ? type_uN<32>{} : kek_of(true, password(), &c[salt], (unsigned short)k.kek);
        Bytes want = open_by_hand(c, 1, kek, 7);
        EXPECT_EQ(to_hex(out.b, want.size()), to_hex(want)) << k.what;
        EXPECT_NE(key_hex(out), expected_key(GetParam())) << k.what;
        EXPECT_EQ(get_rnd(c, rnd.data()), 0u) << k.what;
        EXPECT_EQ(to_hex(rnd), to_hex(open_by_hand(c, 0, kek, 7))) << k.what;
    }
}

TEST_P(Container2012, UpdateRenewsRandomObjectAndMacKey) {
    Bytes c = make_2012(GetParam(), 0x40), before = c;
    size_t info = token_at(c);
    // The key object, A0 { A0 { BB ... } }, is the token's last element.
    auto key_object = [info](const Bytes& b) {
        Der k = children(b, der(b, info + 80)).at(1);
        return Bytes(b.begin() + k.at, b.begin() + k.end());
    };
    for (int round = 0; round < 2; ++round) {
        Bytes prev = c, rnd(40);
        ASSERT_EQ(update(c), 0u);
        EXPECT_NE(c, prev);
        TSecretKey out;
        EXPECT_EQ(get_key(c, &out), 0u);
        EXPECT_EQ(key_hex(out), expected_key(GetParam()));
        EXPECT_EQ(get_rnd(c, rnd.data()), 0u);
        EXPECT_NE(to_hex(&rnd[0], 32), to_hex(&sample_rnd()[0], 32));
        EXPECT_NE(to_hex(&rnd[32], 8), to_hex(&sample_rnd()[32], 8));
        EXPECT_TRUE(check(c).ok());
        // The key object and the password info stay as they were.
        EXPECT_EQ(key_object(c), key_object(before));
        EXPECT_EQ(to_hex(&c[info], 80), to_hex(&before[info], 80));
    }
}

// One octet changed: what the update answers, and what the key reader gives
// (it checks neither the password nor the AuthenticatedData).
TEST_P(Container2012, UpdateDetectsAlteredContent) {
    Bytes good = make_2012(GetParam());
    AdParts p = ad_parts(good);
    enum Read { kRight, kWrong, kMalformed };
    const struct { const char* what; size_t at; unsigned want; Read read; } cases[] = {
        {"attributes tag of the random object", p.content_os.value() + 100, 31, kRight},
        {"last octet of the encrypted key", p.content_os.end() - 1, 31, kWrong},
        {"messageDigest value", p.digest + 5, 31, kRight},
        {"stored MAC", p.mac.value() + 3, 31, kRight},
        {"contentType attribute", p.attrs.value() + 20, 31, kRight},
        {"wrapped MAC key", p.wrapped, 32, kRight},
        {"MAC of the wrapped MAC key", p.wrap_mac, 32, kRight},
        {"UKM of the MAC key wrap", p.ukm, 32, kRight},
        {"outer tag", 0, 30, kMalformed},
        {"recipient SET tag", p.recipients.at, 30, kRight},
    };
    for (const auto& k : cases) {
        Bytes c = good;
        c[k.at] ^= 0x01;
        Bytes before = c;
        EXPECT_EQ(update(c), k.want) << k.what;
        EXPECT_EQ(c, before) << k.what;
        TSecretKey out;
        EXPECT_EQ(get_key(c, &out), k.read == kMalformed ? 30u : 0u) << k.what;
        if (k.read != kMalformed) { EXPECT_EQ(key_hex(out) == expected_key(GetParam()), k.read == kRight) << k.what; }
    }
}

INSTANTIATE_TEST_SUITE_P(KeyKinds, Container2012, ::testing::Values(1, 2),
                         [](const ::testing::TestParamInfo<unsigned char>& i) {
                             return std::string(i.param == 1 ? "key256" : "key512");
                         });

TEST(Container2012Kinds, OtherKeyKindsGiveZero) {
    seed(17);
    TSecretKey key = sample_key_2012();
    Bytes rnd = sample_rnd(), pwd = password(), out(1000, 0xEE);
    for (unsigned char kind : {0, 3, 4, 255}) {
        EXPECT_EQ(pkcs15_create_conteiner_2012(nullptr, &key, rnd.data(), 0, pwd.data(), 11, kind), 0u);
        EXPECT_EQ(pkcs15_create_conteiner_2012(out.data(), &key, rnd.data(), 0, pwd.data(), 11, kind), 0u);
    }
    EXPECT_EQ(out, Bytes(1000, 0xEE));
}

TEST(Container2012Kinds, GenerationsDoNotMix) {
    seed(19);
    Bytes c01 = make_2001(0x80), c12 = make_2012(1), pwd = password(), rnd(40);
    TSecretKey out;
    // The 2012 readers look for a 0xBB key object.
    EXPECT_EQ(get_key(c01, &out), 30u);
    EXPECT_EQ(update(c01), 30u);
    // The random object is found by its structure in both, and a 2001 one
    // opened with the 2012 algorithms gives other octets.
    EXPECT_EQ(get_rnd(c01, rnd.data()), 0u);
    EXPECT_NE(rnd, sample_rnd());
    // The 2001 reader takes its fixed offsets in a 2012 container: no match.
    type_uN<32> k;
    EXPECT_EQ(pkcs15_get_key(c12.data(), &k, pwd.data(), 11), 32u);
    EXPECT_EQ(pkcs15_get_version(c01.data()), 1u);
    EXPECT_EQ(pkcs15_get_version(c12.data()), 2u);
}

}  // namespace
}  // namespace kt
