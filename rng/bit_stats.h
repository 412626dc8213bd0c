// Statistics of the generator's start-up test over one bit stream, read as
// 64-bit little-endian words, each from bit 0 up: the number of ones, the
// number of bits that differ from the bit 1 and 8 places later, and the
// longest runs of ones and of zeros. Words arrive one by one; a word is
// counted when its successor is known, because the pair counts cross word
// (and buffer) boundaries. At the end of the stream the missing successor
// bits are 0.
#ifndef KORVEX_RNG_BIT_STATS_H
#define KORVEX_RNG_BIT_STATS_H

#include <stddef.h>
#include <stdint.h>

namespace kx {

struct BitCounts {
    uint32_t ones;
    uint32_t diff1;   // bit i != bit i + 1
    uint32_t diff8;   // bit i != bit i + 8
    uint32_t run1;    // longest run of ones
    uint32_t run0;    // longest run of zeros
};

class BitStats {
public:
    // Starts a new stream (all counts and runs reset).
    void reset();
    // Feeds n words of the stream.
    void feed(const unsigned char* words, size_t n);
    // Ends the stream and returns its counts.
    BitCounts finish();

private:
    void count(uint64_t w, uint64_t next);
    void flush_counts();
    void runs(uint64_t w);

    uint64_t pending_;        // the last word fed, not yet counted
    bool have_pending_;
    // Byte-lane partial sums of the three pair/bit counts, flushed to the
    // totals before a lane can overflow.
    uint64_t lanes_[3];
    unsigned lane_words_;
    uint32_t total_[3];
    // The run reaching the top of the last word counted: its bit and length.
    unsigned run_bit_;
    uint32_t run_len_;
    bool run_started_;
    uint32_t longest_[2];
};

// The bounds of the test: every count within 408434..410765, both longest
// runs within 14..29.
bool bit_counts_pass(const BitCounts& c);

}  // namespace kx

#endif
