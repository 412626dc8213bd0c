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

template <unsigned N>
std::string hex(const type_uN<N>& v) { return kt::to_hex(v.b, N); }

// Writes m in pieces of the given sizes (the last piece takes the rest) to
// 34.11-94 records with a zero and a set start, and to 2012-256 and -512
// records, and checks each against its one-shot hash.
void check_stream(Bytes m, const std::vector<size_t>& cuts) {
    const unsigned len = static_cast<unsigned>(m.size());
    SCOPED_TRACE(len);
    type_uN<32> start, one[3], got[3];
    type_uN<64> one512, got512, h;
    for (int i = 0; i < 32; ++i) start.b[i] = static_cast<unsigned char>(i * 7 + 1);
    stream_hash_t s94[2];
    stream_hash_2012_t s256, s512;
    for (int i = 0; i < 2; ++i) GOST_34_11_94_hash_init(i ? &start : nullptr, &s94[i]);
    GOST_34_11_2012_hash_256_init(&s256);
    GOST_34_11_2012_hash_512_init(&s512);
    size_t pos = 0;
    for (size_t i = 0; i <= cuts.size(); ++i) {
        unsigned n = static_cast<unsigned>(i < cuts.size() ? cuts[i] : m.size() - pos);
        if (pos + n > m.size()) n = static_cast<unsigned>(m.size() - pos);
        for (auto& s : s94) GOST_34_11_94_hash_write(m.data() + pos, n, &s);
        GOST_34_11_2012_hash_write(m.data() + pos, n, &s256);
        GOST_34_11_2012_hash_write(m.data() + pos, n, &s512);
        pos += n;
    }
    GOST_34_11_2012_hash_256_bit(m.data(), len, &one[2]);
    GOST_34_11_2012_hash_512_bit(m.data(), len, &one512);
    for (int i = 0; i < 2; ++i) {
        GOST_34_11_94_hash(m.data(), len, i ? &start : nullptr, &one[i]);
        GOST_34_11_94_hash_end(&got[i], &s94[i]);
    }
    GOST_34_11_2012_hash_256_end(&got[2], &s256);
    GOST_34_11_2012_hash_512_end(&got512, &s512);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(hex(got[i]), hex(one[i])) << i;
    EXPECT_EQ(hex(got512), hex(one512));
    // base() from a caller-set h is the one-shot hash.
    std::memset(h.b, 0, 64);
    GOST_34_11_2012_base(m.data(), len, &h);
    EXPECT_EQ(hex(h), hex(one512));
    std::memset(h.b, 1, 64);
    GOST_34_11_2012_base(m.data(), len, &h);
    EXPECT_EQ(kt::to_hex(h.b + 32, 32), hex(one[2]));
}

TEST(HashStream, EqualsOneShot) {
    kt::Rng rng(94);
    // Cuts around the block sizes, then random ones with many tiny pieces.
    check_stream(rng.bytes(200), {1, 31, 32, 33});
    check_stream(rng.bytes(300), {1, 63, 64, 65});
    check_stream(rng.bytes(7), {0, 0, 7});
    for (size_t n : {0, 32, 33, 64}) check_stream(rng.bytes(n), {n});
    for (int t = 0; t < 40; ++t) {
        Bytes m = rng.bytes(rng.below(900));
        std::vector<size_t> cuts;
        for (size_t pos = 0; pos < m.size(); pos += cuts.back())
            cuts.push_back(rng.below(3) == 0 ? rng.below(4) : rng.below(150));
        check_stream(m, cuts);
    }
}

// 34.11-94's end works on a copy: it can be called again, and writing goes
// on after it. 34.11-2012's end spends the record until it is re-initialised.
TEST(HashStream, EndKeepsOrSpendsState) {
    kt::Rng rng(5);
    Bytes m = rng.bytes(100);
    stream_hash_t st;
    GOST_34_11_94_hash_init(nullptr, &st);
    GOST_34_11_94_hash_write(m.data(), 45, &st);
    stream_hash_t before = st;
    type_uN<32> e1, prefix, whole, all;
    GOST_34_11_94_hash_end(&e1, &st);
    EXPECT_EQ(0, std::memcmp(&before, &st, sizeof st));
    GOST_34_11_94_hash(m.data(), 45, nullptr, &prefix);
    EXPECT_EQ(hex(e1), hex(prefix));
    GOST_34_11_94_hash_write(m.data() + 45, 55, &st);
    GOST_34_11_94_hash_end(&all, &st);
    GOST_34_11_94_hash(m.data(), 100, nullptr, &whole);
    EXPECT_EQ(hex(all), hex(whole));

    stream_hash_2012_t s12;
    type_uN<64> first, second;
    for (int round = 0; round < 2; ++round) {
        GOST_34_11_2012_hash_512_init(&s12);
        GOST_34_11_2012_hash_write(m.data(), 10, &s12);
        GOST_34_11_2012_hash_512_end(round ? &second : &first, &s12);
    }
    EXPECT_EQ(hex(first), hex(second));  // re-initialised, the record works again
    GOST_34_11_2012_hash_512_end(&second, &s12);
    EXPECT_NE(hex(first), hex(second));
}

// 34.11-94 moves only the low 32-bit word of its length field, modulo 2^32
// (a message of 2^29 bytes or more hashes with its bit length mod 2^32);
// the 34.11-2012 counter carries through all 512 bits.
TEST(HashStream, LengthCounters) {
    kt::Rng rng(6);
    Bytes m = rng.bytes(64);
    stream_hash_t st;
    GOST_34_11_94_hash_init(nullptr, &st);
    const unsigned char near_top[4] = {0x00, 0xFF, 0xFF, 0xFF};  // 0xFFFFFF00
    std::memcpy(st.length.b, near_top, 4);
    GOST_34_11_94_hash_write(m.data(), 64, &st);  // + 512 bits
    unsigned char expect[64] = {0x00, 0x01};      // 0x100, upper words zero
    EXPECT_EQ(kt::to_hex(st.length.b, 32), kt::to_hex(expect, 32));
    // The same blocks from a zero length end with length 0x200: moving the
    // wrapped state's length there gives the plain hash.
    type_uN<32> plain, moved;
    GOST_34_11_94_hash(m.data(), 64, nullptr, &plain);
    st.length.b[1] = 0x02;
    GOST_34_11_94_hash_end(&moved, &st);
    EXPECT_EQ(hex(moved), hex(plain));

    stream_hash_2012_t s12;
    GOST_34_11_2012_hash_512_init(&s12);
    std::memset(s12.N.b, 0xFF, 8);
    s12.N.b[0] = 0x00;
    s12.N.b[1] = 0xFE;  // 2^64 - 512
    GOST_34_11_2012_hash_write(m.data(), 64, &s12);
    std::memset(expect, 0, 64);
    expect[8] = 1;  // carried into word 1
    EXPECT_EQ(kt::to_hex(s12.N.b, 64), kt::to_hex(expect, 64));
}

TEST(HashStream, Gost94EndAddsTailBitsModulo2_32) {
    // End adds 8t for the t pending bytes to the low length word of its copy,
    // wrapping as well: f(f(f(0, tail), L), sigma) with L = length + 8t mod 2^32.
    const struct { uint32_t length; unsigned t; } tails[] = {
        {0xFFFFFFF0u, 5}, {0xFFFFFF00u, 31}, {0xFFFFFFF8u, 1}, {0x12345600u, 17}};
    kt::Rng rng(9);
    for (const auto& c : tails) {
        Bytes m = rng.bytes(c.t);
        stream_hash_t st;
        GOST_34_11_94_hash_init(nullptr, &st);
        GOST_34_11_94_hash_write(m.data(), c.t, &st);
        std::memcpy(st.length.b, &c.length, 4);
        type_uN<32> got, h{}, blk{}, len{};
        GOST_34_11_94_hash_end(&got, &st);
        EXPECT_EQ(0, std::memcmp(st.length.b, &c.length, 4));  // the state keeps its length

        std::memcpy(blk.b, m.data(), c.t);
        const uint32_t bits = c.length + 8u * c.t;
        std::memcpy(len.b, &bits, 4);
        for (type_uN<32>* step : {&blk, &len, &blk}) GOST_34_11_94_base_step(step, &h);  // sigma = the block
        EXPECT_EQ(hex(got), hex(h)) << c.t;
    }
}

TEST(HashStream, InitValues) {
    stream_hash_2012_t a, b;
    stream_hash_t c;
    std::memset(&a, 0xAA, sizeof a);
    std::memset(&b, 0xAA, sizeof b);
    std::memset(&c, 0xAA, sizeof c);
    GOST_34_11_2012_hash_256_init(&a);
    GOST_34_11_2012_hash_512_init(&b);
    GOST_34_11_94_hash_init(nullptr, &c);
    const std::string z64(128, '0');
    EXPECT_EQ(hex(a.h), kt::to_hex(Bytes(64, 1)));
    EXPECT_EQ(hex(b.h), z64);
    for (auto* s : {&a, &b}) {
        EXPECT_EQ(hex(s->sigma) + hex(s->N), z64 + z64);
        EXPECT_EQ(s->pending_len, 0);
    }
    EXPECT_EQ(hex(c.H) + hex(c.sigma) + hex(c.length), std::string(192, '0'));
    EXPECT_EQ(c.pending_len, 0);
}

}  // namespace
