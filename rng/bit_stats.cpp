// Word-parallel counting for the generator's start-up test.
#include "rng/bit_stats.h"

#include "core/bytes.h"

namespace kx {

namespace {

// Per-byte population counts of v (each byte 0..8), SWAR on nibbles: three
// subtractions of shifted copies leave each nibble's count in the nibble, a
// shifted add merges nibble pairs into bytes.
inline uint64_t byte_popcounts(uint64_t v) {
    const uint64_t m7 = 0x7777777777777777ull;
    uint64_t n = (v >> 1) & m7;
    v -= n;
    n = (n >> 1) & m7;
    v -= n;
    n = (n >> 1) & m7;
    v -= n;
    return (v + (v >> 4)) & 0x0F0F0F0F0F0F0F0Full;
}

// Sum of the eight byte lanes.
inline uint32_t lane_sum(uint64_t lanes) {
    // Pairwise sums up to 16 bits first, then one multiply folds the rest.
    lanes = (lanes & 0x00FF00FF00FF00FFull) + ((lanes >> 8) & 0x00FF00FF00FF00FFull);
    return static_cast<uint32_t>((lanes * 0x0001000100010001ull) >> 48);
}

// Byte lanes hold at most 8 per word: 31 words fit below 256.
constexpr unsigned kLaneWords = 31;

}  // namespace

void BitStats::reset() {
    pending_ = 0;
    have_pending_ = false;
    lanes_[0] = lanes_[1] = lanes_[2] = 0;
    lane_words_ = 0;
    total_[0] = total_[1] = total_[2] = 0;
    run_bit_ = 0;
    run_len_ = 0;
    run_started_ = false;
    longest_[0] = longest_[1] = 0;
}

void BitStats::flush_counts() {
    for (int i = 0; i < 3; ++i) {
        total_[i] += lane_sum(lanes_[i]);
        lanes_[i] = 0;
    }
    lane_words_ = 0;
}

void BitStats::count(uint64_t w, uint64_t next) {
    // The stream shifted by 1 and by 8 bits, continuing into the next word.
    const uint64_t by1 = (w >> 1) | (next << 63);
    const uint64_t by8 = (w >> 8) | (next << 56);
    lanes_[0] += byte_popcounts(w);
    lanes_[1] += byte_popcounts(w ^ by1);
    lanes_[2] += byte_popcounts(w ^ by8);
    if (++lane_words_ == kLaneWords) flush_counts();
    runs(w);
}

void BitStats::runs(uint64_t w) {
    for (unsigned b = 0; b < 2; ++b) {
        const uint64_t x = b ? w : ~w;  // ones where the stream has bit b
        // The run at bit 0 continues the one that ended the previous word.
        const uint32_t lead = ~x ? static_cast<uint32_t>(__builtin_ctzll(~x)) : 64;
        uint32_t best = run_started_ && run_bit_ == b ? run_len_ + lead : lead;
        // Longest run inside the word: each AND with the shifted copy
        // shortens every run by one.
        uint32_t inside = 0;
        for (uint64_t y = x; y; y &= y >> 1) ++inside;
        if (inside > best) best = inside;
        if (best > longest_[b]) longest_[b] = best;
    }
    // The run at the top of the word goes on into the next one.
    const unsigned top = static_cast<unsigned>(w >> 63);
    const uint64_t y = top ? w : ~w;
    if (~y == 0) {
        run_len_ = run_started_ && run_bit_ == top ? run_len_ + 64 : 64;
    } else {
        run_len_ = static_cast<uint32_t>(__builtin_clzll(~y));
    }
    run_bit_ = top;
    run_started_ = true;
}

void BitStats::feed(const unsigned char* words, size_t n) {
    for (size_t i = 0; i < n; ++i) {
        const uint64_t w = load64(words + 8 * i);
        if (have_pending_) count(pending_, w);
        pending_ = w;
        have_pending_ = true;
    }
}

BitCounts BitStats::finish() {
    if (have_pending_) count(pending_, 0);
    have_pending_ = false;
    flush_counts();
    BitCounts c;
    c.ones = total_[0];
    c.diff1 = total_[1];
    c.diff8 = total_[2];
    c.run1 = longest_[1];
    c.run0 = longest_[0];
    return c;
}

bool bit_counts_pass(const BitCounts& c) {
    // Each count is tested as an unsigned distance above 408434.
    const uint32_t lo = 408434, span = 410765 - 408434;
    bool ok = c.ones - lo <= span && c.diff1 - lo <= span && c.diff8 - lo <= span;
    ok = ok && c.run1 >= 14 && c.run1 <= 29 && c.run0 >= 14 && c.run0 <= 29;
    return ok;
}

}  // namespace kx
