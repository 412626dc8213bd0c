// Base64: against coreutils base64, plus the fixed behaviours of the decoder.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "Base64.h"
#include "common/test_util.h"

namespace {

using kt::Bytes;

const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";

unsigned char* u(const char* s) { return reinterpret_cast<unsigned char*>(const_cast<char*>(s)); }

TEST(Base64Digits, CodeAndDecodeFollowTheAlphabet) {
    for (unsigned int v = 0; v < 256; ++v) {
        ASSERT_EQ(Base64_code(static_cast<unsigned char>(v)), kAlphabet[v & 63]) << v;
        // The decoder is an alphabet search: the pad, NUL and '*' are not digits.
        const char* hit = v ? std::strchr(kAlphabet, static_cast<int>(v)) : nullptr;
        unsigned int expect = hit && hit - kAlphabet < 64 ? static_cast<unsigned int>(hit - kAlphabet) : 0xFFFFFFFFu;
        ASSERT_EQ(Base64_decode(static_cast<unsigned char>(v)), expect) << v;
    }
}

TEST(Base64, MatchesCoreutilsBothWays) {
    auto records = kt::load_records("encoding/base64.txt");
    ASSERT_GT(records.size(), 50u);
    for (auto& r : records) {
        Bytes data = kt::from_hex(r["data"]);
        const std::string& b64 = r["b64"];
        std::string text(b64.size() + 8, '#');
        unsigned int n = Base64_code_msg(data.data(), static_cast<unsigned int>(data.size()), u(text.data()));
        ASSERT_EQ(n, b64.size()) << r["data"];
        EXPECT_EQ(text.substr(0, n), b64);
        EXPECT_EQ(text[n], '#') << "nothing written after the text";
        if (b64.empty()) continue;  // len 0 still decodes a group; see below

        size_t groups = b64.size() / 4 * 3;
        Bytes out(groups + 8, 0xEE);
        n = Base64_decode_msg(u(b64.c_str()), static_cast<unsigned int>(b64.size()), out.data());
        ASSERT_EQ(n, data.size()) << b64;
        EXPECT_EQ(Bytes(out.begin(), out.begin() + n), data);
        // Three bytes are written for every group, the padded last one too.
        if (n % 3 != 0) { EXPECT_EQ(out[groups - 1], 0xFF) << b64; }
        EXPECT_EQ(out[groups], 0xEE);
    }
}

TEST(Base64, LastGroupAndOddLengths) {
    // A padded last group counts 2 or 1 but writes 3 bytes; the pad is decoded
    // as NUL, i.e. as 0xFF: "TWE=" ends in (4 << 6 | 0xFF) & 0xFF. For len
    // below 5 the group at in[0..3] is decoded whatever len is. Rows of len 4
    // are also encoded back from their first `count` bytes.
    const struct { const char* in; unsigned int len, count; const char* bytes; } cases[] = {
        {"TWFu", 4, 3, "4d616e"}, {"TWE=", 4, 2, "4d61ff"}, {"TQ==", 4, 1, "4d3fff"},
        {"TWFu", 0, 3, "4d616e"}, {"TWFu", 1, 3, "4d616e"}, {"TWFu", 3, 3, "4d616e"},
        {"TWE=", 0, 2, "4d61ff"}, {"TQ==", 2, 1, "4d3fff"},
        // A len that is no multiple of 4 is not detected: k = (len - 5) / 4 + 1
        // groups, then the group at 4k; for 10, two groups are decoded plainly
        // (the pad of the second included) and the last is in[8..11].
        {"TWFuTWE=TWFu", 10, 9, "4d616e4d61ff4d616e"},
    };
    for (const auto& c : cases) {
        unsigned char out[9] = {}, text[4] = {};
        EXPECT_EQ(Base64_decode_msg(u(c.in), c.len, out), c.count) << c.in << " " << c.len;
        EXPECT_EQ(kt::to_hex(out, std::strlen(c.bytes) / 2), c.bytes);
        if (c.len != 4) continue;
        EXPECT_EQ(Base64_code_msg(out, c.count, text), 4u);
        EXPECT_EQ(std::string(reinterpret_cast<char*>(text), 4), c.in);
    }
    unsigned char out[4] = {0xEE};
    EXPECT_EQ(Base64_code_msg(u("x"), 0, out), 0u);
    EXPECT_EQ(out[0], 0xEE);
}

TEST(Base64, InvalidCharactersDecodeAsFF) {
    // '*' is 0xFF: out0 = (0 << 2) | (0xFF >> 4) = 0x0F.
    unsigned char out[3];
    EXPECT_EQ(Base64_decode_block(u("****"), out), 0u);
    EXPECT_EQ(kt::to_hex(out, 3), "ffffff");
    EXPECT_EQ(Base64_decode_block(u("A*A*"), out), 0u);
    EXPECT_EQ(kt::to_hex(out, 3), "0ff0ff");
}

}  // namespace
