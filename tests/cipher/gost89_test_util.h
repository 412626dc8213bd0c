// Shared helpers of the GOST 28147-89 tests.
#ifndef KORVEX_TESTS_CIPHER_GOST89_TEST_UTIL_H
#define KORVEX_TESTS_CIPHER_GOST89_TEST_UTIL_H

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "GOST_28147_89.h"
#include "common/test_util.h"

namespace kt {

inline type_uN<32> key_of(const Bytes& b) { type_uN<32> k; std::memcpy(k.b, b.data(), 32); return k; }
inline type_uN<32> key_of(const std::string& hex) { return key_of(from_hex(hex)); }
inline type_u64 block_of(const unsigned char* p) { type_u64 v; std::memcpy(&v, p, 8); return v; }
inline type_u64 block_of(const std::string& hex) { return block_of(from_hex(hex).data()); }
inline Bytes bytes_of(type_u64 v) { Bytes b(8); std::memcpy(b.data(), &v, 8); return b; }
inline bool same_key(const type_uN<32>& a, const type_uN<32>& b) { return std::memcmp(a.b, b.b, 32) == 0; }

// Records of one vector file whose "mode" field equals mode (never none).
inline std::vector<Record> records(const std::string& file, const std::string& mode) {
    std::vector<Record> out;
    for (auto& r : load_records("cipher/" + file))
        if (r.at("mode") == mode) out.push_back(r);
    EXPECT_FALSE(out.empty()) << file << " " << mode;
    return out;
}

inline unsigned char sel_of(const Record& r) { return static_cast<unsigned char>(std::stoi(r.at("sbox"))); }
inline bool flag(const Record& r, const char* name) { return r.count(name) && r.at(name) == "1"; }

}  // namespace kt

#endif
