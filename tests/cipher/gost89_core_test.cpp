// GOST 28147-89 core: parameter tables, the round function, the cycles, ECB.
#include <gtest/gtest.h>

#include <set>

#include "gost89_test_util.h"

using namespace kt;

namespace {

// S-box k at input x from the ANF words: XOR of nibble k of every W[m] with
// m a sub-mask of x (the definition of the table, not the round's masks).
unsigned sbox_from_anf(const unsigned int* w, unsigned k, unsigned x) {
    unsigned v = 0;
    for (unsigned m = 0; m < 16; ++m)
        if ((m & x) == m) v ^= (w[m] >> (4 * k)) & 15;
    return v;
}

const unsigned char kTableSelectors[] = {0, 1, 4, 5, 6, 7};

}  // namespace

TEST(Gost89Tables, SelectorMappingCheckValuesAndShape) {
    // 0, 2, 3 and unknown values are CryptoPro-A; 1, 4..7 are distinct sets.
    const unsigned int *a = GOST_28147_89_get_s_box_ptr(0), *z = GOST_28147_89_get_s_box_ptr(7);
    for (unsigned char s : {2, 3, 8, 9, 100, 200, 255}) EXPECT_EQ(GOST_28147_89_get_s_box_ptr(s), a) << int(s);
    std::set<const unsigned int*> distinct;
    for (unsigned char s : kTableSelectors) {
        distinct.insert(GOST_28147_89_get_s_box_ptr(s));
        EXPECT_EQ(GOST_28147_89_get_s_box_ptr(s)[15], 0u) << int(s);  // degree 3 at most
    }
    EXPECT_EQ(distinct.size(), 6u);
    // The words themselves are pinned by the peers' records for all six sets.
    EXPECT_EQ(std::vector<unsigned>(z, z + 4), (std::vector<unsigned>{0x1857CB6C, 0x668848E8, 0xFAA2EE4A, 0x511775FC}));
    EXPECT_EQ(std::vector<unsigned>(a, a + 2), (std::vector<unsigned>{0xB13BEE39, 0x1C9E9A4F}));
    for (unsigned i = 0; i < 256; ++i) EXPECT_EQ(Mat[i], (i % 16 & i / 16) == i % 16) << i;  // the subset matrix
}

TEST(Gost89Tables, TableZTransformsThroughTheExportedMatAndIgnoresItsFirstArgument) {
    // With the real Mat the low nibbles are the selector-7 words; with Mat
    // replaced by the identity the "transform" copies the plain S-box Z,
    // which shows that tableZ takes its matrix from the writable object.
    const unsigned int* z = GOST_28147_89_get_s_box_ptr(7);
    unsigned char saved[256];
    std::memcpy(saved, Mat, 256);
    for (unsigned char ignored : {0, 7, 255}) {
        for (bool identity : {false, true}) {
            if (identity)
                for (unsigned i = 0; i < 256; ++i) Mat[i] = i % 17 == 0;
            Bytes out(129, 0xEE);
            GOST_28147_89_tableZ(ignored, out.data());
            std::memcpy(Mat, saved, 256);
            for (unsigned r = 0; r < 8; ++r)
                for (unsigned x = 0; x < 16; ++x) {
                    const unsigned got = out[16 * r + x], plain = sbox_from_anf(z, r, x), anf = (z[x] >> (4 * r)) & 15;
                    EXPECT_EQ(identity ? got : got & 15, identity ? plain : anf) << identity << " " << r << "," << x;
                }
            EXPECT_EQ(out[128], 0xEE);  // 128 bytes written, no more
        }
    }
}

TEST(Gost89Core, BaseStepMatchesLookupRound) {
    // Reference round: S-box look-up over the S-boxes recovered from the words.
    Rng rng(1);
    for (unsigned char sel : kTableSelectors) {
        unsigned int* w = GOST_28147_89_get_s_box_ptr(sel);
        for (int i = 0; i < 2000; ++i) {
            const type_u64 block = rng.next();
            unsigned int k = static_cast<unsigned int>(rng.next());
            const uint32_t n1 = static_cast<uint32_t>(block), s = n1 + k;
            uint32_t y = 0;
            for (unsigned j = 0; j < 8; ++j) y |= sbox_from_anf(w, j, (s >> (4 * j)) & 15) << (4 * j);
            y = (y << 11) | (y >> 21);
            const type_u64 expect = static_cast<type_u64>(n1) << 32 | (y ^ static_cast<uint32_t>(block >> 32));
            ASSERT_EQ(GOST_28147_89_base_step(block, &k, w), expect) << int(sel);
        }
    }
}

TEST(Gost89Core, CyclesMatchEcbOnUnalignedBlockKeyAndTable) {
    // ECB is pinned by the peers; 16-Z is checked against the MAC. Caller
    // memory has any alignment, so block, key and table sit at odd addresses.
    alignas(16) unsigned char buf[128];
    auto* key = reinterpret_cast<type_uN<32>*>(buf + 1);
    auto* table = reinterpret_cast<unsigned int*>(buf + 35);
    auto* block = reinterpret_cast<type_u64*>(buf + 101);
    Rng rng(2);
    for (unsigned char sel : kTableSelectors) {
        type_uN<32> k = key_of(rng.bytes(32));
        Bytes x = rng.bytes(8), e = x;
        std::memcpy(key, k.b, 32);
        std::memcpy(table, GOST_28147_89_get_s_box_ptr(sel), 64);
        std::memcpy(block, x.data(), 8);
        GOST_28147_89_Z_ECB(e.data(), 8, &k, sel);
        GOST_28147_cycle_32_Z(block, key, table);
        EXPECT_EQ(Bytes(buf + 101, buf + 109), e) << int(sel);
        GOST_28147_cycle_32_R(block, key, table);
        EXPECT_EQ(Bytes(buf + 101, buf + 109), x) << int(sel);
    }
}

TEST(Gost89Ecb, BotanKnownAnswers) {
    for (auto& r : records("botan.txt", "ecb")) {
        type_uN<32> key = key_of(r.at("key"));
        Bytes d = from_hex(r.at("plain"));
        GOST_28147_89_Z_ECB(d.data(), d.size(), &key, sel_of(r));
        EXPECT_EQ(to_hex(d), r.at("cipher"));
        GOST_28147_89_R_ECB(d.data(), d.size(), &key, sel_of(r));
        EXPECT_EQ(to_hex(d), r.at("plain"));
    }
}

TEST(Gost89Ecb, TailAndShortBuffersAreUntouched) {
    Rng rng(4);
    type_uN<32> key = key_of(rng.bytes(32));
    GOST_28147_89_Z_ECB(nullptr, 0, &key, 0);  // length 0 never touches data
    for (unsigned len = 0; len < 8; ++len) {
        Bytes d = rng.bytes(8), before = d;
        GOST_28147_89_Z_ECB(d.data(), len, &key, 0);
        GOST_28147_89_R_ECB(d.data(), len, &key, 0);
        EXPECT_EQ(d, before) << len;
    }
    Bytes d = rng.bytes(13), before = d;
    GOST_28147_89_Z_ECB(d.data(), 13, &key, 0);
    EXPECT_NE(Bytes(d.begin(), d.begin() + 8), Bytes(before.begin(), before.begin() + 8));
    EXPECT_EQ(Bytes(d.begin() + 8, d.end()), Bytes(before.begin() + 8, before.end()));
    GOST_28147_89_R_ECB(d.data(), 13, &key, 0);
    EXPECT_EQ(d, before);
}

TEST(Gost89Ecb, RoundTripEverySelectorAndUnknownOnesAreCryptoProA) {
    Rng rng(5);
    const type_uN<32> key = key_of(rng.bytes(32));
    const Bytes p = rng.bytes(64);
    Bytes crypto_pro_a;
    for (unsigned char sel : {0, 1, 2, 3, 4, 5, 6, 7, 8, 200, 255}) {
        type_uN<32> k = key;
        Bytes d = p;
        GOST_28147_89_Z_ECB(d.data() + 1, 56, &k, sel);  // unaligned data
        if (sel == 0) crypto_pro_a = d;
        EXPECT_NE(d, p);
        const bool is_a = sel == 0 || sel == 2 || sel == 3 || sel >= 8;
        EXPECT_EQ(d == crypto_pro_a, is_a) << int(sel);
        GOST_28147_89_R_ECB(d.data() + 1, 56, &k, sel);
        EXPECT_EQ(d, p) << int(sel);
    }
}
