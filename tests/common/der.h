// Test-side DER, independent of the library's: a writer with the shortest
// definite length and a reader of definite lengths, for building and walking
// certificates, messages and containers by hand.
#ifndef KORVEX_TESTS_DER_H
#define KORVEX_TESTS_DER_H

#include <initializer_list>
#include <string>
#include <vector>

#include "common/test_util.h"

namespace kt {

inline Bytes cat(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const Bytes& p : parts) out.insert(out.end(), p.begin(), p.end());
    return out;
}

inline Bytes tlv(unsigned char tag, const Bytes& content) {
    Bytes len;
    for (size_t n = content.size(); n; n >>= 8) len.insert(len.begin(), static_cast<unsigned char>(n));
    if (content.size() < 0x80) len = {static_cast<unsigned char>(content.size())};
    else len.insert(len.begin(), static_cast<unsigned char>(0x80 | len.size()));
    return cat({{tag}, len, content});
}
inline Bytes seq(std::initializer_list<Bytes> parts) { return tlv(0x30, cat(parts)); }
inline Bytes set(std::initializer_list<Bytes> parts) { return tlv(0x31, cat(parts)); }
inline Bytes oid(const std::string& hex) { return tlv(0x06, from_hex(hex)); }

// Header and whole size of the element at p.
inline size_t header_size(const unsigned char* p) { return p[1] < 0x80 ? 2 : 2 + (p[1] & 0x7F); }
inline size_t element_size(const unsigned char* p) {
    size_t h = header_size(p), n = p[1] < 0x80 ? p[1] : 0;
    for (size_t i = 2; i < h; ++i) n = n << 8 | p[i];
    return h + n;
}
// The n-th child (from 0) of the element at p.
inline unsigned char* child(unsigned char* p, int n) {
    unsigned char* c = p + header_size(p);
    for (int i = 0; i < n; ++i) c += element_size(c);
    return c;
}

// One element inside a buffer, by position; reading past the buffer throws.
struct Der {
    size_t at = 0, hl = 2, len = 0;
    unsigned char tag = 0;
    size_t value() const { return at + hl; }
    size_t end() const { return at + hl + len; }
};
inline Der der(const Bytes& b, size_t at) {
    Der d;
    d.at = at, d.tag = b.at(at), d.len = b.at(at + 1);
    if (d.len & 0x80) {
        d.hl = 2 + (d.len & 0x7F), d.len = 0;
        for (size_t i = at + 2; i < at + d.hl; ++i) d.len = d.len << 8 | b.at(i);
    }
    return d;
}
inline std::vector<Der> children(const Bytes& b, const Der& d) {
    std::vector<Der> out;
    for (size_t p = d.value(); p < d.end(); p = out.back().end()) out.push_back(der(b, p));
    return out;
}

}  // namespace kt

#endif
