// Re-masking CryptoPro containers: after an update the same password and
// certificate give the same key, while mask, salt, MAC and ciphertext change.
#include <gtest/gtest.h>

#include <array>

#include "GOST_28147_89.h"
#include "GOST_34_10_2001.h"
#include "common/generator.h"
#include "cryptopro_fixture.h"

namespace {

using namespace cpt;

// a * b mod q, little-endian 32-octet numbers, computed here: double and add
// over the bits of b in 64-bit limbs with a carry limb (a < 2q).
Bytes mul_mod(const unsigned char* a, const unsigned char* b, const Bytes& q) {
    using N = std::array<uint64_t, 5>;
    auto load = [](const unsigned char* p) {
        N n{};
        for (int i = 0; i < 32; ++i) n[i / 8] |= uint64_t(p[i]) << (8 * (i % 8));
        return n;
    };
    N m = load(q.data()), x = load(a), r{};
    auto reduce = [&](N& v) {  // v < 2q
        N t;
        uint64_t borrow = 0;
        for (int i = 0; i < 5; ++i) {
            unsigned __int128 d = (unsigned __int128)v[i] - m[i] - borrow;
            t[i] = uint64_t(d), borrow = uint64_t(d >> 64) & 1;
        }
        if (!borrow) v = t;
    };
    auto add = [&](N& v, const N& w) {
        uint64_t carry = 0;
        for (int i = 0; i < 5; ++i) {
            unsigned __int128 s = (unsigned __int128)v[i] + w[i] + carry;
            v[i] = uint64_t(s), carry = uint64_t(s >> 64);
        }
        reduce(v);
    };
    reduce(x);
    for (int bit = 255; bit >= 0; --bit) {
        add(r, r);
        if (b[bit / 8] >> (bit % 8) & 1) add(r, x);
    }
    Bytes out(32);
    for (int i = 0; i < 32; ++i) out[i] = uint8_t(r[i / 8] >> (8 * (i % 8)));
    return out;
}

// The key read back, in hex, or the reader's code.
std::string read(Container& c, const char* cert) {
    Bytes crt = certificate(cert), mb(40), key(32);
    unsigned char r = CryptoPro_conteiner_get(c.primary.data(), c.masks.data(), crt.data(), mb.data(), k32(&key),
                                              c.password.data(), len(c.password));
    return r ? "code " + std::to_string(r) : kt::to_hex(key);
}

TEST(CryptoProUpdate, UnseededGeneratorGives9WithKeysDeciphered) {
    unseed();
    type_uN<32> probe;
    ASSERT_EQ(1, PRNG_get(&probe));
    Container c = container("two_keys_match_first"), ref = c;
    EXPECT_EQ(9, update(c));
    // The keys now lie deciphered in the primary file, the masks untouched:
    // enciphering them again under the key the data script derived gives the
    // original file back.
    EXPECT_EQ(ref.masks, c.masks);
    EXPECT_NE(ref.primary, c.primary);
    GOST_28147_89_Z_ECB(c.primary.data() + 4, 32, k32(&c.kek), 2);
    GOST_28147_89_Z_ECB(c.primary.data() + 38, 32, k32(&c.kek), 2);
    EXPECT_EQ(ref.primary, c.primary);
}

// The factor is the first draw itself (reduced modulo q), not its inverse;
// the new salt is the second draw.
TEST(CryptoProUpdate, FactorIsTheFirstDrawSaltTheSecond) {
    seed(9);
    Container c = container("one_key");
    Bytes old_mask(c.masks.begin() + 4, c.masks.begin() + 36);
    ASSERT_EQ(0, update(c));
    type_uN<32> after, r[3];
    ASSERT_EQ(0, PRNG_get(&after));
    seed(9);
    for (auto& d : r) ASSERT_EQ(0, PRNG_get(&d));
    EXPECT_EQ(kt::to_hex(r[2].b, 32), kt::to_hex(after.b, 32));
    // Salt: the second draw with 1 added to its first 32-bit word, no carry on.
    for (int i = 0; i < 4 && ++r[1].b[i] == 0; ++i) {}
    EXPECT_EQ(kt::to_hex(r[1].b, 12), kt::to_hex(c.masks.data() + 38, 12));
    // New mask = old mask * r1 mod q, q the CryptoPro-A order.
    Bytes q = kt::from_hex("93b861b7091b844500d15a997010616cffffffffffffffffffffffffffffffff");
    EXPECT_EQ(kt::to_hex(mul_mod(old_mask.data(), r[0].b, q)), kt::to_hex(c.masks.data() + 4, 32));
}

TEST(CryptoProUpdate, KeepsKeyAndPasswordChangesEverythingRandom) {
    seed(1);
    for (const char* name : {"one_key", "two_keys_match_first", "two_keys_match_second", "empty_password",
                             "twelve_chars"}) {
        SCOPED_TRACE(name);
        Container c = container(name), before = c;
        ASSERT_EQ(0, update(c));
        EXPECT_EQ(before.primary.size(), c.primary.size());
        EXPECT_TRUE(same(c.primary, before.primary, 0, 4));
        // Ciphertext, mask, salt and MAC change; tags and lengths are kept.
        EXPECT_FALSE(same(c.primary, before.primary, 4, 36));
        for (auto r : {std::pair<size_t, size_t>{4, 36}, {38, 50}, {52, c.masks.size()}})
            EXPECT_FALSE(same(c.masks, before.masks, r.first, r.second)) << r.first;
        for (unsigned off : {0u, 1u, 2u, 3u, 36u, 37u, 50u, 51u}) EXPECT_EQ(before.masks[off], c.masks[off]);
        EXPECT_EQ(kt::to_hex(before.key), read(c, "cert_d1_A"));
        if (c.primary.size() == 70) { EXPECT_EQ(kt::to_hex(before.other), read(c, "cert_d2_A")); }
        // Twice more, still the same key.
        for (int i = 0; i < 2; ++i) ASSERT_EQ(0, update(c));
        EXPECT_EQ(kt::to_hex(before.key), read(c, "cert_d1_A"));
    }
}

TEST(CryptoProUpdate, WrongPasswordSpoilsSilentlyStructureCodesChangeNothing) {
    seed(3);
    Container c = container("one_key");
    Bytes right = c.password;
    c.password = {'x'};
    EXPECT_EQ(0, update(c));
    c.password = right;
    EXPECT_EQ("code 8", read(c, "cert_d1_A"));
    // A password over 12 octets is refused before it is read, leaving both
    // files as they are (structure codes: CryptoProGet.StructureCodes...).
    Container d = container("two_keys_match_first"), before = d;
    EXPECT_EQ(CRYPTOPRO_ERR_PASSWORD_TOO_LONG,
              CryptoPro_conteiner_update(d.primary.data(), d.masks.data(), d.password.data(), 255));
    EXPECT_EQ(before.primary, d.primary);
    EXPECT_EQ(before.masks, d.masks);
}

// The mask arithmetic (constant-time inside the library) gives what the
// exported reference arithmetic gives, on masks a hostile file may hold:
// 0, q, q + 1, 2^256 - 1 and an ordinary one. Unmasking is read through the
// mismatch code 8, which leaves the candidate key in the caller's buffer;
// re-masking through the new mask written in clear.
TEST(CryptoProUpdate, MaskArithmeticMatchesTheReferenceOnHostileMasks) {
    Bytes q = kt::from_hex("93b861b7091b844500d15a997010616cffffffffffffffffffffffffffffffff");
    Bytes q1 = q, ones(32, 0xFF), zero(32, 0);
    q1[0] += 1;
    for (const Bytes& mask : {zero, q, q1, ones, container("one_key").key}) {
        SCOPED_TRACE(kt::to_hex(mask));
        Container c = container("one_key");
        std::copy(mask.begin(), mask.end(), c.masks.begin() + 4);
        Bytes m = mask;
        type_u64 mac = GOST_28147_89_MAC(c.masks.data() + 38, 12, k32(&m), nullptr, 2);
        for (int i = 0; i < 4; ++i) c.masks[52 + i] = static_cast<unsigned char>(mac >> (8 * i));
        // Unmasking: mask^-1 * D(key) mod q by div_mod and mul_mod.
        Bytes plain(c.primary.begin() + 4, c.primary.begin() + 36), inv = mask, want(32), crt = certificate("cert_d2_A"),
              got(32), mb(40);
        GOST_28147_89_R_ECB(plain.data(), 32, k32(&c.kek), 2);
        GOST_34_10_2001_div_mod_p_256_bit(k32(&inv), nullptr, k32(&q));
        GOST_34_10_2001_mul_mod_p_256_bit(k32(&want), k32(&inv), k32(&plain), k32(&q));
        EXPECT_EQ(8, CryptoPro_conteiner_get(c.primary.data(), c.masks.data(), crt.data(), mb.data(), k32(&got),
                                             c.password.data(), len(c.password)));
        EXPECT_EQ(kt::to_hex(want), kt::to_hex(got));
        // Re-masking: new mask = mul_mod(mask, f), f = the draw inverted twice.
        seed(5);
        ASSERT_EQ(0, update(c));
        seed(5);
        type_uN<32> f, nm;
        ASSERT_EQ(0, PRNG_get(&f));
        GOST_34_10_2001_div_mod_p_256_bit(&f, nullptr, k32(&q));
        GOST_34_10_2001_div_mod_p_256_bit(&f, nullptr, k32(&q));
        GOST_34_10_2001_mul_mod_p_256_bit(&nm, k32(&m), &f, k32(&q));
        EXPECT_EQ(kt::to_hex(nm.b, 32), kt::to_hex(c.masks.data() + 4, 32));
    }
}

}  // namespace
