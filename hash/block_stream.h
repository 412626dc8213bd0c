// The buffering shared by the streaming hashes: a partial block is kept in
// the caller's record between writes, and whole blocks go to the compression
// straight from the caller's data.
#ifndef KORVEX_HASH_BLOCK_STREAM_H
#define KORVEX_HASH_BLOCK_STREAM_H

#include <stddef.h>

#include "core/bytes.h"

namespace kx {

// Completes the pending block first (absorb(pending, 1) once it holds B
// bytes), then absorb(data, n) for the whole blocks of the data, and keeps the
// rest in pending. have is the pending length on entry; returns it on exit.
template <unsigned B, class Absorb>
inline unsigned stream_blocks(unsigned char (&pending)[B], unsigned have, const unsigned char* data, unsigned len,
                              Absorb&& absorb) {
    if (have) {
        unsigned take = B - have;
        if (take > len) take = len;
        copy(pending + have, data, take);
        have += take;
        data += take;
        len -= take;
        if (have < B) return have;
        absorb(static_cast<const unsigned char*>(pending), size_t{1});
    }
    absorb(data, size_t{len / B});
    data += len - len % B;
    len %= B;
    copy(pending, data, len);
    return len;
}

}  // namespace kx

#endif
