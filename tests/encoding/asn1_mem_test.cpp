// The copy, move and compare routines: byte-exact against the plain loops
// they stand for, for every overlap distance and alignment.
#include <gtest/gtest.h>

#include "ASN1.h"
#include "common/test_util.h"

namespace {

using kt::Bytes;
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

}  // namespace
