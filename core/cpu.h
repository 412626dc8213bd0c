// Processor features for the kernels that have a wider form. Internal.
#ifndef KORVEX_ENCODING_CPU_H
#define KORVEX_ENCODING_CPU_H

#include <atomic>
#include <cpuid.h>

namespace kx {

// AVX2 needs the CPU flag and the system saving the YMM state (XCR0 bits 1
// and 2). Probed on first use and cached; the cache is constant-initialised,
// so loading the library runs no code.
inline bool cpu_has_avx2() {
    static std::atomic<int> state{0};  // 0 = not yet probed, 1 = no, 2 = yes
    int s = state.load(std::memory_order_relaxed);
    if (s == 0) {
        unsigned a, b, c, d;
        bool ok = false;
        if (__get_cpuid(1, &a, &b, &c, &d) && (c & bit_OSXSAVE) && (c & bit_AVX)) {
            unsigned lo, hi;
            __asm__("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
            ok = (lo & 6) == 6 && __get_cpuid_count(7, 0, &a, &b, &c, &d) && (b & bit_AVX2);
        }
        s = ok ? 2 : 1;
        state.store(s, std::memory_order_relaxed);
    }
    return s == 2;
}

// AVX-512 F, BW and VBMI, with the system saving the opmask and ZMM state
// (XCR0 bits 5-7) as well as XMM and YMM. Probed once, as above.
inline bool cpu_has_avx512vbmi() {
    static std::atomic<int> state{0};
    int s = state.load(std::memory_order_relaxed);
    if (s == 0) {
        unsigned a, b, c, d;
        bool ok = false;
        if (__get_cpuid(1, &a, &b, &c, &d) && (c & bit_OSXSAVE)) {
            unsigned lo, hi;
            __asm__("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
            ok = (lo & 0xE6) == 0xE6 && __get_cpuid_count(7, 0, &a, &b, &c, &d) && (b & (1u << 16)) &&
                 (b & (1u << 30)) && (c & (1u << 1));
        }
        s = ok ? 2 : 1;
        state.store(s, std::memory_order_relaxed);
    }
    return s == 2;
}

}  // namespace kx

#endif
