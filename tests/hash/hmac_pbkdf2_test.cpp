// HMAC and PBKDF2: OpenSSL vectors, RFC 7836 and R 50.1.111-2016 examples,
// the key-block rules of each variant and the 16-bit iteration count.
#include <gtest/gtest.h>

#include <cstring>

#include "GOST_34_11_2012.h"
#include "GOST_34_11_94.h"
#include "common/test_util.h"
#include "pkcs5.h"

namespace {

using kt::Bytes;

std::string hmac94(Bytes d, Bytes k) {
    type_uN<32> o;
    GOST_34_11_94_HMAC(d.data(), static_cast<unsigned>(d.size()), k.data(), static_cast<unsigned char>(k.size()), &o);
    return kt::to_hex(o.b, 32);
}
std::string hmac256(Bytes d, Bytes k) {
    type_uN<32> o;
    GOST_34_11_2012_HMAC_256_bit(d.data(), static_cast<unsigned>(d.size()), k.data(),
                                 static_cast<unsigned char>(k.size()), &o);
    return kt::to_hex(o.b, 32);
}
std::string hmac512(Bytes d, Bytes k) {
    type_uN<64> o;
    GOST_34_11_2012_HMAC_512_bit(d.data(), static_cast<unsigned>(d.size()), k.data(),
                                 static_cast<unsigned char>(k.size()), &o);
    return kt::to_hex(o.b, 64);
}

Bytes h94(Bytes m) {
    type_uN<32> o;
    GOST_34_11_94_hash(m.data(), static_cast<unsigned>(m.size()), nullptr, &o);
    return Bytes(o.b, o.b + 32);
}
Bytes h256(Bytes m) {
    type_uN<32> o;
    GOST_34_11_2012_hash_256_bit(m.data(), static_cast<unsigned>(m.size()), &o);
    return Bytes(o.b, o.b + 32);
}
Bytes h512(Bytes m) {
    type_uN<64> o;
    GOST_34_11_2012_hash_512_bit(m.data(), static_cast<unsigned>(m.size()), &o);
    return Bytes(o.b, o.b + 64);
}

TEST(Hmac, OpenSslVectors) {
    auto recs = kt::load_records("hash/hmac.txt");
    ASSERT_GE(recs.size(), 50u);
    for (const auto& r : recs) {
        Bytes k = kt::from_hex(r.at("key")), d = kt::from_hex(r.at("data"));
        SCOPED_TRACE("key " + std::to_string(k.size()) + " data " + std::to_string(d.size()));
        EXPECT_EQ(hmac94(d, k), r.at("hmac94"));
        EXPECT_EQ(hmac256(d, k), r.at("hmac256"));
        EXPECT_EQ(hmac512(d, k), r.at("hmac512"));
    }
}

TEST(Hmac, Rfc7836Example) {
    for (const auto& r : kt::load_records("hash/rfc_examples.txt")) {
        if (r.at("name") != "rfc7836") continue;
        Bytes k = kt::from_hex(r.at("key")), d = kt::from_hex(r.at("data"));
        EXPECT_EQ(hmac256(d, k), r.at("hmac256"));
        EXPECT_EQ(hmac512(d, k), r.at("hmac512"));
        return;
    }
    FAIL() << "example missing";
}

// HMAC from the definition with the streaming functions, given K0.
std::string hmac94_def(Bytes d, Bytes k0) {
    Bytes ip(32), op(32);
    for (int i = 0; i < 32; ++i) ip[i] = k0[i] ^ 0x36, op[i] = k0[i] ^ 0x5C;
    stream_hash_t st;
    type_uN<32> inner, out;
    GOST_34_11_94_hash_init(nullptr, &st);
    GOST_34_11_94_hash_write(ip.data(), 32, &st);
    GOST_34_11_94_hash_write(d.data(), static_cast<unsigned>(d.size()), &st);
    GOST_34_11_94_hash_end(&inner, &st);
    GOST_34_11_94_hash_init(nullptr, &st);
    GOST_34_11_94_hash_write(op.data(), 32, &st);
    GOST_34_11_94_hash_write(inner.b, 32, &st);
    GOST_34_11_94_hash_end(&out, &st);
    return kt::to_hex(out.b, 32);
}

std::string hmac2012_def(Bytes d, Bytes k0, bool is256) {
    Bytes ip(64), op(64);
    for (int i = 0; i < 64; ++i) ip[i] = k0[i] ^ 0x36, op[i] = k0[i] ^ 0x5C;
    const unsigned n = is256 ? 32 : 64;
    auto run = [&](Bytes& pad, unsigned char* msg, unsigned len, unsigned char* out) {
        stream_hash_2012_t st;
        is256 ? GOST_34_11_2012_hash_256_init(&st) : GOST_34_11_2012_hash_512_init(&st);
        GOST_34_11_2012_hash_write(pad.data(), 64, &st);
        GOST_34_11_2012_hash_write(msg, len, &st);
        if (is256)
            GOST_34_11_2012_hash_256_end(reinterpret_cast<type_uN<32>*>(out), &st);
        else
            GOST_34_11_2012_hash_512_end(reinterpret_cast<type_uN<64>*>(out), &st);
    };
    unsigned char inner[64], out[64];
    run(ip, d.data(), static_cast<unsigned>(d.size()), inner);
    run(op, inner, n, out);
    return kt::to_hex(out, n);
}

Bytes padded(Bytes k, size_t n) {
    k.resize(n, 0);
    return k;
}

TEST(Hmac, KeyBlockRules) {
    kt::Rng rng(11);
    Bytes d = rng.bytes(77);
    for (size_t kl : {0, 1, 31, 32, 33, 63, 64, 65, 200, 255}) {
        Bytes k = rng.bytes(kl);
        SCOPED_TRACE(kl);
        // 34.11-94: block 32; a longer key becomes its 32-byte hash.
        Bytes k0_94 = kl > 32 ? h94(k) : padded(k, 32);
        EXPECT_EQ(hmac94(d, k), hmac94_def(d, k0_94));
        // 2012-256: block 64; a longer key becomes its 32-byte hash and 32 zeros.
        Bytes k0_256 = kl > 64 ? padded(h256(k), 64) : padded(k, 64);
        EXPECT_EQ(hmac256(d, k), hmac2012_def(d, k0_256, true));
        // 2012-512: the 64-byte hash fills the block.
        Bytes k0_512 = kl > 64 ? h512(k) : padded(k, 64);
        EXPECT_EQ(hmac512(d, k), hmac2012_def(d, k0_512, false));
    }
    // The edge cases in terms of the public functions alone.
    Bytes k33 = rng.bytes(33), k65 = rng.bytes(65);
    EXPECT_EQ(hmac94(d, k33), hmac94(d, h94(k33)));
    EXPECT_EQ(hmac256(d, k65), hmac256(d, h256(k65)));
    EXPECT_EQ(hmac512(d, k65), hmac512(d, h512(k65)));
    EXPECT_EQ(hmac94(d, {}), hmac94(d, Bytes(32, 0)));
    EXPECT_EQ(hmac256(d, {}), hmac256(d, Bytes(64, 0)));
    EXPECT_EQ(hmac512(d, {}), hmac512(d, Bytes(64, 0)));
}

std::string pbkdf2_94(Bytes p, Bytes s, unsigned short it) {
    type_uN<32> o;
    pkcs5_PBKDF2(p.data(), static_cast<unsigned char>(p.size()), s.data(), it, &o);
    return kt::to_hex(o.b, 32);
}
std::string pbkdf2_2012(Bytes p, Bytes s, unsigned short it) {
    type_uN<32> o;
    pkcs5_PBKDF2_2012(p.data(), static_cast<unsigned char>(p.size()), s.data(), it, &o);
    return kt::to_hex(o.b, 32);
}

TEST(Pbkdf2, OpenSslVectors) {
    auto recs = kt::load_records("hash/pbkdf2.txt");
    ASSERT_GE(recs.size(), 30u);
    for (const auto& r : recs) {
        Bytes p = kt::from_hex(r.at("password")), s = kt::from_hex(r.at("salt"));
        auto it = static_cast<unsigned short>(std::stoul(r.at("iterations")));
        SCOPED_TRACE("password " + std::to_string(p.size()) + " iterations " + r.at("iterations"));
        EXPECT_EQ(pbkdf2_94(p, s, it), r.at("pbkdf2_94"));
        EXPECT_EQ(pbkdf2_2012(p, s, it), r.at("pbkdf2_2012"));
    }
}

TEST(Pbkdf2, R50_1_111Examples) {
    Bytes p = {'p', 'a', 's', 's', 'w', 'o', 'r', 'd'}, s = {'s', 'a', 'l', 't'};
    int seen = 0;
    for (const auto& r : kt::load_records("hash/rfc_examples.txt")) {
        if (r.at("name").rfind("r50_", 0) != 0) continue;
        ++seen;
        EXPECT_EQ(pbkdf2_2012(p, s, static_cast<unsigned short>(std::stoul(r.at("iterations")))), r.at("dk"));
    }
    EXPECT_EQ(seen, 3);
}

TEST(Pbkdf2, OneBlockFourSaltBytes) {
    kt::Rng rng(12);
    Bytes p = rng.bytes(20);
    Bytes s1 = {1, 2, 3, 4, 5, 6, 7, 8}, s2 = {1, 2, 3, 4, 9, 9, 9, 9};
    EXPECT_EQ(pbkdf2_94(p, s1, 5), pbkdf2_94(p, s2, 5));
    EXPECT_EQ(pbkdf2_2012(p, s1, 5), pbkdf2_2012(p, s2, 5));
    EXPECT_NE(pbkdf2_94(p, s1, 5), pbkdf2_94(p, {1, 2, 3, 5}, 5));
    // One iteration: the first PRF output over salt || 00 00 00 01, cut to 32 bytes.
    Bytes first = {1, 2, 3, 4, 0, 0, 0, 1};
    EXPECT_EQ(pbkdf2_94(p, s1, 1), hmac94(first, p));
    EXPECT_EQ(pbkdf2_2012(p, s1, 1), hmac512(first, p).substr(0, 64));
}

// c PRF calls through the public HMAC, U fed back in full.
Bytes prf94(Bytes d, Bytes k) {
    type_uN<32> o;
    GOST_34_11_94_HMAC(d.data(), static_cast<unsigned>(d.size()), k.data(), static_cast<unsigned char>(k.size()), &o);
    return Bytes(o.b, o.b + 32);
}
Bytes prf512(Bytes d, Bytes k) {
    type_uN<64> o;
    GOST_34_11_2012_HMAC_512_bit(d.data(), static_cast<unsigned>(d.size()), k.data(),
                                 static_cast<unsigned char>(k.size()), &o);
    return Bytes(o.b, o.b + 64);
}

template <class Prf>
std::string pbkdf2_def(Bytes p, Bytes s, unsigned c, size_t ulen, Prf prf) {
    Bytes u = {s[0], s[1], s[2], s[3], 0, 0, 0, 1};
    u = prf(u, p);
    Bytes t(u.begin(), u.begin() + 32);
    for (unsigned i = 1; i < c; ++i) {
        u = prf(u, p);
        EXPECT_EQ(u.size(), ulen);
        for (int j = 0; j < 32; ++j) t[j] ^= u[j];
    }
    return kt::to_hex(t);
}

TEST(Pbkdf2, IterationCount) {
    kt::Rng rng(13);
    Bytes p = rng.bytes(9), s = rng.bytes(4);
    for (unsigned c : {2u, 3u, 17u}) {
        EXPECT_EQ(pbkdf2_94(p, s, static_cast<unsigned short>(c)), pbkdf2_def(p, s, c, 32, prf94));
        EXPECT_EQ(pbkdf2_2012(p, s, static_cast<unsigned short>(c)), pbkdf2_def(p, s, c, 64, prf512));
    }
    // 0 wraps to 65536 PRF calls.
    EXPECT_EQ(pbkdf2_94(p, s, 0), pbkdf2_def(p, s, 65536, 32, prf94));
    EXPECT_EQ(pbkdf2_2012(p, s, 0), pbkdf2_def(p, s, 65536, 64, prf512));
    EXPECT_NE(pbkdf2_94(p, s, 0), pbkdf2_94(p, s, 65535));
}

}  // namespace
