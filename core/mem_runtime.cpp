// The library's own memcpy, memmove, memset and memcmp. The compiler may emit
// calls to these for aggregate copies and recognised loops; defining them here,
// hidden, keeps libKorvex.so free of imports from the C library. This file is
// built with -fno-builtin so that the loops below are not turned back into
// calls to themselves.
#include <stddef.h>
#include <stdint.h>

#include "core/block_copy.h"

#define KX_HIDDEN extern "C" __attribute__((visibility("hidden")))

KX_HIDDEN void* memcpy(void* dst, const void* src, size_t n) {
    kx::copy_ascending(static_cast<const unsigned char*>(src), static_cast<unsigned char*>(dst), n);
    return dst;
}

KX_HIDDEN void* memmove(void* dst, const void* src, size_t n) {
    unsigned char* d = static_cast<unsigned char*>(dst);
    const unsigned char* s = static_cast<const unsigned char*>(src);
    // Towards lower addresses an ascending copy never overwrites a byte it
    // has still to read; towards higher ones a descending copy does not.
    if (d < s) kx::copy_ascending(s, d, n);
    else if (d > s) kx::copy_descending(s, d, n);
    return dst;
}

KX_HIDDEN void* memset(void* dst, int c, size_t n) {
    unsigned char* d = static_cast<unsigned char*>(dst);
    for (; n; --n) *d++ = static_cast<unsigned char>(c);
    return dst;
}

KX_HIDDEN int memcmp(const void* a, const void* b, size_t n) {
    const unsigned char* x = static_cast<const unsigned char*>(a);
    const unsigned char* y = static_cast<const unsigned char*>(b);
    for (; n; --n, ++x, ++y)
        if (*x != *y) return *x < *y ? -1 : 1;
    return 0;
}
