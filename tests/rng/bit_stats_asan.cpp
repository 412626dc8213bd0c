// The start-up test's word-parallel counts against the bit-by-bit model, on
// streams built to stress word and buffer boundaries, and its bounds. The
// counting code is internal; this program links the static library build,
// where it is reachable.
#include <gtest/gtest.h>

#include <tuple>

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
        auto all = [](const auto& x) { return std::make_tuple(x.ones, x.diff1, x.diff8, x.run1, x.run0); };
        EXPECT_EQ(all(c), all(m)) << what << ", fed " << chunk << " bytes at a time";
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
    // All counts at their limits and just outside them; then each count alone out of range.
    const struct { uint32_t v, r; bool pass; } edges[] = {
        {408434, 14, true}, {410765, 29, true}, {408433, 20, false},
        {410766, 20, false}, {409600, 13, false}, {409600, 30, false},
    };
    for (const auto& e : edges) EXPECT_EQ(kx::bit_counts_pass({e.v, e.v, e.v, e.r, e.r}), e.pass) << e.v << " " << e.r;
    for (int field = 0; field < 5; ++field) {
        uint32_t c[5] = {409600, 409600, 409600, 20, 20};
        c[field] = field < 3 ? 0 : 30;
        EXPECT_FALSE(kx::bit_counts_pass({c[0], c[1], c[2], c[3], c[4]})) << field;
    }
}

TEST(PrngBuffer, ClearedAfterPass) {
    kt::Bytes seed = kt::Rng(3).bytes(40);
    ASSERT_EQ(PRNG_init(seed.data()), 0);
    for (unsigned char c : kx::prng_test_buffer) ASSERT_EQ(c, 0);
}

}  // namespace
