// Nettle's Streebog and PBKDF2-HMAC-Streebog-512 on the same inputs as
// hash_bench.cpp, so that compare.sh shows both in one run. Built only when
// nettle-dev is installed.
#include <benchmark/benchmark.h>
#include <nettle/hmac.h>
#include <nettle/pbkdf2.h>
#include <nettle/streebog.h>

#include <vector>

namespace {

constexpr size_t kLen = 8192;

template <class Ctx, void (*Init)(Ctx*), void (*Update)(Ctx*, size_t, const uint8_t*),
          void (*Digest)(Ctx*, size_t, uint8_t*), size_t Size>
void hash_8k(benchmark::State& state) {
    std::vector<uint8_t> m(kLen, 0xA5);
    uint8_t out[64];
    for (auto _ : state) {
        Ctx ctx;
        Init(&ctx);
        Update(&ctx, m.size(), m.data());
        Digest(&ctx, Size, out);
        benchmark::DoNotOptimize(out);
    }
    state.SetBytesProcessed(state.iterations() * kLen);
}

void BM_Nettle_Streebog256_8K(benchmark::State& s) {
    hash_8k<streebog256_ctx, streebog256_init, streebog256_update, streebog256_digest, 32>(s);
}
void BM_Nettle_Streebog512_8K(benchmark::State& s) {
    hash_8k<streebog512_ctx, streebog512_init, streebog512_update, streebog512_digest, 64>(s);
}
BENCHMARK(BM_Nettle_Streebog256_8K);
BENCHMARK(BM_Nettle_Streebog512_8K);

// The library's PBKDF2 call: 13-byte password, 4-byte salt and block index,
// 2000 iterations, 32 bytes out (one HMAC-Streebog-512 block).
void BM_Nettle_Pbkdf2_2012_2000(benchmark::State& state) {
    const uint8_t pass[13] = {'p', 'a', 's', 's', 'w', 'o', 'r', 'd', '-', '1', '2', '3', '4'};
    const uint8_t salt[4] = {1, 2, 3, 4};
    uint8_t out[32];
    for (auto _ : state) {
        hmac_streebog512_ctx ctx;
        hmac_streebog512_set_key(&ctx, sizeof pass, pass);
        PBKDF2(&ctx, hmac_streebog512_update, hmac_streebog512_digest, 64, 2000, sizeof salt, salt, sizeof out, out);
        benchmark::DoNotOptimize(out);
    }
}
BENCHMARK(BM_Nettle_Pbkdf2_2012_2000)->Unit(benchmark::kMillisecond);

}  // namespace
