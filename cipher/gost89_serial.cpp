// The serial GOST 28147-89 modes (CFB and CBC encryption, the MAC, the
// generator's chain): each block needs the previous one, so only the latency
// of one block's cycle counts. They run on the portable ANF round in general
// registers: one block held in a vector register with the S-boxes substituted
// by two in-register permutes per round (add, shift, ternary, vpermb, rotate,
// ternary: about 8 cycles of latency) measured 7-10% slower here than the ANF
// round for CFB, CBC and the MAC, so the permute kernel is used for parallel
// blocks only.
#include "cipher/gost89_kernels.h"

namespace kx {

void gost89_serial(unsigned char* data, size_t blocks, const Gost89Key& k, const Gost89Table& t, uint64_t* v,
                   Gost89Chain mode) {
    uint64_t s = *v;
    for (; blocks; --blocks, data += 8) {
        switch (mode) {
            case Gost89Chain::kCfb: s = load64(data) ^ gost89_encrypt(s, k, t); store64(data, s); break;
            case Gost89Chain::kCbc: s = gost89_encrypt(load64(data) ^ s, k, t); store64(data, s); break;
            case Gost89Chain::kMac: s = gost89_mac16(load64(data) ^ s, k, t); break;
            case Gost89Chain::kOfb: s = gost89_encrypt(s, k, t); store64(data, s); break;
        }
    }
    *v = s;
}

void gost89_cbc_encrypt(unsigned char* data, size_t blocks, const Gost89Key& k, const Gost89Table& t, uint64_t* v) {
    gost89_serial(data, blocks, k, t, v, Gost89Chain::kCbc);
}

uint64_t gost89_mac_blocks(const unsigned char* data, size_t blocks, const Gost89Key& k, const Gost89Table& t,
                           uint64_t acc) {
    // The MAC only reads the data.
    gost89_serial(const_cast<unsigned char*>(data), blocks, k, t, &acc, Gost89Chain::kMac);
    return acc;
}

}  // namespace kx
