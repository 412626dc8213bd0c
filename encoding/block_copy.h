// Forward and backward byte copies with 16-byte SSE2 blocks. Each keeps the
// exact semantics of its byte-by-byte loop even for overlapping ranges: a
// 16-byte block never reads a byte that the same block writes as long as the
// two ranges are at least 16 bytes apart, and every byte it reads has already
// been written (or is not yet due) exactly as the byte loop would have it.
// Closer ranges go byte by byte.
#ifndef KORVEX_ENCODING_BLOCK_COPY_H
#define KORVEX_ENCODING_BLOCK_COPY_H

#include <emmintrin.h>
#include <stddef.h>
#include <stdint.h>

namespace kx {

// Below this size the alignment prologue does not pay for itself.
constexpr size_t kBlockCopyMin = 23;

inline bool blocks_apart(const unsigned char* a, const unsigned char* b) {
    uintptr_t x = reinterpret_cast<uintptr_t>(a), y = reinterpret_cast<uintptr_t>(b);
    return (x > y ? x - y : y - x) >= 16;
}

// Ascending: byte 0 first.
inline void copy_ascending(const unsigned char* src, unsigned char* dst, size_t n) {
    if (n >= kBlockCopyMin && blocks_apart(src, dst)) {
        size_t head = (0u - reinterpret_cast<uintptr_t>(dst)) & 15;
        n -= head;
        for (; head; --head) *dst++ = *src++;
        for (; n >= 16; n -= 16, src += 16, dst += 16)
            _mm_store_si128(reinterpret_cast<__m128i*>(dst),
                            _mm_loadu_si128(reinterpret_cast<const __m128i*>(src)));
    }
    for (; n; --n) *dst++ = *src++;
}

// Descending: byte n-1 first.
inline void copy_descending(const unsigned char* src, unsigned char* dst, size_t n) {
    if (n >= kBlockCopyMin && blocks_apart(src, dst)) {
        size_t tail = reinterpret_cast<uintptr_t>(dst + n) & 15;
        for (; tail; --tail, --n) dst[n - 1] = src[n - 1];
        for (; n >= 16; n -= 16)
            _mm_store_si128(reinterpret_cast<__m128i*>(dst + n - 16),
                            _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + n - 16)));
    }
    for (; n; --n) dst[n - 1] = src[n - 1];
}

}  // namespace kx

#endif
