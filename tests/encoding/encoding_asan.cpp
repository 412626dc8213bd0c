// Hostile-input and bounds checks under AddressSanitizer: every routine reads
// and writes exactly the bytes its contract names, in buffers sized exactly.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>

#include "ASN1.h"
#include "Base64.h"
#include "CRC32.h"
#include "common/buffers.h"

namespace {

using kt::Bytes;
using kt::Exact;

TEST(EncodingBounds, DerReadersStayInTheHeader) {
    for (const char* h : {"0400", "047f", "048180", "04820100", "0483010000", "0484ffffffff", "0480", "0485"}) {
        kt::Bytes b = kt::from_hex(h);
        Exact e(b);
        unsigned int hl = ASN1_header_legth(e.get()), len = ASN1_get_block_length(e.get());
        if (!hl) {
            EXPECT_EQ(len, 0u) << h;
            continue;
        }
        EXPECT_EQ(hl, b.size()) << h;
        Exact w{Bytes(hl)};  // the writer writes exactly the header it reports
        EXPECT_EQ(ASN1_set_header(w.get(), 0x04, len), hl);
    }
}

TEST(EncodingBounds, CopyMoveCompareAtBufferEnds) {
    kt::Rng rng(17);
    for (unsigned int n = 0; n <= 80; ++n) {
        Exact a(rng.bytes(n)), b{Bytes(n)}, one{Bytes(n + 20)};
        ASN1_mem_copy(a.get(), b.get(), n);
        ASSERT_EQ(ASN1_mem_compare(a.get(), b.get(), n), 0);
        ASN1_mem_move(b.get(), a.get(), n);
        ASSERT_EQ(ASN1_mem_compare(a.get(), b.get(), n), 0);
        // Overlapping shifts inside one exact block.
        ASN1_mem_copy(one.get() + 20, one.get(), n);
        ASN1_mem_move(one.get(), one.get() + 20, n);
        ASN1_mem_copy(one.get(), one.get() + 3, n + 17);
    }
}

TEST(EncodingBounds, OidOverScanReadsOnlyTheContractedBytes) {
    // Followed by exactly (dots - 1) bytes that are neither '.' nor digits,
    // and no NUL; at least one, since the number reader reads the character
    // that ends the last arc. Then NUL-terminated in exactly textLen + 1 bytes.
    for (const std::string o : {"1.2", "1.2.643", "1.2.643.2.2.3", "1.2.840.113549.1.9.16.1.2"}) {
        size_t dots = static_cast<size_t>(std::count(o.begin(), o.end(), '.'));
        Exact t(kt::str(o + std::string(std::max<size_t>(dots - 1, 1), 'x'))), z(kt::str(o + std::string(1, '\0')));
        unsigned char out[64];
        EXPECT_GT(ASN1_code_ASCII_OID_to_DER(t.get(), static_cast<unsigned char>(o.size()), out), 0u) << o;
        EXPECT_GT(ASN1_code_ASCII_OID_to_DER(z.get(), static_cast<unsigned char>(o.size()), out), 0u) << o;
    }
}

TEST(EncodingBounds, Base64ExactBuffers) {
    kt::Rng rng(23);
    for (unsigned int n = 0; n < 40; ++n) {
        unsigned int t = (n + 2) / 3 * 4;
        Exact in(rng.bytes(n)), text{Bytes(t)}, back{Bytes(t / 4 * 3)};
        ASSERT_EQ(Base64_code_msg(in.get(), n, text.get()), t);
        if (t) { ASSERT_EQ(Base64_decode_msg(text.get(), t, back.get()), n); }
    }
    // len below 4 still reads the 4 characters at in[0..3] and writes 3 bytes.
    Exact four(kt::str("TWE=")), out{Bytes(3)};
    for (unsigned int len = 0; len < 4; ++len) EXPECT_EQ(Base64_decode_msg(four.get(), len, out.get()), 2u);
    // Every byte value through the single-character decoder and the block
    // decoder: nothing outside the alphabet is read.
    for (unsigned int c = 0; c < 256; ++c) {
        Exact g{Bytes(4, static_cast<unsigned char>(c))}, o{Bytes(3)};
        Base64_decode_block(g.get(), o.get());
        Base64_decode(static_cast<unsigned char>(c));
    }
}

TEST(EncodingBounds, Crc32ExactBuffers) {
    kt::Rng rng(29);
    for (unsigned int n = 0; n < 70; ++n) {
        Exact in(rng.bytes(n)), reg{Bytes(4, 0xFF)};
        ASSERT_EQ(CRC32_block_lookup(in.get(), n), CRC32_block(in.get(), n));
        CRC32_stream(reinterpret_cast<unsigned int*>(reg.get()), in.get(), n);
    }
}

}  // namespace
