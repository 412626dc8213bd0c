// The GOST 28147-89 multi-block kernels and the choice among them. Internal:
// the modes reach them through gost89_encrypt_many and friends (gost89_core.h).
#ifndef KORVEX_CIPHER_GOST89_KERNELS_H
#define KORVEX_CIPHER_GOST89_KERNELS_H

#include "cipher/gost89_core.h"

namespace kx {

enum class Gost89Kernel { kSse2, kAvx2, kVbmi };

// The widest kernel the processor and the system support, probed on first use
// (CPUID and XGETBV). Test builds pin one with KORVEX_GOST89_KERNEL=0/1/2 so
// that every kernel is exercised on a machine that has them all.
Gost89Kernel gost89_kernel();

// AVX-512 VBMI: any n, in groups of 16 blocks.
void gost89_many_vbmi(uint64_t* blocks, size_t n, const Gost89Key& k, const Gost89TableWide& t, bool decrypt);
void gost89_x4_vbmi(uint64_t blocks[4], const Gost89Key4& k, const Gost89TableWide& t);

// The serial modes over whole blocks. *v is the running value: the last
// ciphertext (CFB, CBC), the accumulator (MAC) or the last output (OFB over
// zero plaintext: the output replaces the data).
enum class Gost89Chain { kCfb, kCbc, kMac, kOfb };
void gost89_serial(unsigned char* data, size_t blocks, const Gost89Key& k, const Gost89Table& t, uint64_t* v,
                   Gost89Chain mode);

}  // namespace kx

#endif
