// OID encoding: sub-identifiers, decimal reading and dotted text, checked
// against openssl asn1parse and against the fixed over-scan.
#include <gtest/gtest.h>

#include <cstring>

#include "ASN1.h"
#include "common/test_util.h"

namespace {

using kt::Bytes;

struct B128Case {
    unsigned int v;
    const char* hex;
};

TEST(Asn1Base128, Encodes) {
    const B128Case cases[] = {
        {0, "00"},          {1, "01"},           {127, "7f"},         {128, "8100"},
        {840, "8648"},      {16383, "ff7f"},     {16384, "818000"},   {113549, "86f70d"},
        {2097151, "ffff7f"}, {2097152, "81808000"}, {268435455, "ffffff7f"},
        {268435456, "8180808000"}, {0xFFFFFFFFu, "8fffffff7f"},
    };
    for (const auto& c : cases) {
        unsigned char out[8] = {};
        unsigned int n = ASN1_code_base128(c.v, out);
        EXPECT_EQ(kt::to_hex(out, n), c.hex) << c.v;
    }
}

struct NumberCase {
    const char* text;
    unsigned int v;
};

TEST(Asn1Number, ReadsDecimal) {
    const NumberCase cases[] = {
        {"0", 0},         {"7", 7},                 {"643.2", 643},
        {"113549", 113549}, {"4294967295", 0xFFFFFFFFu},
        {"4294967296", 0},  // wraps modulo 2^32
        {"12a3", 12},       // stops at the first non-digit
        // The first character is taken as a digit unchecked: '.' is 0x2E - 0x30.
        {".5", (0u - 2u) * 10u + 5u},
        {"x", static_cast<unsigned int>('x' - '0')},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ASN1_code_ASCII_number_to_HEX(
                      reinterpret_cast<unsigned char*>(const_cast<char*>(c.text))),
                  c.v)
            << c.text;
}

unsigned int encode(const std::string& text, Bytes& out, unsigned char len) {
    out.assign(64, 0xEE);
    std::string copy = text;  // NUL-terminated, as callers pass it
    return ASN1_code_ASCII_OID_to_DER(reinterpret_cast<unsigned char*>(&copy[0]), len, out.data());
}

TEST(Asn1Oid, MatchesOpenssl) {
    auto records = kt::load_records("encoding/oid.txt");
    ASSERT_GT(records.size(), 40u);
    for (auto& r : records) {
        Bytes out;
        const std::string& text = r["text"];
        unsigned int n = encode(text, out, static_cast<unsigned char>(text.size()));
        EXPECT_EQ(kt::to_hex(out.data(), n), r["der"]) << text;
        EXPECT_EQ(out[n], 0xEE) << text;
    }
}

TEST(Asn1Oid, FixedCases) {
    Bytes out;
    EXPECT_EQ(encode("1.2.643.2.2.3", out, 13), 6u);
    EXPECT_EQ(kt::to_hex(out.data(), 6), "2a8503020203");
    EXPECT_EQ(encode("1.2.840.113549.1.9.3", out, 20), 9u);
    EXPECT_EQ(kt::to_hex(out.data(), 9), "2a864886f70d010903");
    EXPECT_EQ(encode("1.2", out, 3), 1u);
    EXPECT_EQ(out[0], 0x2A);
    // One arc is an error.
    EXPECT_EQ(encode("1.", out, 2), 0u);
    // The first two arcs are not range-checked: 40 * a1 + a2 as it comes.
    EXPECT_EQ(encode("3.5.1", out, 5), 2u);
    EXPECT_EQ(kt::to_hex(out.data(), 2), "7d01");
    EXPECT_EQ(encode("2.100", out, 5), 2u);
    EXPECT_EQ(kt::to_hex(out.data(), 2), "8134");
}

TEST(Asn1Oid, LengthLimitsTheArcsRead) {
    // textLen cuts the text short (when no '.' follows within the over-scan);
    // the digits of a cut arc are still read whole by the number reader.
    Bytes out;
    EXPECT_EQ(encode("1.2.643.2xx", out, 9), 4u);  // "1.2.643.2"
    EXPECT_EQ(kt::to_hex(out.data(), 4), "2a850302");
    EXPECT_EQ(encode("1.2.643.2.2.3", out, 6), 3u);  // "1.2.64" reads 643
    EXPECT_EQ(kt::to_hex(out.data(), 3), "2a8503");
}

TEST(Asn1Oid, OverScanPastTheEnd) {
    // For each '.' after the first, the scan reads one byte beyond
    // text + textLen. A '.' there starts another arc: with "1.2.3" (length 5)
    // followed by ".9", the first byte past the end is '.', so arc 9 is
    // encoded too; with two further dots the scan reaches two bytes past.
    Bytes out(16, 0xEE);
    char t1[] = "1.2.3.9";
    EXPECT_EQ(ASN1_code_ASCII_OID_to_DER(reinterpret_cast<unsigned char*>(t1), 5, out.data()), 3u);
    EXPECT_EQ(kt::to_hex(out.data(), 3), "2a0309");

    char t2[] = "1.2.3";  // one extra dot: reads text[5], the NUL
    EXPECT_EQ(ASN1_code_ASCII_OID_to_DER(reinterpret_cast<unsigned char*>(t2), 5, out.data()), 2u);
    EXPECT_EQ(kt::to_hex(out.data(), 2), "2a03");

    char t3[] = "1.2.3.4xy.7";  // two extra dots: reads text[7] and text[8]
    EXPECT_EQ(ASN1_code_ASCII_OID_to_DER(reinterpret_cast<unsigned char*>(t3), 7, out.data()), 3u);
    EXPECT_EQ(kt::to_hex(out.data(), 3), "2a0304");
    char t4[] = "1.2.3.4x.7";   // ... so a '.' two bytes past the end adds an arc
    EXPECT_EQ(ASN1_code_ASCII_OID_to_DER(reinterpret_cast<unsigned char*>(t4), 7, out.data()), 4u);
    EXPECT_EQ(kt::to_hex(out.data(), 4), "2a030407");

    // A terminating NUL ends the over-scan: what lies behind it is not read.
    char t5[] = "1.2.3.4\0.7";
    EXPECT_EQ(ASN1_code_ASCII_OID_to_DER(reinterpret_cast<unsigned char*>(t5), 7, out.data()), 3u);
    EXPECT_EQ(kt::to_hex(out.data(), 3), "2a0304");
}

TEST(Asn1Oid, LeadingDotStartsSecondArcAtOne) {
    // '.' at text[0]: the first arc reads ".5" as a number (wrapping), the
    // second arc starts at text[1].
    Bytes out(16, 0xEE);
    char t[] = ".5.1";
    unsigned int a1 = (0u - 2u) * 10u + 5u;
    unsigned char expect[8];
    unsigned int n1 = ASN1_code_base128(40u * a1 + 5u, expect);
    n1 += ASN1_code_base128(1, expect + n1);
    EXPECT_EQ(ASN1_code_ASCII_OID_to_DER(reinterpret_cast<unsigned char*>(t), 4, out.data()), n1);
    EXPECT_EQ(kt::to_hex(out.data(), n1), kt::to_hex(expect, n1));
}

}  // namespace
