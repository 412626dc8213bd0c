// Throughput of the hashes over 8 KiB messages, and PBKDF2 with the 2000
// iterations the key containers use.
#include <benchmark/benchmark.h>

#include <vector>

#include "GOST_34_11_2012.h"
#include "GOST_34_11_94.h"
#include "pkcs5.h"

namespace {

constexpr unsigned kLen = 8192;

std::vector<unsigned char> message() {
    std::vector<unsigned char> m(kLen);
    for (unsigned i = 0; i < kLen; ++i) m[i] = static_cast<unsigned char>(i * 131 + 7);
    return m;
}

void BM_Gost94_8K(benchmark::State& state) {
    auto m = message();
    type_uN<32> out;
    for (auto _ : state) {
        GOST_34_11_94_hash(m.data(), kLen, nullptr, &out);
        benchmark::DoNotOptimize(out);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * kLen);
}
BENCHMARK(BM_Gost94_8K);

void BM_Streebog256_8K(benchmark::State& state) {
    auto m = message();
    type_uN<32> out;
    for (auto _ : state) {
        GOST_34_11_2012_hash_256_bit(m.data(), kLen, &out);
        benchmark::DoNotOptimize(out);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * kLen);
}
BENCHMARK(BM_Streebog256_8K);

void BM_Streebog512_8K(benchmark::State& state) {
    auto m = message();
    type_uN<64> out;
    for (auto _ : state) {
        GOST_34_11_2012_hash_512_bit(m.data(), kLen, &out);
        benchmark::DoNotOptimize(out);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * kLen);
}
BENCHMARK(BM_Streebog512_8K);

void BM_Pbkdf2_94_2000(benchmark::State& state) {
    unsigned char pass[] = "correct horse", salt[4] = {1, 2, 3, 4};
    type_uN<32> out;
    for (auto _ : state) {
        pkcs5_PBKDF2(pass, 13, salt, 2000, &out);
        benchmark::DoNotOptimize(out);
    }
}
BENCHMARK(BM_Pbkdf2_94_2000)->Unit(benchmark::kMillisecond);

void BM_Pbkdf2_2012_2000(benchmark::State& state) {
    unsigned char pass[] = "correct horse", salt[4] = {1, 2, 3, 4};
    type_uN<32> out;
    for (auto _ : state) {
        pkcs5_PBKDF2_2012(pass, 13, salt, 2000, &out);
        benchmark::DoNotOptimize(out);
    }
}
BENCHMARK(BM_Pbkdf2_2012_2000)->Unit(benchmark::kMillisecond);

}  // namespace
