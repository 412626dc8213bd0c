// Helpers shared by the benchmarks.
#ifndef KORVEX_BENCH_BENCH_UTIL_H
#define KORVEX_BENCH_BENCH_UTIL_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kb {

// Deterministic filler bytes (xorshift64*).
inline std::vector<unsigned char> filler(size_t n, uint64_t seed) {
    std::vector<unsigned char> b(n);
    uint64_t s = seed * 0x9E3779B97F4A7C15ull + 1;
    for (auto& c : b) {
        s ^= s >> 12;
        s ^= s << 25;
        s ^= s >> 27;
        c = static_cast<unsigned char>((s * 0x2545F4914F6CDD1Dull) >> 56);
    }
    return b;
}

}  // namespace kb

#endif
