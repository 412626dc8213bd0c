// GOST R 34.10-2012, 512-bit curves: signatures and verifications per second
// on paramSetA (selector 1), plus the two multiplications of the MP family
// against the generic one.
#include <benchmark/benchmark.h>

#include <cstring>

#include "GOST_34_10_2012.h"
#include "PRNG.h"

namespace {

struct Keys512 {
    type_uN<64> d, hash;
    type_uN<128> Q, sig;
    Keys512() {
        unsigned char seed[40];
        for (int i = 0; i < 40; ++i) seed[i] = static_cast<unsigned char>(0x51 + 7 * i);
        PRNG_init(seed);
        GOST_34_10_2012_512_gen_key_pair(&d, &Q, 1);
        for (int i = 0; i < 64; ++i) hash.b[i] = static_cast<unsigned char>(i * 13 + 1);
        hash.b[63] = 0x3F;
        GOST_34_10_2012_create_DS_512_bit(&hash, &d, &sig, 1);
    }
};

Keys512& keys() {
    static Keys512 k;
    return k;
}

void BM_Sign512_ParamSetA(benchmark::State& state) {
    Keys512& k = keys();
    type_uN<128> sig;
    for (auto _ : state) {
        benchmark::DoNotOptimize(GOST_34_10_2012_create_DS_512_bit(&k.hash, &k.d, &sig, 1));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Sign512_ParamSetA)->Unit(benchmark::kMillisecond);

void BM_Verify512_ParamSetA(benchmark::State& state) {
    Keys512& k = keys();
    int ok = 0;
    for (auto _ : state) {
        ok += GOST_34_10_2012_check_DS_512_bit(&k.hash, &k.Q, &k.sig, 1);
    }
    if (ok != static_cast<int>(state.iterations())) state.SkipWithError("signature did not verify");
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Verify512_ParamSetA)->Unit(benchmark::kMillisecond);

void BM_KeyPair512_ParamSetA(benchmark::State& state) {
    keys();
    type_uN<64> d;
    type_uN<128> Q;
    for (auto _ : state) benchmark::DoNotOptimize(GOST_34_10_2012_512_gen_key_pair(&d, &Q, 1));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_KeyPair512_ParamSetA)->Unit(benchmark::kMillisecond);

void BM_VKO512_ParamSetA(benchmark::State& state) {
    Keys512& k = keys();
    type_uN<64> out;
    for (auto _ : state) GOST_34_10_2012_VKO_512(&out, nullptr, &k.d, &k.Q, 1);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_VKO512_ParamSetA)->Unit(benchmark::kMillisecond);

// One field multiplication modulo 2^512 - 569: shift-and-add against the
// schoolbook product and fold.
type_uN<64> operand(unsigned char v) {
    type_uN<64> r;
    for (int i = 0; i < 64; ++i) r.b[i] = static_cast<unsigned char>(v + 29 * i);
    r.b[63] = 0x7F;
    return r;
}

void BM_MulModP512_Generic(benchmark::State& state) {
    type_uN<64> a = operand(3), b = operand(5), r, p;
    std::memset(p.b, 0xFF, 64);
    p.b[0] = 0xC7;
    p.b[1] = 0xFD;
    for (auto _ : state) {
        GOST_34_10_2012_mul_mod_p_512_bit(&r, &a, &b, &p);
        benchmark::DoNotOptimize(r);
    }
}
BENCHMARK(BM_MulModP512_Generic);

void BM_MulModP512_MP(benchmark::State& state) {
    type_uN<64> a = operand(3), b = operand(5), r, p;
    std::memset(p.b, 0xFF, 64);
    p.b[0] = 0xC7;
    p.b[1] = 0xFD;
    for (auto _ : state) {
        GOST_34_10_2012_mul_MP_mod_p_512_bit(&r, &a, &b, &p);
        benchmark::DoNotOptimize(r);
    }
}
BENCHMARK(BM_MulModP512_MP);

}  // namespace
