// ASN.1 DER support: headers and lengths, the asn1_t descriptor; the copy,
// move and compare routines byte-exact against the plain loops they stand
// for, for every overlap distance and alignment; OID encoding (sub-identifiers,
// decimal reading, dotted text) against openssl asn1parse and the fixed
// over-scan.
#include <gtest/gtest.h>

#include <string>

#include "ASN1.h"
#include "common/test_util.h"

namespace {

using kt::Bytes;
using kt::from_hex;
using namespace std::string_literals;

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

using CopyFn = void (*)(unsigned char*, unsigned char*, unsigned int);

void ref_ascending(unsigned char* src, unsigned char* dst, unsigned int n) {
    for (unsigned int i = 0; i < n; ++i) dst[i] = src[i];
}
void ref_descending(unsigned char* src, unsigned char* dst, unsigned int n) {
    for (unsigned int i = n; i-- > 0;) dst[i] = src[i];
}

// Copy is ascending, so it closes a gap inside one buffer; move is
// descending, so it opens one.
const struct { const char* name; CopyFn fn, ref; } kRoutines[] = {
    {"copy", ASN1_mem_copy, ref_ascending}, {"move", ASN1_mem_move, ref_descending}};

// Both pointers move through a 16-byte alignment cycle, the distance between
// them covers overlaps of either direction and sizes cover the byte path,
// the block path threshold (23) and long copies.
TEST(Asn1Copy, MatchesByteLoopForAllOverlaps) {
    const Bytes pattern = kt::Rng(0xA5A1).bytes(512);
    for (const auto& c : kRoutines)
        for (unsigned int n : {0, 1, 15, 16, 17, 22, 23, 24, 31, 32, 33, 47, 64, 100, 161})
            for (int base = 0; base < 16; ++base)
                for (int dist = -40; dist <= 40; ++dist) {
                    Bytes a = pattern, b = pattern;
                    int s = 100 + base, d = s + dist;
                    c.fn(a.data() + s, a.data() + d, n);
                    c.ref(b.data() + s, b.data() + d, n);
                    ASSERT_EQ(a, b) << c.name << " n=" << n << " base=" << base << " dist=" << dist;
                }
}

TEST(Asn1Copy, DisjointBuffersOfMixedAlignment) {
    kt::Rng rng(7);
    for (const auto& c : kRoutines)
        for (unsigned int n : {23u, 100u, 4096u, 65536u + 3})
            for (int sa = 0; sa < 16; sa += 5)
                for (int da = 0; da < 16; da += 3) {
                    Bytes src = rng.bytes(n + 32), dst(n + 32, 0xCC), expect = dst;
                    c.fn(src.data() + sa, dst.data() + da, n);
                    ref_ascending(src.data() + sa, expect.data() + da, n);
                    ASSERT_EQ(dst, expect) << c.name << " n=" << n;
                }
}

TEST(Asn1Compare, ZeroOrOneOnly) {
    kt::Rng rng(3);
    for (unsigned int n : {1u, 7u, 15u, 16u, 17u, 32u, 33u, 100u}) {
        Bytes a = rng.bytes(n), same = a;
        EXPECT_EQ(ASN1_mem_compare(a.data(), same.data(), n), 0);
        for (unsigned int i = 0; i < n; ++i)
            for (unsigned char flip : {0x01, 0x80, 0xFF}) {
                Bytes b = a;
                b[i] ^= flip;
                ASSERT_EQ(ASN1_mem_compare(a.data(), b.data(), n), 1) << n << " " << i;
                ASSERT_EQ(ASN1_mem_compare(b.data(), a.data(), n), 1) << "no ordering";
            }
    }
    unsigned char x = 1, y = 2;
    EXPECT_EQ(ASN1_mem_compare(&x, &y, 0), 0);
    EXPECT_EQ(ASN1_mem_compare(nullptr, nullptr, 0), 0);
}

TEST(Asn1BitString, ReversesBitOrder) {
    EXPECT_EQ(ASN1_rotate_rigth_BIT_STRING_byte(0x86), 0x61);
    for (unsigned int v = 0; v < 256; ++v) {
        unsigned int r = 0;
        for (int i = 0; i < 8; ++i) r |= ((v >> i) & 1u) << (7 - i);
        ASSERT_EQ(ASN1_rotate_rigth_BIT_STRING_byte(static_cast<unsigned char>(v)), r) << v;
    }
}

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
