// Failures of the file-format readers and writers: a one-line message and the
// program's exit code (3 wrong password, 4 unreadable or damaged input,
// 5 refused, 1 anything else).
#ifndef KORVEX_TOOLS_FORMATS_ERROR_H
#define KORVEX_TOOLS_FORMATS_ERROR_H

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace formats {

using Bytes = std::vector<unsigned char>;

enum Exit { kInvalid = 1, kUsage = 2, kWrongPassword = 3, kDamaged = 4, kRefused = 5 };

struct Error : std::runtime_error {
    int code;
    explicit Error(const std::string& msg, int c = kDamaged) : std::runtime_error(msg), code(c) {}
};

// Overwrites secrets in a way the compiler keeps.
void wipe(void* p, size_t n);
inline void wipe(Bytes& b) { wipe(b.data(), b.size()); }

// A byte buffer that wipes itself: keys, password-derived keys, plaintexts.
struct Secret : Bytes {
    using Bytes::Bytes;
    Secret() = default;
    Secret(const Bytes& b) : Bytes(b) {}
    Secret(const Secret&) = default;
    Secret& operator=(const Secret&) = default;
    ~Secret() { wipe(*this); }
};

}  // namespace formats

#endif
