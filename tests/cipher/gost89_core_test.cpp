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

// Reference round by S-box look-up over the S-boxes recovered above.
type_u64 reference_round(type_u64 block, uint32_t subkey, const unsigned int* w) {
    uint32_t n1 = static_cast<uint32_t>(block), n2 = static_cast<uint32_t>(block >> 32);
    uint32_t s = n1 + subkey, y = 0;
    for (unsigned k = 0; k < 8; ++k) y |= sbox_from_anf(w, k, (s >> (4 * k)) & 15) << (4 * k);
    y = (y << 11) | (y >> 21);
    return static_cast<type_u64>(n1) << 32 | (y ^ n2);
}

const unsigned char kSelectors[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 200, 255};

}  // namespace

TEST(Gost89Tables, SelectorMapping) {
    const unsigned int* a = GOST_28147_89_get_s_box_ptr(0);
    // 0, 2, 3 and unknown values are CryptoPro-A; 1, 4..7 are distinct sets.
    for (unsigned char s : {2, 3, 8, 9, 100, 200, 255}) EXPECT_EQ(GOST_28147_89_get_s_box_ptr(s), a) << int(s);
    std::set<const unsigned int*> distinct{a};
    for (unsigned char s : {1, 4, 5, 6, 7}) distinct.insert(GOST_28147_89_get_s_box_ptr(s));
    EXPECT_EQ(distinct.size(), 6u);
}

TEST(Gost89Tables, CheckValues) {
    const unsigned int* z = GOST_28147_89_get_s_box_ptr(7);
    EXPECT_EQ(z[0], 0x1857CB6Cu);
    EXPECT_EQ(z[1], 0x668848E8u);
    EXPECT_EQ(z[2], 0xFAA2EE4Au);
    EXPECT_EQ(z[3], 0x511775FCu);
    const unsigned int* a = GOST_28147_89_get_s_box_ptr(0);
    EXPECT_EQ(a[0], 0xB13BEE39u);
    EXPECT_EQ(a[1], 0x1C9E9A4Fu);
}

TEST(Gost89Tables, EveryTableIsEightPermutationsOfDegreeThree) {
    for (unsigned char sel : {0, 1, 4, 5, 6, 7}) {
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
    EXPECT_EQ(Mat[0], 1);
    for (unsigned j = 1; j < 16; ++j) EXPECT_EQ(Mat[j], 0);
    for (unsigned j = 0; j < 16; ++j) EXPECT_EQ(Mat[15 * 16 + j], 1);
    for (unsigned m = 0; m < 16; ++m)
        for (unsigned j = 0; j < 16; ++j) EXPECT_EQ(Mat[16 * m + j], (j & m) == j ? 1 : 0);
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
    unsigned char saved[256];
    std::memcpy(saved, Mat, 256);
    for (unsigned m = 0; m < 16; ++m)
        for (unsigned j = 0; j < 16; ++j) Mat[16 * m + j] = m == j;
    unsigned char out[128];
    GOST_28147_89_tableZ(0, out);
    std::memcpy(Mat, saved, 256);
    const unsigned int* z = GOST_28147_89_get_s_box_ptr(7);
    for (unsigned r = 0; r < 8; ++r)
        for (unsigned x = 0; x < 16; ++x) EXPECT_EQ(out[16 * r + x], sbox_from_anf(z, r, x)) << r << "," << x;
    EXPECT_EQ(out[0], 0xC);  // K1(0) of param-Z (RFC 7836)
}

TEST(Gost89Core, BaseStepMatchesLookupRound) {
    Rng rng(1);
    for (unsigned char sel : {0, 1, 4, 5, 6, 7}) {
        unsigned int* w = GOST_28147_89_get_s_box_ptr(sel);
        for (int i = 0; i < 2000; ++i) {
            const type_u64 block = rng.next();
            unsigned int k = static_cast<unsigned int>(rng.next());
            ASSERT_EQ(GOST_28147_89_base_step(block, &k, w), reference_round(block, k, w)) << int(sel);
        }
    }
}

TEST(Gost89Core, CyclesAreThirtyTwoOrSixteenRoundsOfBaseStep) {
    Rng rng(2);
    for (unsigned char sel : {0, 1, 7}) {
        unsigned int* w = GOST_28147_89_get_s_box_ptr(sel);
        const Bytes kb = rng.bytes(32);
        type_uN<32> key = key_of(kb);
        unsigned int sk[8];
        std::memcpy(sk, kb.data(), 32);
        const type_u64 x = rng.next();
        auto run = [&](type_u64 b, const std::vector<int>& order) {
            for (int i : order) b = GOST_28147_89_base_step(b, &sk[i], w);
            return b;
        };
        auto swap_halves = [](type_u64 b) { return b << 32 | b >> 32; };
        std::vector<int> up{0, 1, 2, 3, 4, 5, 6, 7}, down{7, 6, 5, 4, 3, 2, 1, 0}, z, r, m;
        for (int i = 0; i < 3; ++i) z.insert(z.end(), up.begin(), up.end());
        z.insert(z.end(), down.begin(), down.end());
        r.insert(r.end(), up.begin(), up.end());
        for (int i = 0; i < 3; ++i) r.insert(r.end(), down.begin(), down.end());
        m.insert(m.end(), up.begin(), up.end());
        m.insert(m.end(), up.begin(), up.end());

        type_u64 b = x;
        GOST_28147_cycle_32_Z(&b, &key, w);
        EXPECT_EQ(b, swap_halves(run(x, z)));
        type_u64 c = x;
        GOST_28147_cycle_32_R(&c, &key, w);
        EXPECT_EQ(c, swap_halves(run(x, r)));
        EXPECT_EQ(GOST_28147_cycle_16_Z(x, &key, w), run(x, m));  // no exchange
        GOST_28147_cycle_32_R(&b, &key, w);
        EXPECT_EQ(b, x);
    }
}

TEST(Gost89Core, CyclesAcceptUnalignedBlockKeyAndTable) {
    Rng rng(3);
    const Bytes kb = rng.bytes(32);
    type_uN<32> key = key_of(kb);
    unsigned int* w = GOST_28147_89_get_s_box_ptr(0);
    type_u64 ref = 0x0123456789ABCDEFull;
    GOST_28147_cycle_32_Z(&ref, &key, w);
    alignas(16) unsigned char buf[128];
    std::memcpy(buf + 1, &key, 32);
    std::memcpy(buf + 35, w, 64);
    const type_u64 x = 0x0123456789ABCDEFull;
    std::memcpy(buf + 101, &x, 8);
    GOST_28147_cycle_32_Z(reinterpret_cast<type_u64*>(buf + 101), reinterpret_cast<type_uN<32>*>(buf + 1),
                          reinterpret_cast<unsigned int*>(buf + 35));
    type_u64 got;
    std::memcpy(&got, buf + 101, 8);
    EXPECT_EQ(got, ref);
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
    for (unsigned len = 0; len < 8; ++len) {
        Bytes d = rng.bytes(8), before = d;
        GOST_28147_89_Z_ECB(d.data(), len, &key, 0);
        GOST_28147_89_R_ECB(d.data(), len, &key, 0);
        EXPECT_EQ(d, before) << len;
    }
    GOST_28147_89_Z_ECB(nullptr, 0, &key, 0);  // length 0 never touches data
    Bytes d = rng.bytes(13), before = d;
    GOST_28147_89_Z_ECB(d.data(), 13, &key, 0);
    EXPECT_NE(Bytes(d.begin(), d.begin() + 8), Bytes(before.begin(), before.begin() + 8));
    EXPECT_EQ(Bytes(d.begin() + 8, d.end()), Bytes(before.begin() + 8, before.end()));
    GOST_28147_89_R_ECB(d.data(), 13, &key, 0);
    EXPECT_EQ(d, before);
}

TEST(Gost89Ecb, RoundTripEverySelector) {
    Rng rng(5);
    for (unsigned char sel : kSelectors) {
        type_uN<32> key = key_of(rng.bytes(32));
        Bytes d = rng.bytes(64), before = d;
        GOST_28147_89_Z_ECB(d.data() + 1, 56, &key, sel);
        EXPECT_NE(d, before);
        GOST_28147_89_R_ECB(d.data() + 1, 56, &key, sel);
        EXPECT_EQ(d, before) << int(sel);
    }
}

TEST(Gost89Ecb, SelectorsOutsideTheTableAreCryptoProA) {
    Rng rng(6);
    type_uN<32> key = key_of(rng.bytes(32));
    const Bytes p = rng.bytes(16);
    Bytes ref = p;
    GOST_28147_89_Z_ECB(ref.data(), 16, &key, 0);
    for (unsigned char sel : {2, 3, 8, 200, 255}) {
        Bytes d = p;
        GOST_28147_89_Z_ECB(d.data(), 16, &key, sel);
        EXPECT_EQ(d, ref) << int(sel);
    }
}
