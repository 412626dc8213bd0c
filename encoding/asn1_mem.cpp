// The library's copy, move and compare routines (source before destination).
// The format code uses these instead of any runtime routine; the direction of
// each copy is part of its contract.
#include "ASN1.h"
#include "core/block_copy.h"

#include <stdint.h>

KORVEX_API void ASN1_mem_copy(unsigned char* src, unsigned char* dst, unsigned int n) {
    kx::copy_ascending(src, dst, n);
}

KORVEX_API void ASN1_mem_move(unsigned char* src, unsigned char* dst, unsigned int n) {
    kx::copy_descending(src, dst, n);
}

KORVEX_API int ASN1_mem_compare(unsigned char* a, unsigned char* b, unsigned int n) {
    // No early exit: MAC and key comparisons go through here.
    __m128i acc = _mm_setzero_si128();
    unsigned int i = 0;
    for (; i + 16 <= n; i += 16)
        acc = _mm_or_si128(acc, _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(a + i)),
                                              _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + i))));
    unsigned int rest = 0;
    for (; i < n; ++i) rest |= static_cast<unsigned int>(a[i] ^ b[i]);
    // All-zero accumulator <=> movemask of (acc == 0) is 0xFFFF.
    unsigned int vec_diff = static_cast<unsigned int>(_mm_movemask_epi8(_mm_cmpeq_epi8(acc, _mm_setzero_si128()))) ^ 0xFFFFu;
    return static_cast<int>((0u - (rest | vec_diff)) >> 31);  // 0 or 1
}
