// Streaming against one-shot, and the fixed behaviours of the streaming
// records: the 32-bit length of 34.11-94, the 512-bit counter of 34.11-2012,
// an end that keeps (94) or spends (2012) the state.
#include <gtest/gtest.h>

#include <cstring>

#include "GOST_34_11_2012.h"
#include "GOST_34_11_94.h"
#include "common/test_util.h"

namespace {

using kt::Bytes;

// Cuts m into pieces of the given sizes (the last piece takes the rest).
template <class Write>
void feed(Bytes& m, const std::vector<size_t>& cuts, Write write) {
    size_t pos = 0;
    for (size_t c : cuts) {
        if (pos + c > m.size()) break;
        write(m.data() + pos, static_cast<unsigned>(c));
        pos += c;
    }
    write(m.data() + pos, static_cast<unsigned>(m.size() - pos));
}

std::vector<size_t> random_cuts(kt::Rng& rng, size_t total) {
    std::vector<size_t> cuts;
    for (size_t pos = 0; pos < total;) {
        size_t c = rng.below(3) == 0 ? rng.below(4) : rng.below(150);
        cuts.push_back(c);
        pos += c;
    }
    return cuts;
}

struct Cuts {
    std::vector<size_t> pieces;
    size_t total;
};

const Cuts kFixedCuts[] = {
    {{1, 31, 32, 33}, 200}, {{1, 63, 64, 65}, 300}, {{0, 0, 7}, 7}, {{32}, 32}, {{64}, 64}, {{33}, 33}, {{}, 0},
};

TEST(HashStream, Gost94EqualsOneShot) {
    kt::Rng rng(94);
    type_uN<32> start;
    for (int i = 0; i < 32; ++i) start.b[i] = static_cast<unsigned char>(i * 7 + 1);
    auto check = [&](Bytes m, const std::vector<size_t>& cuts, type_uN<32>* sv) {
        type_uN<32> one, st_out;
        GOST_34_11_94_hash(m.data(), static_cast<unsigned>(m.size()), sv, &one);
        stream_hash_t st;
        GOST_34_11_94_hash_init(sv, &st);
        feed(m, cuts, [&](unsigned char* p, unsigned n) { GOST_34_11_94_hash_write(p, n, &st); });
        GOST_34_11_94_hash_end(&st_out, &st);
        EXPECT_EQ(kt::to_hex(st_out.b, 32), kt::to_hex(one.b, 32)) << m.size();
    };
    for (const auto& c : kFixedCuts) {
        check(rng.bytes(c.total), c.pieces, nullptr);
        check(rng.bytes(c.total), c.pieces, &start);
    }
    for (int t = 0; t < 40; ++t) {
        Bytes m = rng.bytes(rng.below(700));
        check(m, random_cuts(rng, m.size()), t % 2 ? &start : nullptr);
    }
}

TEST(HashStream, Gost2012EqualsOneShot) {
    kt::Rng rng(2012);
    auto check = [&](Bytes m, const std::vector<size_t>& cuts) {
        type_uN<32> one256, st256;
        type_uN<64> one512, st512;
        GOST_34_11_2012_hash_256_bit(m.data(), static_cast<unsigned>(m.size()), &one256);
        GOST_34_11_2012_hash_512_bit(m.data(), static_cast<unsigned>(m.size()), &one512);
        stream_hash_2012_t a, b;
        GOST_34_11_2012_hash_256_init(&a);
        GOST_34_11_2012_hash_512_init(&b);
        feed(m, cuts, [&](unsigned char* p, unsigned n) {
            GOST_34_11_2012_hash_write(p, n, &a);
            GOST_34_11_2012_hash_write(p, n, &b);
        });
        GOST_34_11_2012_hash_256_end(&st256, &a);
        GOST_34_11_2012_hash_512_end(&st512, &b);
        EXPECT_EQ(kt::to_hex(st256.b, 32), kt::to_hex(one256.b, 32)) << m.size();
        EXPECT_EQ(kt::to_hex(st512.b, 64), kt::to_hex(one512.b, 64)) << m.size();
        // base() from a caller-set h is the one-shot hash.
        type_uN<64> h;
        std::memset(h.b, 0, 64);
        GOST_34_11_2012_base(m.data(), static_cast<unsigned>(m.size()), &h);
        EXPECT_EQ(kt::to_hex(h.b, 64), kt::to_hex(one512.b, 64));
        std::memset(h.b, 1, 64);
        GOST_34_11_2012_base(m.data(), static_cast<unsigned>(m.size()), &h);
        EXPECT_EQ(kt::to_hex(h.b + 32, 32), kt::to_hex(one256.b, 32));
    };
    for (const auto& c : kFixedCuts) check(rng.bytes(c.total), c.pieces);
    for (int t = 0; t < 30; ++t) {
        Bytes m = rng.bytes(rng.below(900));
        check(m, random_cuts(rng, m.size()));
    }
}

TEST(HashStream, Gost94EndKeepsState) {
    kt::Rng rng(5);
    Bytes m = rng.bytes(100);
    stream_hash_t st;
    GOST_34_11_94_hash_init(nullptr, &st);
    GOST_34_11_94_hash_write(m.data(), 45, &st);
    stream_hash_t before = st;
    type_uN<32> e1, e2, prefix, whole, all;
    GOST_34_11_94_hash_end(&e1, &st);
    GOST_34_11_94_hash_end(&e2, &st);
    EXPECT_EQ(0, std::memcmp(&before, &st, sizeof st));
    EXPECT_EQ(kt::to_hex(e1.b, 32), kt::to_hex(e2.b, 32));
    GOST_34_11_94_hash(m.data(), 45, nullptr, &prefix);
    EXPECT_EQ(kt::to_hex(e1.b, 32), kt::to_hex(prefix.b, 32));
    // Writing goes on after an intermediate end.
    GOST_34_11_94_hash_write(m.data() + 45, 55, &st);
    GOST_34_11_94_hash_end(&all, &st);
    GOST_34_11_94_hash(m.data(), 100, nullptr, &whole);
    EXPECT_EQ(kt::to_hex(all.b, 32), kt::to_hex(whole.b, 32));
}

TEST(HashStream, Gost94LengthIs32BitsAndWraps) {
    // Only the low 32-bit word of the length field moves, modulo 2^32; a
    // message of 2^29 bytes or more hashes with its bit length mod 2^32.
    kt::Rng rng(6);
    Bytes m = rng.bytes(64);
    stream_hash_t st;
    GOST_34_11_94_hash_init(nullptr, &st);
    const unsigned char near_top[4] = {0x00, 0xFF, 0xFF, 0xFF};  // 0xFFFFFF00
    std::memcpy(st.length.b, near_top, 4);
    stream_hash_t wrapped = st;
    GOST_34_11_94_hash_write(m.data(), 64, &wrapped);  // + 512 bits
    unsigned char expect[32] = {0x00, 0x01, 0x00, 0x00};  // 0x100, upper words zero
    EXPECT_EQ(kt::to_hex(wrapped.length.b, 32), kt::to_hex(expect, 32));
    // The same blocks from a zero length end up with length 512 = 0x200;
    // moving the wrapped state's length to 0x200 gives the plain hash.
    type_uN<32> plain, moved;
    GOST_34_11_94_hash(m.data(), 64, nullptr, &plain);
    wrapped.length.b[1] = 0x02;
    GOST_34_11_94_hash_end(&moved, &wrapped);
    EXPECT_EQ(kt::to_hex(moved.b, 32), kt::to_hex(plain.b, 32));
}

TEST(HashStream, Gost94EndAddsTailBitsModulo2_32) {
    // End adds 8t for the t pending bytes to the low length word of its copy,
    // wrapping as well: f(f(f(H, tail), L), sigma) with L = length + 8t mod 2^32.
    const struct { uint32_t length; unsigned t; } cases[] = {
        {0xFFFFFFF0u, 5}, {0xFFFFFF00u, 31}, {0xFFFFFFF8u, 1}, {0x12345600u, 17}};
    kt::Rng rng(9);
    for (const auto& c : cases) {
        Bytes m = rng.bytes(c.t);
        stream_hash_t st;
        GOST_34_11_94_hash_init(nullptr, &st);
        GOST_34_11_94_hash_write(m.data(), c.t, &st);
        std::memcpy(st.length.b, &c.length, 4);
        type_uN<32> got;
        GOST_34_11_94_hash_end(&got, &st);

        type_uN<32> h{}, blk{}, len{};
        std::memcpy(blk.b, m.data(), c.t);
        GOST_34_11_94_base_step(&blk, &h);
        const uint32_t bits = c.length + 8u * c.t;
        std::memcpy(len.b, &bits, 4);
        GOST_34_11_94_base_step(&len, &h);
        GOST_34_11_94_base_step(&blk, &h);  // sigma is the one block
        EXPECT_EQ(kt::to_hex(got.b, 32), kt::to_hex(h.b, 32)) << c.t;
        EXPECT_EQ(0, std::memcmp(st.length.b, &c.length, 4));  // the state keeps its length
    }
}

TEST(HashStream, Gost2012CounterIsFull512Bits) {
    kt::Rng rng(7);
    Bytes m = rng.bytes(64);
    stream_hash_2012_t st;
    GOST_34_11_2012_hash_512_init(&st);
    std::memset(st.N.b, 0xFF, 8);
    st.N.b[0] = 0x00;
    st.N.b[1] = 0xFE;  // 2^64 - 512
    GOST_34_11_2012_hash_write(m.data(), 64, &st);
    unsigned char expect[64] = {};
    expect[8] = 1;  // carried into word 1
    EXPECT_EQ(kt::to_hex(st.N.b, 64), kt::to_hex(expect, 64));
}

TEST(HashStream, Gost2012EndSpendsState) {
    kt::Rng rng(8);
    Bytes m = rng.bytes(10);
    stream_hash_2012_t st;
    GOST_34_11_2012_hash_512_init(&st);
    GOST_34_11_2012_hash_write(m.data(), 10, &st);
    type_uN<64> first, second;
    GOST_34_11_2012_hash_512_end(&first, &st);
    GOST_34_11_2012_hash_512_end(&second, &st);
    EXPECT_NE(kt::to_hex(first.b, 64), kt::to_hex(second.b, 64));
    // Re-initialised, the record works again.
    GOST_34_11_2012_hash_512_init(&st);
    GOST_34_11_2012_hash_write(m.data(), 10, &st);
    GOST_34_11_2012_hash_512_end(&second, &st);
    EXPECT_EQ(kt::to_hex(first.b, 64), kt::to_hex(second.b, 64));
}

TEST(HashStream, InitValues) {
    stream_hash_2012_t a, b;
    std::memset(&a, 0xAA, sizeof a);
    std::memset(&b, 0xAA, sizeof b);
    GOST_34_11_2012_hash_256_init(&a);
    GOST_34_11_2012_hash_512_init(&b);
    std::string ones;
    for (int i = 0; i < 64; ++i) ones += "01";
    EXPECT_EQ(kt::to_hex(a.h.b, 64), ones);
    EXPECT_EQ(kt::to_hex(b.h.b, 64), std::string(128, '0'));
    for (auto* s : {&a, &b}) {
        EXPECT_EQ(kt::to_hex(s->sigma.b, 64), std::string(128, '0'));
        EXPECT_EQ(kt::to_hex(s->N.b, 64), std::string(128, '0'));
        EXPECT_EQ(s->pending_len, 0);
    }
    stream_hash_t c;
    std::memset(&c, 0xAA, sizeof c);
    GOST_34_11_94_hash_init(nullptr, &c);
    EXPECT_EQ(kt::to_hex(c.H.b, 32) + kt::to_hex(c.sigma.b, 32) + kt::to_hex(c.length.b, 32), std::string(192, '0'));
    EXPECT_EQ(c.pending_len, 0);
}

}  // namespace
