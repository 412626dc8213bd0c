// GOST 28147-89 throughput over 8 KiB buffers (MB/s from bytes processed).
#include <benchmark/benchmark.h>

#include <vector>

#include "GOST_28147_89.h"

namespace {

constexpr unsigned kLen = 8192;

struct Fixture {
    type_uN<32> key;
    type_u64 iv = 0x0123456789ABCDEFull;
    std::vector<unsigned char> data = std::vector<unsigned char>(kLen);
    Fixture() {
        for (unsigned i = 0; i < 32; ++i) key.b[i] = static_cast<unsigned char>(i * 13 + 1);
        for (unsigned i = 0; i < kLen; ++i) data[i] = static_cast<unsigned char>(i);
    }
};

using ModeFn = void (*)(unsigned char*, unsigned int, type_uN<32>*, type_u64*, unsigned char);

void run_mode(benchmark::State& st, ModeFn f) {
    Fixture fx;
    for (auto _ : st) {
        f(fx.data.data(), kLen, &fx.key, &fx.iv, 0);
        benchmark::ClobberMemory();
    }
    st.SetBytesProcessed(static_cast<int64_t>(st.iterations()) * kLen);
}

void BM_Gost89_ECB_Encrypt(benchmark::State& st) {
    run_mode(st, [](unsigned char* d, unsigned int n, type_uN<32>* k, type_u64*, unsigned char s) { GOST_28147_89_Z_ECB(d, n, k, s); });
}
void BM_Gost89_ECB_Decrypt(benchmark::State& st) {
    run_mode(st, [](unsigned char* d, unsigned int n, type_uN<32>* k, type_u64*, unsigned char s) { GOST_28147_89_R_ECB(d, n, k, s); });
}
void BM_Gost89_CTR(benchmark::State& st) { run_mode(st, GOST_28147_89_ZR_CTR); }
void BM_Gost89_CFB_Encrypt(benchmark::State& st) { run_mode(st, GOST_28147_89_Z_CFB); }
void BM_Gost89_CFB_Decrypt(benchmark::State& st) { run_mode(st, GOST_28147_89_R_CFB); }
void BM_Gost89_CBC_Encrypt(benchmark::State& st) {
    run_mode(st, [](unsigned char* d, unsigned int n, type_uN<32>* k, type_u64* iv, unsigned char s) {
        benchmark::DoNotOptimize(GOST_28147_89_Z_CBC(d, n, k, iv, s));
    });
}
void BM_Gost89_CBC_Decrypt(benchmark::State& st) { run_mode(st, GOST_28147_89_R_CBC); }
void BM_Gost89_MAC(benchmark::State& st) {
    run_mode(st, [](unsigned char* d, unsigned int n, type_uN<32>* k, type_u64* iv, unsigned char s) {
        benchmark::DoNotOptimize(GOST_28147_89_MAC(d, n, k, iv, s));
    });
}

}  // namespace

// CPU time, as openssl speed reports by default; on a shared machine run
// with --benchmark_repetitions=N and read the medians.
BENCHMARK(BM_Gost89_ECB_Encrypt);
BENCHMARK(BM_Gost89_ECB_Decrypt);
BENCHMARK(BM_Gost89_CTR);
BENCHMARK(BM_Gost89_CFB_Encrypt);
BENCHMARK(BM_Gost89_CFB_Decrypt);
BENCHMARK(BM_Gost89_CBC_Encrypt);
BENCHMARK(BM_Gost89_CBC_Decrypt);
BENCHMARK(BM_Gost89_MAC);
