// DER headers and lengths, the asn1_t descriptor.
#include <gtest/gtest.h>

#include "ASN1.h"
#include "common/test_util.h"

namespace {

using kt::Bytes;
using kt::from_hex;

// The minimal forms are read back in the writer's test below.
TEST(Asn1Header, ReadsOddForms) {
    const struct { const char* hex; unsigned int hdr, length; } cases[] = {
        // Non-minimal forms are accepted as they stand.
        {"04 81 05 000000", 3, 5}, {"04 82 0005 0000", 4, 5}, {"04 84 00000000", 6, 0},
        // Indefinite and over-long forms are rejected with 0.
        {"30 80 00000000", 0, 0}, {"30 85 0000000001", 0, 0}, {"30 ff 00000000", 0, 0},
        // No high-tag-number form: the byte after the tag is always a length octet.
        {"1f 03 000000", 2, 3},
    };
    for (const auto& c : cases) {
        Bytes b = from_hex(c.hex);
        EXPECT_EQ(ASN1_header_legth(b.data()), c.hdr) << c.hex;
        EXPECT_EQ(ASN1_get_block_length(b.data()), c.length) << c.hex;
    }
}

// Writing (header and asn1_t), sizing and reading back every length form at
// its thresholds.
TEST(Asn1Header, WritesShortestFormAndReadsItBack) {
    const struct { unsigned int len; const char* octets; } cases[] = {
        {0, "00"},           {1, "01"},           {127, "7f"},
        {128, "8180"},       {255, "81ff"},       {256, "820100"},
        {65535, "82ffff"},   {65536, "83010000"}, {16777215, "83ffffff"},
        {16777216, "8401000000"},                 {0xFFFFFFFFu, "84ffffffff"},
    };
    for (const auto& c : cases) {
        // The tag byte is left alone and nothing is written past the header.
        Bytes expect = from_hex(std::string("ee") + c.octets), buf(8, 0xEE), hdr(8, 0xEE);
        unsigned int h = ASN1_set_block_length(buf.data(), c.len);
        EXPECT_EQ(h, expect.size()) << c.len;
        expect.resize(8, 0xEE);
        EXPECT_EQ(buf, expect) << c.len;
        EXPECT_EQ(ASN1_set_header(hdr.data(), 0x30, c.len), h);
        expect[0] = 0x30;
        EXPECT_EQ(hdr, expect) << c.len;
        EXPECT_EQ(ASN1_header_legth(hdr.data()), h) << c.len;
        EXPECT_EQ(ASN1_get_block_length(hdr.data()), c.len) << c.len;

        // Sizing agrees with writing, except for the empty element, which
        // is sized as having no header at all while two bytes are written.
        EXPECT_EQ(ASN1_calculate_len_of_hdr(c.len), c.len == 0 ? 0u : h) << c.len;

        // The descriptor writer: the same header and no content (the source
        // is never read, so null will do); end is not set.
        if (c.len > 0xFFFF) continue;
        Bytes out(8, 0xEE);
        asn1_t s{};
        unsigned char* sentinel = reinterpret_cast<unsigned char*>(&s);
        s.end = sentinel;
        EXPECT_EQ(ASN1_set_sruct(&s, nullptr, static_cast<unsigned short>(c.len), 0x30, out.data()), 1);
        EXPECT_EQ(out, expect) << c.len;
        EXPECT_EQ(s.block, out.data());
        EXPECT_EQ(s.length, c.len);
        EXPECT_EQ(s.value, out.data() + h);
        EXPECT_EQ(s.end, sentinel);
    }
}

TEST(Asn1Struct, GetFillsAllFieldsAndTruncatesLength) {
    // 70000 content octets: the descriptor keeps 70000 mod 65536 and end
    // follows the truncated length. A rejected header (30 80) has length 0
    // and header length 0: value and end stay at the tag byte.
    Bytes big(5 + 70000, 0);
    ASN1_set_header(big.data(), 0x04, 70000);
    struct { Bytes el; unsigned short length; unsigned int hdr; } cases[] = {
        {big, 70000 % 65536, 5},
        {from_hex("30 03 020101"), 3, 2},
        {from_hex("30 80 0000"), 0, 0},
    };
    for (auto& c : cases) {
        asn1_t s{};
        EXPECT_EQ(ASN1_get_sruct(&s, c.el.data()), 0);
        EXPECT_EQ(s.block, c.el.data());
        EXPECT_EQ(s.length, c.length);
        EXPECT_EQ(s.value, c.el.data() + c.hdr);
        EXPECT_EQ(s.end, c.el.data() + c.hdr + c.length);
    }
}

}  // namespace
