// Helpers shared by the tests: hex conversion, reading committed vector
// files, a deterministic byte source.
#ifndef KORVEX_TESTS_TEST_UTIL_H
#define KORVEX_TESTS_TEST_UTIL_H

#include <cstdint>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace kt {

using Bytes = std::vector<unsigned char>;

inline Bytes from_hex(const std::string& s) {
    Bytes out;
    int hi = -1;
    for (char c : s) {
        int v;
        if (c >= '0' && c <= '9') v = c - '0';
        else if (c >= 'a' && c <= 'f') v = c - 'a' + 10;
        else if (c >= 'A' && c <= 'F') v = c - 'A' + 10;
        else continue;  // separators and spaces are ignored
        if (hi < 0) hi = v;
        else { out.push_back(static_cast<unsigned char>(hi << 4 | v)); hi = -1; }
    }
    return out;
}

inline std::string to_hex(const void* p, size_t n) {
    static const char* d = "0123456789abcdef";
    const unsigned char* b = static_cast<const unsigned char*>(p);
    std::string s;
    for (size_t i = 0; i < n; ++i) { s += d[b[i] >> 4]; s += d[b[i] & 15]; }
    return s;
}
inline std::string to_hex(const Bytes& b) { return to_hex(b.data(), b.size()); }

inline Bytes reversed(Bytes b) { return Bytes(b.rbegin(), b.rend()); }

// A vector file is a list of records separated by blank lines; each line of a
// record is "name = value". Lines starting with '#' are comments.
using Record = std::map<std::string, std::string>;

inline std::vector<Record> load_records(const std::string& relpath) {
    std::string path = std::string(KORVEX_VECTORS_DIR) + "/" + relpath;
    std::ifstream in(path);
    if (!in) throw std::runtime_error("cannot open " + path);
    std::vector<Record> out;
    Record cur;
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!line.empty() && line[0] == '#') continue;
        auto eq = line.find(" = ");
        if (eq == std::string::npos) {
            if (!cur.empty()) { out.push_back(cur); cur.clear(); }
            continue;
        }
        cur[line.substr(0, eq)] = line.substr(eq + 3);
    }
    if (!cur.empty()) out.push_back(cur);
    return out;
}

inline Bytes load_file(const std::string& relpath) {
    std::string path = std::string(KORVEX_VECTORS_DIR) + "/" + relpath;
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot open " + path);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Deterministic pseudo-random bytes for test inputs (xorshift64*).
struct Rng {
    uint64_t s;
    explicit Rng(uint64_t seed) : s(seed ? seed : 0x9E3779B97F4A7C15ull) {}
    uint64_t next() { s ^= s >> 12; s ^= s << 25; s ^= s >> 27; return s * 0x2545F4914F6CDD1Dull; }
    unsigned below(unsigned n) { return static_cast<unsigned>(next() % n); }
    Bytes bytes(size_t n) { Bytes b(n); for (auto& c : b) c = static_cast<unsigned char>(next() >> 56); return b; }
};

}  // namespace kt

#endif
