// The GOST R 34.11-2012 compression function, built twice: with SSE2 (every
// x86-64 processor) and with AVX2, whose eight lanes take the L pass over all
// eight words of a value at once. The processor is asked on first use.
#include <atomic>
#include <cpuid.h>

#include "hash/streebog_core.h"

namespace kx {
namespace streebog {
namespace {

void compress_sse2(Block& h, const Block& N, const Block& m) { compress_with<Sse2>(h, N, m); }

__attribute__((target("avx2"))) void compress_avx2(Block& h, const Block& N, const Block& m) {
    compress_with<Avx2>(h, N, m);
}

// AVX2 needs the CPU flag and the system saving the YMM state (XCR0 bits 1
// and 2). Constant-initialised and probed lazily: 0 = not yet, 1 = no, 2 = yes.
std::atomic<int> g_avx2{0};

bool have_avx2() {
    int s = g_avx2.load(std::memory_order_relaxed);
    if (s == 0) {
        unsigned a, b, c, d;
        bool ok = false;
        if (__get_cpuid(1, &a, &b, &c, &d) && (c & bit_OSXSAVE) && (c & bit_AVX)) {
            unsigned lo, hi;
            __asm__("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
            ok = (lo & 6) == 6 && __get_cpuid_count(7, 0, &a, &b, &c, &d) && (b & bit_AVX2);
        }
        s = ok ? 2 : 1;
        g_avx2.store(s, std::memory_order_relaxed);
    }
    return s == 2;
}

}  // namespace

void compress(Block& h, const Block& N, const Block& m) {
    if (have_avx2())
        compress_avx2(h, N, m);
    else
        compress_sse2(h, N, m);
}

}  // namespace streebog
}  // namespace kx
