// Forward and backward byte copies with 16-byte SSE2 blocks. Each keeps the
// exact semantics of its byte-by-byte loop even for overlapping ranges: a
// 16-byte block never reads a byte that the same block writes as long as the
// two ranges are at least 16 bytes apart, and every byte it reads has already
// been written (or is not yet due) exactly as the byte loop would have it.
// Closer ranges go in 8-byte pieces or byte by byte.
#ifndef KORVEX_ENCODING_BLOCK_COPY_H
#define KORVEX_ENCODING_BLOCK_COPY_H

#include <emmintrin.h>
#include <stddef.h>
#include <stdint.h>

namespace kx {

// Below this size the alignment prologue does not pay for itself.
constexpr size_t kBlockCopyMin = 23;

static inline uintptr_t copy_distance(const unsigned char* a, const unsigned char* b) {
    uintptr_t x = reinterpret_cast<uintptr_t>(a), y = reinterpret_cast<uintptr_t>(b);
    return x > y ? x - y : y - x;
}

static inline void copy8(const unsigned char* src, unsigned char* dst) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(dst), _mm_loadl_epi64(reinterpret_cast<const __m128i*>(src)));
}

// Both are inlined into every user with internal linkage: the runtime's
// memcpy/memmove are built on them, so no out-of-line copy built with
// ordinary flags (which may itself call memcpy) can be picked by the linker.
// The same argument as for 16-byte blocks lets 8-byte pieces through when
// the ranges are at least 8 bytes apart.

// Ascending: byte 0 first.
__attribute__((always_inline)) static inline void copy_ascending(const unsigned char* src, unsigned char* dst,
                                                                 size_t n) {
    const uintptr_t apart = copy_distance(src, dst);
    if (n >= kBlockCopyMin && apart >= 16) {
        size_t head = (0u - reinterpret_cast<uintptr_t>(dst)) & 15;
        n -= head;
        for (; head; --head) *dst++ = *src++;
        for (; n >= 16; n -= 16, src += 16, dst += 16)
            _mm_store_si128(reinterpret_cast<__m128i*>(dst),
                            _mm_loadu_si128(reinterpret_cast<const __m128i*>(src)));
    }
    if (apart >= 8)
        for (; n >= 8; n -= 8, src += 8, dst += 8) copy8(src, dst);
    for (; n; --n) *dst++ = *src++;
}

// Descending: byte n-1 first.
__attribute__((always_inline)) static inline void copy_descending(const unsigned char* src, unsigned char* dst,
                                                                  size_t n) {
    const uintptr_t apart = copy_distance(src, dst);
    if (n >= kBlockCopyMin && apart >= 16) {
        size_t tail = reinterpret_cast<uintptr_t>(dst + n) & 15;
        for (; tail; --tail, --n) dst[n - 1] = src[n - 1];
        for (; n >= 16; n -= 16)
            _mm_store_si128(reinterpret_cast<__m128i*>(dst + n - 16),
                            _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + n - 16)));
    }
    if (apart >= 8)
        for (; n >= 8; n -= 8) copy8(src + n - 8, dst + n - 8);
    for (; n; --n) dst[n - 1] = src[n - 1];
}

}  // namespace kx

#endif
