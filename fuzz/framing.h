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
#endif
