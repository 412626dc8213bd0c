// Input framing shared by the fuzz targets: the library reads well-formed
// elements inside buffers the caller has sized, so each target hands it a
// heap copy of exactly the fuzzer's bytes (ASan then flags any octet read or
// written past them) and checks returned pointers against that copy.
#ifndef KORVEX_FUZZ_FRAMING_H
#define KORVEX_FUZZ_FRAMING_H
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

struct FuzzBuf {
    std::vector<unsigned char> b;
    FuzzBuf(const uint8_t* d, size_t n) : b(d, d + n) {}
    unsigned char* p() { return b.data(); }
    size_t n() const { return b.size(); }
    // A returned [q, q + len) must lie inside the buffer.
    void inside(const unsigned char* q, size_t len) const {
        if (!q) return;
        if (q < b.data() || q > b.data() + b.size() || len > size_t(b.data() + b.size() - q)) abort();
    }
};

// Outer DER length made to agree with the buffer: rewrites the length octets
// of the element at d[0] so that it spans exactly the input (short or 0x82
// form); returns false when the input is too short to hold a header.
inline bool frame_der(std::vector<unsigned char>& b) {
    if (b.size() < 4) return false;
    size_t body = b.size() - 4;
    if (body > 0xFFFF) return false;
    b[1] = 0x82; b[2] = (unsigned char)(body >> 8); b[3] = (unsigned char)body;
    return true;
}

// Whole size of the definite-length DER element at p within avail octets
// (length forms up to four octets), or 0 when it does not fit.
inline size_t der_extent(const unsigned char* p, size_t avail) {
    if (avail < 2) return 0;
    size_t h = 2, len = p[1];
    if (len & 0x80) {
        size_t k = len & 0x7F;
        if (k == 0 || k > 4 || avail < 2 + k) return 0;
        len = 0;
        for (size_t i = 0; i < k; ++i) len = (len << 8) | p[2 + i];
        h += k;
    }
    return len <= avail - h ? h + len : 0;
}

// Seeds the library's generator once with a fixed value (builders and
// signers draw from it); runs fine for every input after the first.
#include "PRNG.h"
inline void fuzz_seed_generator() {
    static bool done = false;
    if (done) return;
    unsigned char seed[40];
    for (int i = 0; i < 40; ++i) seed[i] = (unsigned char)(i * 37 + 11);
    PRNG_init(seed);
    done = true;
}
#endif
