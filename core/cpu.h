// Processor features for the kernels that have a wider form. Internal.
#ifndef KORVEX_ENCODING_CPU_H
#define KORVEX_ENCODING_CPU_H

#include <atomic>
#include <cpuid.h>

namespace kx {

// Every probe runs on first use and is cached; the caches are
// constant-initialised, so loading the library runs no code.
namespace cpu_detail {

// XCR0: the register states the system saves on a context switch.
inline unsigned xcr0() {
    unsigned lo, hi;
    __asm__("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
    return lo;
}

// The leaf-7 words when the system saves every state in `xcr0_mask` (which
// needs OSXSAVE first), else false.
inline bool leaf7_with_state(unsigned xcr0_mask, unsigned& b, unsigned& c) {
    unsigned a, d;
    return __get_cpuid(1, &a, &b, &c, &d) && (c & bit_OSXSAVE) && (xcr0() & xcr0_mask) == xcr0_mask &&
           __get_cpuid_count(7, 0, &a, &b, &c, &d);
}

// Runs `probe` once (0 = absent, else its non-zero value) and caches it.
template <class Probe>
inline unsigned cached(std::atomic<unsigned>& state, Probe probe) {
    unsigned s = state.load(std::memory_order_relaxed);  // 0 = not yet probed
    if (s == 0) {
        unsigned v = probe();
        s = v ? v : ~0u;
        state.store(s, std::memory_order_relaxed);
    }
    return s == ~0u ? 0 : s;
}

}  // namespace cpu_detail

// AVX2: the CPU flag and the system saving the YMM state (XCR0 bits 1, 2).
inline bool cpu_has_avx2() {
    static std::atomic<unsigned> state{0};
    return cpu_detail::cached(state, [] {
        unsigned b, c;
        return unsigned(cpu_detail::leaf7_with_state(0x6, b, c) && (b & bit_AVX2));
    }) != 0;
}

// BMI2 (mulx) and ADX (adcx, adox): CPU flags only (leaf 7 EBX bits 8, 19).
inline bool cpu_has_bmi2_adx() {
    static std::atomic<unsigned> state{0};
    return cpu_detail::cached(state, [] {
        unsigned a, b, c, d;
        return unsigned(__get_cpuid_count(7, 0, &a, &b, &c, &d) && (b & (1u << 8)) && (b & (1u << 19)));
    }) != 0;
}

// SSSE3 (pshufb): a CPU flag only.
inline bool cpu_has_ssse3() {
    static std::atomic<unsigned> state{0};
    return cpu_detail::cached(state, [] {
        unsigned a, b, c, d;
        return unsigned(__get_cpuid(1, &a, &b, &c, &d) && (c & bit_SSSE3));
    }) != 0;
}

// AVX-512 F and BW with VBMI (byte permutes), with the system saving the
// opmask and ZMM state (XCR0 bits 5-7) as well as XMM and YMM: 0 when absent,
// else CPUID leaf 7's ECX (for VBMI's kin such as GFNI) with bit 31 set.
inline unsigned cpu_avx512vbmi_ecx() {
    static std::atomic<unsigned> state{0};
    return cpu_detail::cached(state, [] {
        unsigned b, c;
        bool ok = cpu_detail::leaf7_with_state(0xE6, b, c) && (b & (1u << 16)) && (b & (1u << 30)) &&
                  (c & (1u << 1));
        return ok ? (c | 1u << 31) : 0u;
    });
}

inline bool cpu_has_avx512vbmi() { return cpu_avx512vbmi_ecx() != 0; }
// ... and GFNI (GF(2) affine steps, ECX bit 8).
inline bool cpu_has_avx512_vbmi_gfni() { return (cpu_avx512vbmi_ecx() & (1u << 8)) != 0; }

}  // namespace kx

#endif
