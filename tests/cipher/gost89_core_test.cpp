// GOST 28147-89 core: parameter tables, the round function, the cycles, ECB.
#include <gtest/gtest.h>

#include <array>
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
    const unsigned int* a = GOST_28147_89_get_s_box_ptr(0);
    // 0, 2, 3 and unknown values are CryptoPro-A; 1, 4..7 are distinct sets.
    for (unsigned char s : {2, 3, 8, 9, 100, 200, 255}) EXPECT_EQ(GOST_28147_89_get_s_box_ptr(s), a) << int(s);
    std::set<const unsigned int*> distinct;
    for (unsigned char s : kTableSelectors) distinct.insert(GOST_28147_89_get_s_box_ptr(s));
    EXPECT_EQ(distinct.size(), 6u);
    const unsigned int* z = GOST_28147_89_get_s_box_ptr(7);
    EXPECT_EQ(std::vector<unsigned>(z, z + 4), (std::vector<unsigned>{0x1857CB6C, 0x668848E8, 0xFAA2EE4A, 0x511775FC}));
    EXPECT_EQ(std::vector<unsigned>(a, a + 2), (std::vector<unsigned>{0xB13BEE39, 0x1C9E9A4F}));
    // Every table: W15 zero and eight permutations of 0..15.
    for (unsigned char sel : kTableSelectors) {
        const unsigned int* w = GOST_28147_89_get_s_box_ptr(sel);
        EXPECT_EQ(w[15], 0u) << int(sel);
        for (unsigned k = 0; k < 8; ++k) {
            std::set<unsigned> seen;
            for (unsigned x = 0; x < 16; ++x) seen.insert(sbox_from_anf(w, k, x));
            EXPECT_EQ(seen.size(), 16u) << "selector " << int(sel) << " S-box K" << k + 1;
        }
    }
}

TEST(Gost89Tables, MatIsTheSubsetMatrix) {
    for (unsigned m = 0; m < 16; ++m)
        for (unsigned j = 0; j < 16; ++j) EXPECT_EQ(Mat[16 * m + j], (j & m) == j ? 1 : 0) << m << "," << j;
}

TEST(Gost89Tables, TableZReproducesSelector7AndIgnoresItsFirstArgument) {
    const unsigned int* z = GOST_28147_89_get_s_box_ptr(7);
    for (unsigned char ignored : {0, 7, 255}) {
        std::array<unsigned char, 130> out;
        out.fill(0xEE);
        GOST_28147_89_tableZ(ignored, out.data());
        for (unsigned r = 0; r < 8; ++r)
            for (unsigned m = 0; m < 16; ++m)
                EXPECT_EQ(out[16 * r + m] & 15, (z[m] >> (4 * r)) & 15) << r << "," << m;
        EXPECT_EQ(out[128], 0xEE);  // exactly 128 bytes written
        EXPECT_EQ(out[129], 0xEE);
    }
}

TEST(Gost89Tables, TableZReadsTheExportedMat) {
    // With Mat replaced by the identity, the "transform" copies the plain
    // S-box Z: proof that tableZ takes its matrix from the writable object.
    unsigned char saved[256], out[128];
    std::memcpy(saved, Mat, 256);
    for (unsigned i = 0; i < 256; ++i) Mat[i] = i % 17 == 0;
    GOST_28147_89_tableZ(0, out);
    std::memcpy(Mat, saved, 256);
    const unsigned int* z = GOST_28147_89_get_s_box_ptr(7);
    for (unsigned r = 0; r < 8; ++r)
        for (unsigned x = 0; x < 16; ++x) EXPECT_EQ(out[16 * r + x], sbox_from_anf(z, r, x)) << r << "," << x;
    EXPECT_EQ(out[0], 0xC);  // K1(0) of param-Z (RFC 7836)
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

TEST(Gost89Core, CyclesAreThirtyTwoOrSixteenRoundsOfBaseStep) {
    // Subkey orders of GOST 28147-89; 32-Z and 32-R end by exchanging halves.
    std::vector<int> z, r, m;
    for (int i = 0; i < 32; ++i) {
        z.push_back(i < 24 ? i % 8 : 7 - i % 8);
        r.push_back(i < 8 ? i : 7 - i % 8);
        if (i < 16) m.push_back(i % 8);
    }
    // Block, key and table all sit at odd addresses: caller memory has any alignment.
    alignas(16) unsigned char buf[128];
    auto* key = reinterpret_cast<type_uN<32>*>(buf + 1);
    auto* table = reinterpret_cast<unsigned int*>(buf + 35);
    auto* block = reinterpret_cast<type_u64*>(buf + 101);
    Rng rng(2);
    for (unsigned char sel : {0, 1, 7}) {
        unsigned int* w = GOST_28147_89_get_s_box_ptr(sel);
        const Bytes kb = rng.bytes(32);
        unsigned int sk[8];
        std::memcpy(sk, kb.data(), 32);
        std::memcpy(key, kb.data(), 32);
        std::memcpy(table, w, 64);
        auto run = [&](type_u64 b, const std::vector<int>& order) {
            for (int i : order) b = GOST_28147_89_base_step(b, &sk[i], w);
            return b;
        };
        auto swap_halves = [](type_u64 b) { return b << 32 | b >> 32; };
        const type_u64 x = rng.next();
        std::memcpy(block, &x, 8);
        GOST_28147_cycle_32_Z(block, key, table);
        EXPECT_EQ(block_of(buf + 101), swap_halves(run(x, z)));
        GOST_28147_cycle_32_R(block, key, table);
        EXPECT_EQ(block_of(buf + 101), x);
        std::memcpy(block, &x, 8);
        GOST_28147_cycle_32_R(block, key, table);
        EXPECT_EQ(block_of(buf + 101), swap_halves(run(x, r)));
        EXPECT_EQ(GOST_28147_cycle_16_Z(x, key, table), run(x, m));  // no exchange
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
