// Buffers for the container and certificate tests: exactly sized heap copies
// (AddressSanitizer reports any access past them), text as octets, ranges.
#ifndef KORVEX_TESTS_BUFFERS_H
#define KORVEX_TESTS_BUFFERS_H

#include <algorithm>
#include <memory>
#include <string>

#include "common/test_util.h"

namespace kt {

struct Exact {
    std::unique_ptr<unsigned char[]> p;
    explicit Exact(const Bytes& b) : p(new unsigned char[b.size()]) { std::copy(b.begin(), b.end(), p.get()); }
    unsigned char* get() const { return p.get(); }
};

inline Bytes str(const std::string& s) { return Bytes(s.begin(), s.end()); }

// a and b agree on [from, to).
inline bool same(const Bytes& a, const Bytes& b, size_t from, size_t to) {
    return std::equal(a.begin() + from, a.begin() + to, b.begin() + from);
}

}  // namespace kt

#endif
