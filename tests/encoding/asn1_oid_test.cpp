// OID encoding: sub-identifiers, decimal reading and dotted text, checked
// against openssl asn1parse and against the fixed over-scan.
#include <gtest/gtest.h>

#include <string>

#include "ASN1.h"
#include "common/test_util.h"

namespace {

using namespace std::string_literals;

unsigned char* u(const std::string& s) { return reinterpret_cast<unsigned char*>(const_cast<char*>(s.data())); }

TEST(Asn1Base128, Encodes) {
    const struct { unsigned int v; const char* hex; } cases[] = {
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

TEST(Asn1Number, ReadsDecimal) {
    const struct { std::string text; unsigned int v; } cases[] = {
        {"0", 0},         {"7", 7},                 {"643.2", 643},
        {"113549", 113549}, {"4294967295", 0xFFFFFFFFu},
        {"4294967296", 0},  // wraps modulo 2^32
        {"12a3", 12},       // stops at the first non-digit
        // The first character is taken as a digit unchecked: '.' is 0x2E - 0x30.
        {".5", (0u - 2u) * 10u + 5u},
        {"x", static_cast<unsigned int>('x' - '0')},
    };
    for (const auto& c : cases) EXPECT_EQ(ASN1_code_ASCII_number_to_HEX(u(c.text)), c.v) << c.text;
}

// The text as callers pass it (what follows textLen included, NUL-terminated);
// the result and the octets written, and nothing written past them (the
// failing one-arc case has already written its first sub-identifier).
void expect_oid(const std::string& text, unsigned char len, const std::string& der) {
    kt::Bytes out(64, 0xEE);
    unsigned int n = ASN1_code_ASCII_OID_to_DER(u(text), len, out.data());
    EXPECT_EQ(kt::to_hex(out.data(), n), der) << text << " len " << int(len);
    if (n) { EXPECT_EQ(out[n], 0xEE) << text; }
}

TEST(Asn1Oid, MatchesOpenssl) {
    auto records = kt::load_records("encoding/oid.txt");
    ASSERT_GT(records.size(), 40u);
    for (auto& r : records) expect_oid(r["text"], static_cast<unsigned char>(r["text"].size()), r["der"]);
}

TEST(Asn1Oid, FixedBehaviours) {
    const struct { std::string text; unsigned char len; const char* der; } cases[] = {
        {"1.2.643.2.2.3", 13, "2a8503020203"},
        {"1.2.840.113549.1.9.3", 20, "2a864886f70d010903"},
        {"1.2", 3, "2a"},
        {"1.", 2, ""},  // one arc is an error: 0
        // The first two arcs are not range-checked: 40 * a1 + a2 as it comes.
        {"3.5.1", 5, "7d01"},
        {"2.100", 5, "8134"},
        // textLen cuts the text short (when no '.' follows within the
        // over-scan); the digits of a cut arc are still read whole.
        {"1.2.643.2xx", 9, "2a850302"},
        {"1.2.643.2.2.3", 6, "2a8503"},
        // For each '.' after the first, the scan reads one byte beyond
        // text + textLen, and a '.' there starts another arc.
        {"1.2.3.9", 5, "2a0309"},
        {"1.2.3", 5, "2a03"},             // one extra dot: reads text[5], the NUL
        {"1.2.3.4xy.7", 7, "2a0304"},     // two extra dots: reads text[7], text[8]
        {"1.2.3.4x.7", 7, "2a030407"},    // ... so a '.' two bytes past adds an arc
        {"1.2.3.4\0.7"s, 7, "2a0304"},    // a NUL ends the over-scan
        // '.' at text[0]: the first arc reads ".5" (wrapping to 0xFFFFFFF1),
        // the second starts at text[1]; 40 * a1 + 5 wraps to 0xFFFFFDAD.
        {".5.1", 4, "8ffffffb2d01"},
    };
    for (const auto& c : cases) expect_oid(c.text, c.len, c.der);
}

}  // namespace
