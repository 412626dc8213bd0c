// Re-masking CryptoPro containers: after an update the same password and
// certificate give the same key, while mask, salt, MAC and ciphertext change.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "CryptoPro.h"
#include "GOST_28147_89.h"
#include "GOST_34_10_2001.h"
#include "PRNG.h"
#include "cryptopro_fixture.h"

namespace {

using cpt::Bytes;
using cpt::Container;

void seed(unsigned char v) {
    Bytes s(40);
    for (size_t i = 0; i < s.size(); ++i) s[i] = static_cast<unsigned char>(v + 37 * i);
    ASSERT_EQ(0, PRNG_init(s.data()));
}

unsigned char read(Container& c, const char* cert, Bytes& key) {
    Bytes crt = cpt::certificate(cert), mb(40);
    key.assign(32, 0);
    return CryptoPro_conteiner_get(c.primary.data(), c.masks.data(), crt.data(), mb.data(),
                                   reinterpret_cast<type_uN<32>*>(key.data()), c.password.data(),
                                   static_cast<unsigned char>(c.password.size()));
}

unsigned char update(Container& c) {
    return CryptoPro_conteiner_update(c.primary.data(), c.masks.data(), c.password.data(),
                                      static_cast<unsigned char>(c.password.size()));
}

// Runs first in this file: a seed of zeros leaves the generator unseeded.
TEST(CryptoProUpdate, UnseededGeneratorGives9WithKeysDeciphered) {
    Bytes zero(40, 0);
    PRNG_init(zero.data());
    type_uN<32> probe;
    ASSERT_EQ(1, PRNG_get(&probe));
    Container c = cpt::container("two_keys_match_first");
    Bytes masks = c.masks;
    EXPECT_EQ(9, update(c));
    // The keys now lie deciphered in the primary file, the masks untouched.
    EXPECT_EQ(masks, c.masks);
    Container ref = cpt::container("two_keys_match_first");
    EXPECT_NE(ref.primary, c.primary);
    EXPECT_TRUE(std::equal(c.primary.begin(), c.primary.begin() + 4, ref.primary.begin()));
    // Enciphering them again under the key the data script derived gives
    // the original file back.
    auto rec = kt::load_records("cryptopro/cryptopro.txt");
    Bytes kek;
    for (auto& r : rec)
        if (r.at("name") == "two_keys_match_first") kek = kt::from_hex(r.at("kek"));
    ASSERT_EQ(32u, kek.size());
    auto* k = reinterpret_cast<type_uN<32>*>(kek.data());
    GOST_28147_89_Z_ECB(c.primary.data() + 4, 32, k, 2);
    GOST_28147_89_Z_ECB(c.primary.data() + 38, 32, k, 2);
    EXPECT_EQ(ref.primary, c.primary);
}

// The factor is the first draw itself (reduced modulo q), not its inverse;
// the new salt is the second draw.
TEST(CryptoProUpdate, FactorIsTheFirstDrawSaltTheSecond) {
    seed(9);
    Container c = cpt::container("one_key");
    Bytes old_mask(c.masks.begin() + 4, c.masks.begin() + 36);
    ASSERT_EQ(0, update(c));
    type_uN<32> after;
    ASSERT_EQ(0, PRNG_get(&after));
    seed(9);
    type_uN<32> r1, r2, r3;
    ASSERT_EQ(0, PRNG_get(&r1));
    ASSERT_EQ(0, PRNG_get(&r2));
    ASSERT_EQ(0, PRNG_get(&r3));
    EXPECT_EQ(kt::to_hex(r3.b, 32), kt::to_hex(after.b, 32));
    // Salt: the second draw with 1 added to its first 32-bit word, no carry on.
    uint32_t w = r2.b[0] | r2.b[1] << 8 | r2.b[2] << 16 | static_cast<uint32_t>(r2.b[3]) << 24;
    w += 1;
    unsigned char salt[12];
    std::copy(r2.b, r2.b + 12, salt);
    for (int i = 0; i < 4; ++i) salt[i] = static_cast<unsigned char>(w >> (8 * i));
    EXPECT_EQ(kt::to_hex(salt, 12), kt::to_hex(c.masks.data() + 38, 12));
    // New mask = old mask * r1 mod q, q the CryptoPro-A order.
    Bytes q = kt::from_hex("93b861b7091b844500d15a997010616cffffffffffffffffffffffffffffffff");
    type_uN<32> want;
    GOST_34_10_2001_mul_mod_p_256_bit(&want, reinterpret_cast<type_uN<32>*>(old_mask.data()), &r1,
                                      reinterpret_cast<type_uN<32>*>(q.data()));
    EXPECT_EQ(kt::to_hex(want.b, 32), kt::to_hex(c.masks.data() + 4, 32));
}

TEST(CryptoProUpdate, KeepsKeyAndPasswordChangesEverythingRandom) {
    seed(1);
    for (const char* name : {"one_key", "two_keys_match_first", "two_keys_match_second", "empty_password",
                             "twelve_chars"}) {
        SCOPED_TRACE(name);
        Container c = cpt::container(name), before = c;
        ASSERT_EQ(0, update(c));
        EXPECT_EQ(before.primary.size(), c.primary.size());
        EXPECT_TRUE(std::equal(c.primary.begin(), c.primary.begin() + 4, before.primary.begin()));
        EXPECT_FALSE(std::equal(c.primary.begin() + 4, c.primary.begin() + 36, before.primary.begin() + 4));
        EXPECT_FALSE(std::equal(c.masks.begin() + 4, c.masks.begin() + 36, before.masks.begin() + 4));
        EXPECT_FALSE(std::equal(c.masks.begin() + 38, c.masks.begin() + 50, before.masks.begin() + 38));
        EXPECT_FALSE(std::equal(c.masks.begin() + 52, c.masks.end(), before.masks.begin() + 52));
        // Tags and lengths are kept.
        for (unsigned off : {0u, 1u, 2u, 3u, 36u, 37u, 50u, 51u}) EXPECT_EQ(before.masks[off], c.masks[off]);
        Bytes key;
        EXPECT_EQ(0, read(c, "cert_d1_A", key));
        EXPECT_EQ(kt::to_hex(before.key), kt::to_hex(key));
        if (c.primary.size() == 70) {
            EXPECT_EQ(0, read(c, "cert_d2_A", key));
            EXPECT_EQ(kt::to_hex(before.other), kt::to_hex(key));
        }
        // Twice more, still the same key.
        ASSERT_EQ(0, update(c));
        ASSERT_EQ(0, update(c));
        EXPECT_EQ(0, read(c, "cert_d1_A", key));
        EXPECT_EQ(kt::to_hex(before.key), kt::to_hex(key));
    }
}

TEST(CryptoProUpdate, WrongPasswordSpoilsSilently) {
    seed(3);
    Container c = cpt::container("one_key");
    Bytes right = c.password;
    c.password = {'x'};
    EXPECT_EQ(0, update(c));
    c.password = right;
    Bytes key;
    EXPECT_EQ(8, read(c, "cert_d1_A", key));
}

TEST(CryptoProUpdate, StructureCodesChangeNothing) {
    seed(4);
    struct {
        bool in_masks;
        unsigned offset;
        unsigned char value;
        unsigned char code;
    } table[] = {
        {false, 0, 0x31, 2}, {false, 1, 0x21, 4}, {true, 0, 0x31, 3}, {true, 1, 0x34, 5}, {true, 45, 0x00, 6},
    };
    for (auto& t : table) {
        Container c = cpt::container("two_keys_match_first");
        Bytes& b = t.in_masks ? c.masks : c.primary;
        b[t.offset] = t.value;
        Container before = c;
        EXPECT_EQ(t.code, update(c)) << t.offset;
        EXPECT_EQ(before.primary, c.primary);
        EXPECT_EQ(before.masks, c.masks);
    }
}

}  // namespace
