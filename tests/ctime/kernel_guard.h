// Programs built on one pinned GOST 28147-89 kernel (KORVEX_GOST89_KERNEL:
// 0 SSE2, 1 AVX2, 2 AVX-512 VBMI) skip when this processor, or valgrind's
// model of it, lacks that kernel's instructions.
#ifndef KORVEX_TESTS_CTIME_KERNEL_GUARD_H
#define KORVEX_TESTS_CTIME_KERNEL_GUARD_H

inline const char* kernel_missing() {
#if KORVEX_GOST89_KERNEL == 2
    if (!__builtin_cpu_supports("avx512vbmi") || !__builtin_cpu_supports("avx512bw"))
        return "this processor (or valgrind's model of it) has no AVX-512 VBMI: the VBMI kernel is not checked";
#elif KORVEX_GOST89_KERNEL == 1
    if (!__builtin_cpu_supports("avx2")) return "this processor has no AVX2: the AVX2 kernel is not checked";
#endif
    return nullptr;
}

#endif
