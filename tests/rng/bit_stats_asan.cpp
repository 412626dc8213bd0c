// The start-up test's word-parallel counts against the bit-by-bit model, on
// streams built to stress word and buffer boundaries, and its bounds. The
// counting code is internal; this program links the static library build,
// where it is reachable.
#include <gtest/gtest.h>

#include "../../rng/bit_stats.h"
#include "PRNG.h"
#include "rng/prng_model.h"

namespace kx {
extern unsigned char prng_test_buffer[1024];
}

namespace {

using kt::Bytes;

kx::BitCounts count(const Bytes& s, size_t chunk) {
    kx::BitStats st;
    st.reset();
    for (size_t i = 0; i < s.size(); i += chunk) st.feed(s.data() + i, std::min(chunk, s.size() - i) / 8);
    return st.finish();
}

void expect_same(const Bytes& s, const char* what) {
    kt::ModelCounts m(s);
    for (size_t chunk : {size_t(8), size_t(1024), s.size()}) {
        kx::BitCounts c = count(s, chunk);
        EXPECT_EQ(c.ones, m.ones) << what;
        EXPECT_EQ(c.diff1, m.diff1) << what;
        EXPECT_EQ(c.diff8, m.diff8) << what;
        EXPECT_EQ(c.run1, m.run1) << what;
        EXPECT_EQ(c.run0, m.run0) << what;
        EXPECT_EQ(kx::bit_counts_pass(c), m.pass()) << what;
    }
}

TEST(BitStats, MatchesBitByBitModel) {
    kt::Rng rng(5);
    expect_same(rng.bytes(102400), "random, one attempt");
    expect_same(rng.bytes(8), "one word");
    expect_same(Bytes(4096, 0), "all zero");
    expect_same(Bytes(4096, 0xFF), "all ones");
    expect_same(Bytes(4096, 0x55), "alternating");
    expect_same(Bytes(4096, 0x0F), "nibbles");

    // Long runs across words, across 1024-byte buffers and at the very end.
    Bytes s = rng.bytes(8192);
    for (size_t i = 1020; i < 1030; ++i) s[i] = 0xFF;  // 80 ones over a buffer edge
    for (size_t i = 2044; i < 2052; ++i) s[i] = 0x00;
    for (size_t i = 4092; i < 4100; ++i) s[i] = 0x00;  // a whole word of zeros...
    s[4091] &= 0x7F;                                   // ...joined to the one before
    s[4100] &= 0xFE;                                   // ...and to the one after
    for (size_t i = 8180; i < 8192; ++i) s[i] = 0xFF;  // a run over two words to the end
    expect_same(s, "planted runs");
    s[8191] = 0x80;  // the final bit set: its successors count as 0
    expect_same(s, "last bit");
}

TEST(BitStats, Bounds) {
    auto make = [](uint32_t v, uint32_t r) { return kx::BitCounts{v, v, v, r, r}; };
    EXPECT_TRUE(kx::bit_counts_pass(make(408434, 14)));
    EXPECT_TRUE(kx::bit_counts_pass(make(410765, 29)));
    EXPECT_FALSE(kx::bit_counts_pass(make(408433, 20)));
    EXPECT_FALSE(kx::bit_counts_pass(make(410766, 20)));
    EXPECT_FALSE(kx::bit_counts_pass(make(409600, 13)));
    EXPECT_FALSE(kx::bit_counts_pass(make(409600, 30)));
    kx::BitCounts c = make(409600, 20);
    c.diff8 = 0;
    EXPECT_FALSE(kx::bit_counts_pass(c));
    c = make(409600, 20);
    c.run0 = 30;
    EXPECT_FALSE(kx::bit_counts_pass(c));
}

TEST(PrngBuffer, ClearedAfterPass) {
    kt::Bytes seed = kt::Rng(3).bytes(40);
    ASSERT_EQ(PRNG_init(seed.data()), 0);
    for (unsigned char c : kx::prng_test_buffer) ASSERT_EQ(c, 0);
}

}  // namespace
