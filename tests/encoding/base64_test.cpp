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
    for (unsigned int v = 0; v < 256; ++v)
        ASSERT_EQ(Base64_code(static_cast<unsigned char>(v)), kAlphabet[v & 63]) << v;
    // The decoder is an alphabet search that stops at the pad character.
    for (unsigned int c = 0; c < 256; ++c) {
        const char* hit = c ? std::strchr(kAlphabet, static_cast<int>(c)) : nullptr;
        unsigned int expect = hit && hit - kAlphabet < 64 ? static_cast<unsigned int>(hit - kAlphabet) : 0xFFFFFFFFu;
        ASSERT_EQ(Base64_decode(static_cast<unsigned char>(c)), expect) << c;
    }
    EXPECT_EQ(Base64_decode('='), 0xFFFFFFFFu);
    EXPECT_EQ(Base64_decode('*'), 0xFFFFFFFFu);
    EXPECT_EQ(Base64_decode(0), 0xFFFFFFFFu);
}

TEST(Base64Encode, MatchesCoreutils) {
    auto records = kt::load_records("encoding/base64.txt");
    ASSERT_GT(records.size(), 50u);
    for (auto& r : records) {
        Bytes data = kt::from_hex(r["data"]);
        const std::string& b64 = r["b64"];
        std::string out(b64.size() + 8, '#');
        unsigned int n = Base64_code_msg(data.data(), static_cast<unsigned int>(data.size()),
                                         reinterpret_cast<unsigned char*>(&out[0]));
        ASSERT_EQ(n, b64.size()) << r["data"];
        EXPECT_EQ(out.substr(0, n), b64);
        EXPECT_EQ(out[n], '#') << "nothing written after the text";
    }
}

TEST(Base64Decode, RoundTripsCoreutilsText) {
    auto records = kt::load_records("encoding/base64.txt");
    for (auto& r : records) {
        Bytes data = kt::from_hex(r["data"]);
        std::string b64 = r["b64"];
        if (b64.empty()) continue;  // len 0 still decodes a group; see below
        Bytes out(b64.size() / 4 * 3 + 8, 0xEE);
        unsigned int n = Base64_decode_msg(u(b64.c_str()), static_cast<unsigned int>(b64.size()), out.data());
        ASSERT_EQ(n, data.size()) << b64;
        EXPECT_EQ(Bytes(out.begin(), out.begin() + n), data);
        // Three bytes are written for every group, the padded last one too.
        if (n % 3 != 0) EXPECT_EQ(out[b64.size() / 4 * 3 - 1], 0xFF) << b64;
        EXPECT_EQ(out[b64.size() / 4 * 3], 0xEE);
    }
}

TEST(Base64Encode, ShortGroups) {
    struct { const char* in; const char* out; } cases[] = {{"M", "TQ=="}, {"Ma", "TWE="}, {"Man", "TWFu"}};
    for (auto& c : cases) {
        unsigned char out[8] = {};
        EXPECT_EQ(Base64_code_msg(u(c.in), static_cast<unsigned int>(std::strlen(c.in)), out), 4u);
        EXPECT_EQ(std::string(reinterpret_cast<char*>(out), 4), c.out);
    }
    unsigned char out[4] = {0xEE};
    EXPECT_EQ(Base64_code_msg(u("x"), 0, out), 0u);
    EXPECT_EQ(out[0], 0xEE);
}

TEST(Base64Decode, PaddedLastGroupWritesThreeBytes) {
    // "TWE=": count 2, three bytes written; the pad is decoded as NUL, i.e.
    // as the value 0xFF: the third byte is (4 << 6 | 0xFF) & 0xFF.
    unsigned char out[3] = {};
    EXPECT_EQ(Base64_decode_msg(u("TWE="), 4, out), 2u);
    EXPECT_EQ(kt::to_hex(out, 3), "4d61ff");
    EXPECT_EQ(Base64_decode_msg(u("TQ=="), 4, out), 1u);
    EXPECT_EQ(kt::to_hex(out, 3), "4d3fff");
    EXPECT_EQ(Base64_decode_msg(u("TWFu"), 4, out), 3u);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(out), 3), "Man");
}

TEST(Base64Decode, ShortLengthStillDecodesFirstGroup) {
    // For len below 5 the group at in[0..3] is decoded whatever len is.
    struct { const char* in; unsigned int len; unsigned int count; const char* bytes; } cases[] = {
        {"TWFu", 0, 3, "4d616e"}, {"TWFu", 1, 3, "4d616e"}, {"TWFu", 3, 3, "4d616e"},
        {"TWE=", 0, 2, "4d61ff"}, {"TQ==", 2, 1, "4d3fff"},
    };
    for (auto& c : cases) {
        unsigned char out[3] = {};
        EXPECT_EQ(Base64_decode_msg(u(c.in), c.len, out), c.count) << c.in << " " << c.len;
        EXPECT_EQ(kt::to_hex(out, 3), c.bytes);
    }
}

TEST(Base64Decode, LengthNotMultipleOfFour) {
    // Not detected: k = (len - 5) / 4 + 1 groups, then the group at 4k.
    // With len 10, k = 2 groups are decoded plainly and the last group is
    // in[8..11], two characters beyond len.
    unsigned char in[16] = {'T', 'W', 'F', 'u', 'T', 'W', 'E', '=', 'T', 'W', 'F', 'u'};
    unsigned char out[9] = {};
    EXPECT_EQ(Base64_decode_msg(in, 10, out), 9u);
    // The second group is decoded plainly, its pad included.
    EXPECT_EQ(kt::to_hex(out, 9), "4d616e" "4d61ff" "4d616e");
}

TEST(Base64Decode, InvalidCharactersDecodeAsFF) {
    unsigned char out[3];
    EXPECT_EQ(Base64_decode_block(u("****"), out), 0u);
    EXPECT_EQ(kt::to_hex(out, 3), "ffffff");
    // '*' is 0xFF: out0 = (0 << 2) | (0xFF >> 4) = 0x0F.
    EXPECT_EQ(Base64_decode_block(u("A*A*"), out), 0u);
    EXPECT_EQ(kt::to_hex(out, 3), "0ff0ff");
}

}  // namespace
