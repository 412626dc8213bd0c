// Base64 with the RFC 4648 alphabet "A-Z a-z 0-9 + /" and '=' padding.
// Character/value conversion is done with arithmetic masks instead of table
// look-ups or searches, so its timing does not depend on the data (Base64 may
// carry key material) and nothing outside the alphabet's ranges is ever read.
#include "Base64.h"

namespace {

// Mask of all ones when lo <= c <= hi, else 0 (c, lo, hi below 2^23).
inline unsigned int in_range(int c, int lo, int hi) {
    return static_cast<unsigned int>(((lo - 1 - c) & (c - hi - 1)) >> 8);
}

// The alphabet character of digit value v & 63.
inline unsigned char digit_char(unsigned int v) {
    int d = static_cast<int>(v & 63);
    // Offset from the digit value to its character, corrected at each range
    // boundary of the alphabet: 26 -> 'a', 52 -> '0', 62 -> '+', 63 -> '/'.
    int diff = 'A';
    diff += static_cast<int>(in_range(d, 26, 63) & 6);
    diff -= static_cast<int>(in_range(d, 52, 63) & 75);
    diff -= static_cast<int>(in_range(d, 62, 63) & 15);
    diff += static_cast<int>(in_range(d, 63, 63) & 3);
    return static_cast<unsigned char>(d + diff);
}

// The digit value of c, or 0xFFFFFFFF for '=' and anything outside the
// alphabet.
inline unsigned int digit_value(unsigned char c) {
    int ci = c;
    // Starts at -1 (not found); exactly one range adds value + 1.
    unsigned int v = 0xFFFFFFFFu;
    v += in_range(ci, 'A', 'Z') & static_cast<unsigned int>(ci - 'A' + 1);
    v += in_range(ci, 'a', 'z') & static_cast<unsigned int>(ci - 'a' + 27);
    v += in_range(ci, '0', '9') & static_cast<unsigned int>(ci - '0' + 53);
    v += in_range(ci, '+', '+') & 63u;
    v += in_range(ci, '/', '/') & 64u;
    return v;
}

inline void encode_group(const unsigned char* in, unsigned char* out) {
    unsigned int b0 = in[0], b1 = in[1], b2 = in[2];
    out[0] = digit_char(b0 >> 2);
    out[1] = digit_char(((b0 << 4) & 0x30) | (b1 >> 4));
    out[2] = digit_char(((b1 << 2) & 0x3C) | (b2 >> 6));
    out[3] = digit_char(b2);
}

// Decodes one group; each digit value is cut to 8 bits, so an invalid
// character counts as 0xFF.
inline void decode_group(const unsigned char* in, unsigned char* out) {
    unsigned int d0 = digit_value(in[0]) & 0xFF, d1 = digit_value(in[1]) & 0xFF;
    unsigned int d2 = digit_value(in[2]) & 0xFF, d3 = digit_value(in[3]) & 0xFF;
    out[0] = static_cast<unsigned char>((d0 << 2) | (d1 >> 4));
    out[1] = static_cast<unsigned char>((d1 << 4) | (d2 >> 2));
    out[2] = static_cast<unsigned char>((d2 << 6) | d3);
}

}  // namespace

KORVEX_API unsigned char Base64_code(unsigned char v) {
    return digit_char(v);
}

KORVEX_API void Base64_code_block(unsigned char* in, unsigned char* out) {
    encode_group(in, out);
}

KORVEX_API unsigned int Base64_code_msg(unsigned char* in, unsigned int len, unsigned char* out) {
    unsigned int groups = len / 3, rest = len % 3;
    for (unsigned int i = 0; i < groups; ++i) encode_group(in + 3 * i, out + 4 * i);
    if (rest == 0) return 4 * groups;
    unsigned char last[3] = {in[3 * groups], 0, 0};
    if (rest == 2) last[1] = in[3 * groups + 1];
    unsigned char* o = out + 4 * groups;
    encode_group(last, o);
    o[3] = '=';
    if (rest == 1) o[2] = '=';
    return 4 * groups + 4;
}

KORVEX_API unsigned int Base64_decode(unsigned char c) {
    return digit_value(c);
}

KORVEX_API unsigned int Base64_decode_block(unsigned char* in, unsigned char* out) {
    decode_group(in, out);
    return 0;
}

KORVEX_API unsigned int Base64_decode_msg(unsigned char* in, unsigned int len, unsigned char* out) {
    // Every group but the last is decoded plainly. For len below 5 the only
    // group is in[0..3], whatever len says.
    unsigned int k = len < 5 ? 0 : (len - 5) / 4 + 1;
    for (unsigned int i = 0; i < k; ++i) decode_group(in + 4 * i, out + 3 * i);
    unsigned char last[4] = {in[4 * k], in[4 * k + 1], in[4 * k + 2], in[4 * k + 3]};
    unsigned int count = 3;
    if (last[3] == '=') {
        // Padding is decoded as NUL, i.e. as the invalid value 0xFF; only the
        // count says which output bytes mean something.
        last[3] = 0;
        count = 2;
        if (last[2] == '=') {
            last[2] = 0;
            count = 1;
        }
    }
    decode_group(last, out + 3 * k);
    return 3 * k + count;
}
