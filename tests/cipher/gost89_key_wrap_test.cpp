// GOST 28147-89 key wrap, CryptoPro KEK diversification and CryptoPro wrap.
#include <gtest/gtest.h>

#include "gost89_test_util.h"

using namespace kt;

TEST(Gost89KeyWrap, KnownAnswersFromOpenSslPieces) {
    for (auto& r : records("kek.txt", "wrap")) {
        type_u64 ukm = block_of(r.at("ukm"));
        type_uN<32> kek = key_of(r.at("kek")), cek = key_of(r.at("cek")), out;
        Bytes w(44);
        GOST_28147_89_Key_Wrap(w.data(), &ukm, &kek, &cek, sel_of(r));
        EXPECT_EQ(to_hex(w), r.at("wrapped"));
        EXPECT_FALSE(GOST_28147_89_Key_Unwrap(w.data(), 0, &kek, &out, sel_of(r)));
        EXPECT_EQ(to_hex(out.b, 32), r.at("cek"));
    }
}

TEST(Gost89KeyWrap, RoundTripTamperingAndRestoredBuffer) {
    Rng rng(30);
    for (unsigned char sel : {0, 1, 4, 5, 6, 7}) {
        type_u64 ukm = rng.next();
        type_uN<32> kek = key_of(rng.bytes(32)), cek = key_of(rng.bytes(32)), out;
        Bytes w(44);
        GOST_28147_89_Key_Wrap(w.data(), &ukm, &kek, &cek, sel);
        const Bytes good = w;
        EXPECT_FALSE(GOST_28147_89_Key_Unwrap(w.data(), 0x5A, &kek, &out, sel));
        EXPECT_TRUE(same_key(out, cek));
        EXPECT_EQ(w, good);
        // Any flipped bit of bytes 8..43 is caught and the buffer comes back;
        // with only the MAC hit, the key is still written out.
        for (size_t bit = 64; bit < 44 * 8; bit += 5) {
            w[bit / 8] ^= 1 << (bit % 8);
            const Bytes bad = w;
            std::memset(out.b, 0, 32);
            EXPECT_TRUE(GOST_28147_89_Key_Unwrap(w.data(), 0, &kek, &out, sel)) << bit;
            EXPECT_EQ(w, bad);
            if (bit >= 40 * 8) { EXPECT_TRUE(same_key(out, cek)) << bit; }
            w[bit / 8] ^= 1 << (bit % 8);
        }
        // A wrong KEK or selector fails too.
        type_uN<32> other = kek;
        other.b[31] ^= 1;
        EXPECT_TRUE(GOST_28147_89_Key_Unwrap(w.data(), 0, &other, &out, sel));
        EXPECT_TRUE(GOST_28147_89_Key_Unwrap(w.data(), 0, &kek, &out, sel == 7 ? 0 : 7));
        // CryptoPro wrap: the plain wrap under a zero key diversified by the UKM.
        type_uN<32> zero = key_of(Bytes(32, 0));
        GOST_28147_89_CryptoPro_KEK_DA(&ukm, &kek, &zero, sel);
        GOST_28147_89_Key_Wrap(w.data(), &ukm, &zero, &cek, sel);
        Bytes cp(44);
        GOST_28147_89_CryptoPro_Key_Wrap(cp.data(), &ukm, &kek, &cek, sel);
        EXPECT_EQ(cp, w);
        EXPECT_FALSE(GOST_28147_89_CryptoPro_Key_Unwrap(cp.data(), 0, &kek, &out, sel));
        EXPECT_TRUE(same_key(out, cek));
    }
}

TEST(Gost89KekDiversification, KnownAnswers) {
    // The selector-0 record has a zero UKM: every round has S1 = 0 and S2 the
    // negated subkey sum.
    for (auto& r : records("kek.txt", "kek_da")) {
        type_u64 ukm = block_of(r.at("ukm"));
        type_uN<32> key = key_of(r.at("key")), ignored = key_of(Bytes(32, 0xAB));
        GOST_28147_89_CryptoPro_KEK_DA(&ukm, &ignored, &key, sel_of(r));
        EXPECT_EQ(to_hex(key.b, 32), r.at("out")) << r.at("sbox");
        EXPECT_EQ(ignored.b[0], 0xAB);
    }
}

TEST(Gost89CryptoProWrap, KnownAnswersAndIndependenceFromKek) {
    Rng rng(33);
    for (auto& r : records("kek.txt", "cryptopro_wrap")) {
        type_u64 ukm = block_of(r.at("ukm"));
        type_uN<32> cek = key_of(r.at("cek")), out;
        // The diversification starts from a zero key: the KEK never enters,
        // so random KEKs give the peer's value and unwrap with another one.
        type_uN<32> kek = key_of(rng.bytes(32)), other = key_of(rng.bytes(32));
        Bytes w(44);
        GOST_28147_89_CryptoPro_Key_Wrap(w.data(), &ukm, &kek, &cek, sel_of(r));
        EXPECT_EQ(to_hex(w), r.at("wrapped"));
        const Bytes before = w;
        EXPECT_FALSE(GOST_28147_89_CryptoPro_Key_Unwrap(w.data(), 0, &other, &out, sel_of(r)));
        EXPECT_EQ(to_hex(out.b, 32), r.at("cek"));
        EXPECT_EQ(w, before);
        w[20] ^= 4;
        EXPECT_TRUE(GOST_28147_89_CryptoPro_Key_Unwrap(w.data(), 0, &other, &out, sel_of(r)));
    }
}
