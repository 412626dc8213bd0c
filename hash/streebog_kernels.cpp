// The GOST R 34.11-2012 compression function, built twice: with SSE2 (every
// x86-64 processor) and with AVX2, whose eight lanes take the L pass over all
// eight words of a value at once; and the choice between these and the
// AVX-512 kernel. The processor is asked on first use.
#include "core/cpu.h"
#include "hash/streebog_core.h"

namespace kx {
namespace streebog {
namespace {

void compress_sse2(Block& h, const Block& N, const Block& m) { compress_with<Sse2>(h, N, m); }

__attribute__((target("avx2"))) void compress_avx2(Block& h, const Block& N, const Block& m) {
    compress_with<Avx2>(h, N, m);
}

}  // namespace

void compress_portable(Block& h, const Block& N, const Block& m) {
    if (cpu_has_avx2())
        compress_avx2(h, N, m);
    else
        compress_sse2(h, N, m);
}

int forced_kernel = 0;

void compress(Block& h, const Block& N, const Block& m) {
    if (forced_kernel != 1 && avx512_available())
        compress_avx512(h, N, m);
    else
        compress_portable(h, N, m);
}

}  // namespace streebog
}  // namespace kx
