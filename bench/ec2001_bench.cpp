// GOST R 34.10-2001 on CryptoPro-A (set 1): key pairs, signatures,
// verifications and VKO per second (items/s).
#include <benchmark/benchmark.h>

#include <cstring>

#include "GOST_34_10_2001.h"
#include "GOST_34_10_2012.h"
#include "PRNG.h"

namespace {

constexpr unsigned char kSet = 1;

void seed() {
    unsigned char s[40];
    for (int i = 0; i < 40; ++i) s[i] = static_cast<unsigned char>(0x5A ^ (i * 7));
    PRNG_init(s);
}

struct Keys {
    type_uN<32> d, d2, hash;
    type_uN<64> Q, Q2, sig;
    Keys() {
        seed();
        GOST_34_10_2001_gen_key_pair(&d, &Q, kSet);
        GOST_34_10_2001_gen_key_pair(&d2, &Q2, kSet);
        for (int i = 0; i < 32; ++i) hash.b[i] = static_cast<unsigned char>(i * 29 + 3);
        GOST_34_10_2001_create_DS(&hash, &d, &sig, kSet);
    }
};

void BM_Gost2001_KeyPair(benchmark::State& st) {
    seed();
    type_uN<32> d;
    type_uN<64> Q;
    for (auto _ : st) {
        benchmark::DoNotOptimize(GOST_34_10_2001_gen_key_pair(&d, &Q, kSet));
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations());
}
BENCHMARK(BM_Gost2001_KeyPair)->Unit(benchmark::kMillisecond);

void BM_Gost2001_Sign(benchmark::State& st) {
    Keys k;
    for (auto _ : st) {
        benchmark::DoNotOptimize(GOST_34_10_2001_create_DS(&k.hash, &k.d, &k.sig, kSet));
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations());
}
BENCHMARK(BM_Gost2001_Sign)->Unit(benchmark::kMillisecond);

void BM_Gost2001_Verify(benchmark::State& st) {
    Keys k;
    for (auto _ : st) {
        if (GOST_34_10_2001_check_DS(&k.hash, &k.Q, &k.sig, kSet) != 1) st.SkipWithError("signature rejected");
    }
    st.SetItemsProcessed(st.iterations());
}
BENCHMARK(BM_Gost2001_Verify)->Unit(benchmark::kMillisecond);

void BM_Gost2001_VKO(benchmark::State& st) {
    Keys k;
    unsigned long long ukm = 0x1122334455667788ull;
    type_uN<32> out;
    for (auto _ : st) {
        GOST_34_10_2001_VKO(&out, &ukm, &k.d, &k.Q2, kSet);
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations());
}
BENCHMARK(BM_Gost2001_VKO)->Unit(benchmark::kMillisecond);

void BM_Gost2012_VKO_256(benchmark::State& st) {
    Keys k;
    unsigned long long ukm = 0x1122334455667788ull;
    type_uN<32> out;
    for (auto _ : st) {
        GOST_34_10_2012_VKO_256(&out, &ukm, &k.d, &k.Q2, kSet);
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations());
}
BENCHMARK(BM_Gost2012_VKO_256)->Unit(benchmark::kMillisecond);

// The field multiplication and inversion behind every point operation.
void BM_Gost2001_MulModP(benchmark::State& st) {
    Keys k;
    type_uN<32> p, r;
    std::memset(p.b, 0xFF, 32);
    p.b[0] = 0x97;
    p.b[1] = 0xFD;
    type_uN<32> a = k.d;  // d < q < p
    for (auto _ : st) {
        GOST_34_10_2001_mul_mod_p_256_bit(&r, &a, &a, &p);
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations());
}
BENCHMARK(BM_Gost2001_MulModP);

void BM_Gost2001_DivModP(benchmark::State& st) {
    Keys k;
    type_uN<32> p, x;
    std::memset(p.b, 0xFF, 32);
    p.b[0] = 0x97;
    p.b[1] = 0xFD;
    for (auto _ : st) {
        x = k.d;
        GOST_34_10_2001_div_mod_p_256_bit(&x, nullptr, &p);
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations());
}
BENCHMARK(BM_Gost2001_DivModP);

}  // namespace
