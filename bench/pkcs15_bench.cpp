// PKCS#15 containers per second: creation and reading, both generations.
// Every call derives the KEK with 2000 PBKDF2 iterations (HMAC GOST R
// 34.11-94 for 2001, HMAC GOST R 34.11-2012-512 for 2012), which dominates.
#include <benchmark/benchmark.h>

#include <vector>

#include "PRNG.h"
#include "pkcs15.h"

namespace {

unsigned char kPassword[] = "password123";

void seed() {
    unsigned char s[40];
    for (int i = 0; i < 40; ++i) s[i] = static_cast<unsigned char>(i * 11 + 3);
    PRNG_init(s);
}

struct Inputs {
    TSecretKey key;
    type_uN<32> key32;
    unsigned char rnd[40];
    Inputs() {
        for (int i = 0; i < 64; ++i) key.b[i] = static_cast<unsigned char>(i + 1);
        for (int i = 0; i < 32; ++i) key32.b[i] = key.b[i];
        for (int i = 0; i < 40; ++i) rnd[i] = static_cast<unsigned char>(0xA0 + i);
    }
};

void BM_create_2001(benchmark::State& st) {
    seed();
    Inputs in;
    std::vector<unsigned char> out(1024);
    for (auto _ : st)
        benchmark::DoNotOptimize(pkcs15_create_conteiner(out.data(), &in.key32, in.rnd, kPassword, 11));
    st.SetItemsProcessed(st.iterations());
}

void BM_create_2012(benchmark::State& st) {
    seed();
    Inputs in;
    std::vector<unsigned char> out(1024);
    unsigned char kind = static_cast<unsigned char>(st.range(0));
    for (auto _ : st)
        benchmark::DoNotOptimize(pkcs15_create_conteiner_2012(out.data(), &in.key, in.rnd, 0, kPassword, 11, kind));
    st.SetItemsProcessed(st.iterations());
}

void BM_get_key_2001(benchmark::State& st) {
    seed();
    Inputs in;
    std::vector<unsigned char> c(1024);
    pkcs15_create_conteiner(c.data(), &in.key32, in.rnd, kPassword, 11);
    type_uN<32> out;
    for (auto _ : st) benchmark::DoNotOptimize(pkcs15_get_key(c.data(), &out, kPassword, 11));
    st.SetItemsProcessed(st.iterations());
}

void BM_get_key_2012(benchmark::State& st) {
    seed();
    Inputs in;
    std::vector<unsigned char> c(1024);
    pkcs15_create_conteiner_2012(c.data(), &in.key, in.rnd, 0, kPassword, 11, static_cast<unsigned char>(st.range(0)));
    TSecretKey out;
    for (auto _ : st) benchmark::DoNotOptimize(pkcs15_get_key_2012(c.data(), &out, kPassword, 11));
    st.SetItemsProcessed(st.iterations());
}

void BM_update_2001(benchmark::State& st) {
    seed();
    Inputs in;
    std::vector<unsigned char> c(1024);
    pkcs15_create_conteiner(c.data(), &in.key32, in.rnd, kPassword, 11);
    for (auto _ : st) benchmark::DoNotOptimize(pkcs15_update(c.data(), kPassword, 11));
    st.SetItemsProcessed(st.iterations());
}

void BM_update_2012(benchmark::State& st) {
    seed();
    Inputs in;
    std::vector<unsigned char> c(1024);
    pkcs15_create_conteiner_2012(c.data(), &in.key, in.rnd, 0, kPassword, 11, 2);
    for (auto _ : st) benchmark::DoNotOptimize(pkcs15_update_2012(c.data(), kPassword, 11));
    st.SetItemsProcessed(st.iterations());
}

}  // namespace

BENCHMARK(BM_create_2001)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_create_2012)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_get_key_2001)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_get_key_2012)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_update_2001)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_update_2012)->Unit(benchmark::kMillisecond);
