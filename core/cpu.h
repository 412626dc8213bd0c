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

// SSSE3 (pshufb): a CPU flag only. Probed on first use and cached.
inline bool cpu_has_ssse3() {
    static std::atomic<int> state{0};
    int s = state.load(std::memory_order_relaxed);
    if (s == 0) {
        unsigned a, b, c, d;
        s = __get_cpuid(1, &a, &b, &c, &d) && (c & bit_SSSE3) ? 2 : 1;
        state.store(s, std::memory_order_relaxed);
    }
    return s == 2;
}

// AVX-512 F and BW with VBMI (byte permutes), with the system saving the
// opmask and ZMM state (XCR0 bits 5-7) as well as XMM and YMM: 0 when absent,
// else CPUID leaf 7's ECX (for VBMI's kin such as GFNI) with bit 31 set.
// Probed on first use and cached like the above.
inline unsigned cpu_avx512vbmi_ecx() {
    static std::atomic<unsigned> state{0};
    unsigned s = state.load(std::memory_order_relaxed);
    if (s == 0) {
        unsigned a, b, c, d;
        bool ok = false;
        if (__get_cpuid(1, &a, &b, &c, &d) && (c & bit_OSXSAVE)) {
            unsigned lo, hi;
            __asm__("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
            ok = (lo & 0xE6) == 0xE6 && __get_cpuid_count(7, 0, &a, &b, &c, &d) && (b & (1u << 16)) &&
                 (b & (1u << 30)) && (c & (1u << 1));
        }
        s = ok ? (c | 1u << 31) : 1;
        state.store(s, std::memory_order_relaxed);
    }
    return s == 1 ? 0 : s;
}

inline bool cpu_has_avx512vbmi() { return cpu_avx512vbmi_ecx() != 0; }
// ... and GFNI (GF(2) affine steps, ECX bit 8).
inline bool cpu_has_avx512_vbmi_gfni() { return (cpu_avx512vbmi_ecx() & (1u << 8)) != 0; }

}  // namespace kx

#endif
