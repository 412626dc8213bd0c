// Base64: decoding any text stays inside the documented output size, and
// encoding then decoding any bytes gives them back.
#include "framing.h"
#include "Base64.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* d, size_t n) {
    if (n > 1 << 16) return 0;
    std::vector<unsigned char> in(d, d + n);
    size_t len = n & ~size_t(3);
    if (len >= 4) {
        std::vector<unsigned char> out(3 * (len / 4));
        unsigned int got = Base64_decode_msg(in.data(), (unsigned)len, out.data());
        if (got > out.size()) abort();
    }
    std::vector<unsigned char> enc(4 * ((n + 2) / 3) + 4), dec(3 * (enc.size() / 4) + 3);
    unsigned int e = Base64_code_msg(in.data(), (unsigned)n, enc.data());
    if (n && e >= 4) {
        unsigned int g = Base64_decode_msg(enc.data(), e, dec.data());
        if (g != n || memcmp(dec.data(), d, n) != 0) abort();
    }
    return 0;
}
