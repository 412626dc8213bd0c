// The generator: seeding with its self-test (one attempt = 3200 steps and
// the counts over 819,200 bits) and single draws.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "bench_util.h"
#include "PRNG.h"

namespace {

using kb::filler;

// This seed passes the self-test at the first attempt (checked against the
// tests' model of the generator), so one iteration is one attempt.
void BM_PRNG_init(benchmark::State& state) {
    std::vector<unsigned char> seed = filler(40, 1);
    for (auto _ : state) {
        int r = PRNG_init(seed.data());
        benchmark::DoNotOptimize(r);
    }
    state.counters["bits_tested"] = benchmark::Counter(819200.0, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_PRNG_init)->Unit(benchmark::kMillisecond);

void BM_PRNG_get(benchmark::State& state) {
    std::vector<unsigned char> seed = filler(40, 2);
    std::memcpy(PRNG_get_RAND_ptr(), seed.data(), 40);
    type_uN<32> out;
    for (auto _ : state) {
        int r = PRNG_get(&out);
        benchmark::DoNotOptimize(r);
        benchmark::DoNotOptimize(out);
    }
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * 32);
}
BENCHMARK(BM_PRNG_get);
BENCHMARK(BM_PRNG_get)->Threads(2);

}  // namespace
