// An independent model of the generator for the tests, built on the exported
// CFB mode exactly as the generator is defined: 72 zero bytes enciphered
// under the state's key and synchro with selector 2, the first 40 bytes the
// new state, the last 32 the output. The start-up test is modelled bit by bit.
#ifndef KORVEX_TESTS_RNG_PRNG_MODEL_H
#define KORVEX_TESTS_RNG_PRNG_MODEL_H

#include <algorithm>
#include <array>
#include <cstring>

#include "GOST_28147_89.h"
#include "common/test_util.h"

namespace kt {

using Out32 = std::array<unsigned char, 32>;

struct PrngModel {
    unsigned char st[40];

    explicit PrngModel(const unsigned char* seed) { std::memcpy(st, seed, 40); }
    Bytes state() const { return Bytes(st, st + 40); }

    Out32 step() {
        unsigned char buf[72] = {};
        type_uN<32> key;
        type_u64 syn;
        std::memcpy(key.b, st, 32);
        std::memcpy(&syn, st + 32, 8);
        GOST_28147_89_Z_CFB(buf, 72, &key, &syn, 2);
        std::memcpy(st, buf, 40);
        Out32 out;
        std::memcpy(out.data(), buf + 40, 32);
        return out;
    }
};

// The start-up test's counts over a bit stream given as bytes, each read
// from bit 0 to bit 7; bits past the end count as 0 for the pair counts.
struct ModelCounts {
    unsigned ones = 0, diff1 = 0, diff8 = 0, run1 = 0, run0 = 0;

    explicit ModelCounts(const Bytes& stream) {
        const size_t n = stream.size() * 8;
        auto bit = [&](size_t i) { return i < n ? (stream[i / 8] >> (i % 8)) & 1 : 0; };
        unsigned run = 0, longest[2] = {0, 0};
        for (size_t i = 0; i < n; ++i) {
            int b = bit(i);
            ones += b;
            diff1 += b != bit(i + 1);
            diff8 += b != bit(i + 8);
            run = i && b == bit(i - 1) ? run + 1 : 1;
            longest[b] = std::max(longest[b], run);
        }
        run0 = longest[0];
        run1 = longest[1];
    }

    bool pass() const {
        auto in = [](unsigned v, unsigned lo, unsigned hi) { return v >= lo && v <= hi; };
        return in(ones, 408434, 410765) && in(diff1, 408434, 410765) && in(diff8, 408434, 410765) &&
               in(run1, 14, 29) && in(run0, 14, 29);
    }
};

// Runs the modelled self-test on m: the attempt (1..5) that passed, or 0
// when all five failed; m is left where the generator is.
inline int model_init(PrngModel& m) {
    for (int attempt = 1; attempt <= 5; ++attempt) {
        Bytes stream;
        for (int i = 0; i < 3200; ++i) {
            Out32 o = m.step();
            stream.insert(stream.end(), o.begin(), o.end());
        }
        if (ModelCounts(stream).pass()) return attempt;
    }
    return 0;
}

}  // namespace kt

#endif
