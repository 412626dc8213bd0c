// CRC-32 in its three forms, against python3's zlib.crc32.
#include <gtest/gtest.h>

#include <algorithm>

#include "CRC32.h"
#include "common/test_util.h"

namespace {

using kt::Bytes;

// The standard CRC from the stream form: preset, pieces of 0..19 bytes, complement.
unsigned int stream_in_pieces(unsigned char* d, size_t n, kt::Rng& rng) {
    unsigned int reg = 0xFFFFFFFFu;
    for (size_t i = 0, piece; i < n; i += piece) {
        piece = std::min<size_t>(n - i, rng.below(20));
        CRC32_stream(&reg, d + i, static_cast<unsigned int>(piece));
    }
    return ~reg;
}

// Every form at every offset modulo 8 (the table form reads 16 bytes at a time).
TEST(Crc32, AllFormsMatchZlibAtEveryOffset) {
    auto records = kt::load_records("encoding/crc32.txt");
    ASSERT_GT(records.size(), 20u);
    kt::Rng rng(1);
    for (auto& r : records) {
        Bytes d = kt::from_hex(r["data"]), buf(d.size() + 8);
        unsigned int expect = static_cast<unsigned int>(std::stoul(r["crc"], nullptr, 16));
        unsigned int n = static_cast<unsigned int>(d.size());
        for (unsigned int off = 0; off < 8; ++off) {
            unsigned char* p = buf.data() + off;
            std::copy(d.begin(), d.end(), p);
            EXPECT_EQ(CRC32_block(p, n), expect) << n << " at " << off;
            EXPECT_EQ(CRC32_block_lookup(p, n), expect) << n << " at " << off;
            EXPECT_EQ(stream_in_pieces(p, n, rng), expect) << n << " at " << off;
        }
    }
}

TEST(Crc32, CheckValue) {
    unsigned char digits[] = "123456789";
    EXPECT_EQ(CRC32_block(digits, 9), 0xCBF43926u);
    EXPECT_EQ(CRC32_block_lookup(digits, 9), 0xCBF43926u);
    EXPECT_EQ(CRC32_block_lookup(nullptr, 0), 0u);
    // The stream leaves conditioning to the caller (empty pieces, which leave
    // the register as it is, come up in the zlib test).
    unsigned int reg = 0xFFFFFFFFu;
    CRC32_stream(&reg, digits, 4);
    CRC32_stream(&reg, digits + 4, 5);
    EXPECT_EQ(reg, 0x340BC6D9u);
}

TEST(Crc32, StreamStoresRegisterAfterEveryByte) {
    // A register lying inside the data is seen by the bytes after it, exactly
    // as when the bytes are fed one call at a time.
    alignas(4) unsigned char buf[12] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    alignas(4) unsigned char ref[12];
    std::copy(buf, buf + 12, ref);
    CRC32_stream(reinterpret_cast<unsigned int*>(buf + 4), buf, 12);
    for (int i = 0; i < 12; ++i) CRC32_stream(reinterpret_cast<unsigned int*>(ref + 4), ref + i, 1);
    EXPECT_EQ(kt::to_hex(buf, 12), kt::to_hex(ref, 12));
}

}  // namespace
