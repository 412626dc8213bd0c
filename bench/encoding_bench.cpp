// Encodings: the library's copy routine on 64 KiB (glibc memcpy alongside as
// the reference), CRC-32 in its bitwise and table forms, Base64.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "bench_util.h"
#include "ASN1.h"
#include "Base64.h"
#include "CRC32.h"

namespace {

using kb::filler;

constexpr size_t k64K = 64 * 1024;

// Offsets of source and destination from a 64-byte boundary.
void BM_ASN1_mem_copy(benchmark::State& state) {
    std::vector<unsigned char> src = filler(k64K + 64, 1), dst(k64K + 64);
    unsigned char* s = src.data() + state.range(0);
    unsigned char* d = dst.data() + state.range(1);
    for (auto _ : state) {
        ASN1_mem_copy(s, d, k64K);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * k64K);
}
BENCHMARK(BM_ASN1_mem_copy)->Args({0, 0})->Args({3, 7});

void BM_glibc_memcpy(benchmark::State& state) {
    std::vector<unsigned char> src = filler(k64K + 64, 1), dst(k64K + 64);
    unsigned char* s = src.data() + state.range(0);
    unsigned char* d = dst.data() + state.range(1);
    for (auto _ : state) {
        std::memcpy(d, s, k64K);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * k64K);
}
BENCHMARK(BM_glibc_memcpy)->Args({0, 0})->Args({3, 7});

void BM_ASN1_mem_move(benchmark::State& state) {
    std::vector<unsigned char> buf = filler(k64K + 64, 1);
    for (auto _ : state) {
        ASN1_mem_move(buf.data(), buf.data() + 32, k64K);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * k64K);
}
BENCHMARK(BM_ASN1_mem_move);

template <unsigned int (*Crc)(unsigned char*, unsigned int)>
void BM_CRC32(benchmark::State& state) {
    std::vector<unsigned char> data = filler(static_cast<size_t>(state.range(0)), 2);
    for (auto _ : state) benchmark::DoNotOptimize(Crc(data.data(), static_cast<unsigned int>(data.size())));
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK_TEMPLATE(BM_CRC32, CRC32_block)->Name("BM_CRC32_block")->Arg(k64K);
BENCHMARK_TEMPLATE(BM_CRC32, CRC32_block_lookup)->Name("BM_CRC32_block_lookup")->Arg(64)->Arg(k64K);

void BM_CRC32_stream(benchmark::State& state) {
    std::vector<unsigned char> data = filler(k64K, 2);
    for (auto _ : state) {
        unsigned int reg = 0xFFFFFFFFu;
        CRC32_stream(&reg, data.data(), k64K);
        benchmark::DoNotOptimize(reg);
    }
    state.SetBytesProcessed(state.iterations() * k64K);
}
BENCHMARK(BM_CRC32_stream);

void BM_Base64_code_msg(benchmark::State& state) {
    std::vector<unsigned char> data = filler(k64K - 1, 3);
    std::vector<unsigned char> text((data.size() + 2) / 3 * 4);
    for (auto _ : state) benchmark::DoNotOptimize(Base64_code_msg(data.data(), static_cast<unsigned int>(data.size()), text.data()));
    state.SetBytesProcessed(state.iterations() * data.size());
}
BENCHMARK(BM_Base64_code_msg);

void BM_Base64_decode_msg(benchmark::State& state) {
    std::vector<unsigned char> data = filler(k64K - 1, 3);
    std::vector<unsigned char> text((data.size() + 2) / 3 * 4), back(text.size() / 4 * 3);
    Base64_code_msg(data.data(), static_cast<unsigned int>(data.size()), text.data());
    for (auto _ : state) benchmark::DoNotOptimize(Base64_decode_msg(text.data(), static_cast<unsigned int>(text.size()), back.data()));
    state.SetBytesProcessed(state.iterations() * text.size());
}
BENCHMARK(BM_Base64_decode_msg);

}  // namespace
