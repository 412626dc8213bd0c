// DER headers and lengths, the asn1_t descriptor.
#include <gtest/gtest.h>

#include "ASN1.h"
#include "common/test_util.h"

namespace {

using kt::Bytes;
using kt::from_hex;

struct HeaderCase {
    const char* hex;       // tag, length octets, padding
    unsigned int hdr;      // ASN1_header_legth
    unsigned int length;   // ASN1_get_block_length
};

TEST(Asn1Header, ReadsEveryLengthForm) {
    const HeaderCase cases[] = {
        {"04 00 00000000", 2, 0},
        {"04 05 00000000", 2, 5},
        {"04 7f 00000000", 2, 127},
        {"04 81 80 000000", 3, 128},
        {"04 81 ff 000000", 3, 255},
        {"30 82 0100 0000", 4, 256},
        {"30 82 ffff 0000", 4, 65535},
        {"30 83 010000 00", 5, 65536},
        {"30 83 ffffff 00", 5, 16777215},
        {"30 84 01000000", 6, 16777216},
        {"30 84 ffffffff", 6, 0xFFFFFFFFu},
        // Non-minimal forms are accepted as they stand.
        {"04 81 05 000000", 3, 5},
        {"04 82 0005 0000", 4, 5},
        {"04 84 00000000", 6, 0},
        // Indefinite and over-long forms are rejected with 0.
        {"30 80 00000000", 0, 0},
        {"30 85 0000000001", 0, 0},
        {"30 88 0000000000000001", 0, 0},
        {"30 ff 00000000", 0, 0},
    };
    for (const auto& c : cases) {
        Bytes b = from_hex(c.hex);
        EXPECT_EQ(ASN1_header_legth(b.data()), c.hdr) << c.hex;
        EXPECT_EQ(ASN1_get_block_length(b.data()), c.length) << c.hex;
    }
}

TEST(Asn1Header, TagByteIsNeverInterpreted) {
    // High-tag-number form is not recognised: the byte after the tag is the
    // first length octet whatever the tag says.
    Bytes b = from_hex("1f 03 000000");
    EXPECT_EQ(ASN1_header_legth(b.data()), 2u);
    EXPECT_EQ(ASN1_get_block_length(b.data()), 3u);
}

struct WriteCase {
    unsigned int len;
    const char* octets;  // length octets written at p[1]
};

TEST(Asn1Header, WritesShortestForm) {
    const WriteCase cases[] = {
        {0, "00"},           {1, "01"},           {127, "7f"},
        {128, "8180"},       {255, "81ff"},       {256, "820100"},
        {65535, "82ffff"},   {65536, "83010000"}, {16777215, "83ffffff"},
        {16777216, "8401000000"},                 {0xFFFFFFFFu, "84ffffffff"},
    };
    for (const auto& c : cases) {
        Bytes expect = from_hex(c.octets);
        Bytes buf(8, 0xEE);
        unsigned int h = ASN1_set_block_length(buf.data(), c.len);
        EXPECT_EQ(h, expect.size() + 1) << c.len;
        EXPECT_EQ(buf[0], 0xEE) << "the tag byte is left alone";
        EXPECT_EQ(Bytes(buf.begin() + 1, buf.begin() + h), expect) << c.len;
        EXPECT_EQ(buf[h], 0xEE) << "nothing written past the header";

        Bytes hdr(8, 0xEE);
        EXPECT_EQ(ASN1_set_header(hdr.data(), 0x30, c.len), h);
        EXPECT_EQ(hdr[0], 0x30);
        EXPECT_EQ(Bytes(hdr.begin() + 1, hdr.begin() + h), expect);

        // Sizing agrees with writing, except for the empty element, which
        // is sized as having no header at all while two bytes are written.
        EXPECT_EQ(ASN1_calculate_len_of_hdr(c.len), c.len == 0 ? 0u : h) << c.len;
    }
}

TEST(Asn1Header, RoundTripsAroundEveryThreshold) {
    const unsigned int edges[] = {0, 127, 255, 65535, 16777215, 0xFFFFFFFFu};
    for (unsigned int e : edges)
        for (int d = -2; d <= 2; ++d) {
            unsigned int len = e + static_cast<unsigned int>(d);
            unsigned char buf[8] = {};
            unsigned int h = ASN1_set_header(buf, 0x04, len);
            EXPECT_EQ(ASN1_header_legth(buf), h) << len;
            EXPECT_EQ(ASN1_get_block_length(buf), len) << len;
        }
}

TEST(Asn1Struct, GetFillsAllFieldsAndTruncatesLength) {
    // 70000 content octets: the descriptor keeps 70000 mod 65536, and end
    // follows the truncated length.
    Bytes el(5 + 70000, 0);
    ASN1_set_header(el.data(), 0x04, 70000);
    asn1_t s{};
    EXPECT_EQ(ASN1_get_sruct(&s, el.data()), 0);
    EXPECT_EQ(s.block, el.data());
    EXPECT_EQ(s.length, 70000u % 65536u);
    EXPECT_EQ(s.value, el.data() + 5);
    EXPECT_EQ(s.end, s.value + 4464);

    Bytes small = from_hex("30 03 020101");
    ASN1_get_sruct(&s, small.data());
    EXPECT_EQ(s.length, 3);
    EXPECT_EQ(s.value, small.data() + 2);
    EXPECT_EQ(s.end, small.data() + 5);

    // A rejected header has length 0 and header length 0: value and end
    // stay at the tag byte.
    Bytes bad = from_hex("30 80 0000");
    ASN1_get_sruct(&s, bad.data());
    EXPECT_EQ(s.length, 0);
    EXPECT_EQ(s.value, bad.data());
    EXPECT_EQ(s.end, bad.data());
}

TEST(Asn1Struct, SetWritesHeaderOnly) {
    const unsigned short lens[] = {0, 5, 127, 128, 300, 65535};
    for (unsigned short len : lens) {
        Bytes out(8, 0xEE);
        unsigned char src[1] = {0x55};
        asn1_t s{};
        unsigned char* sentinel = reinterpret_cast<unsigned char*>(&s);
        s.end = sentinel;
        EXPECT_EQ(ASN1_set_sruct(&s, src, len, 0x04, out.data()), 1) << len;
        unsigned int h = ASN1_header_legth(out.data());
        EXPECT_EQ(out[0], 0x04);
        EXPECT_EQ(ASN1_get_block_length(out.data()), len);
        EXPECT_EQ(out[h], 0xEE) << "no content is copied";
        EXPECT_EQ(s.block, out.data());
        EXPECT_EQ(s.length, len);
        EXPECT_EQ(s.value, out.data() + h);
        EXPECT_EQ(s.end, sentinel) << "end is not set";
    }
    // A null source is fine: it is never read.
    unsigned char out[4];
    asn1_t s{};
    EXPECT_EQ(ASN1_set_sruct(&s, nullptr, 2, 0x05, out), 1);
}

}  // namespace
