// CRC-32 in its three forms, against python3's zlib.crc32.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "CRC32.h"
#include "common/test_util.h"

namespace {

using kt::Bytes;

unsigned int stream_in_pieces(const Bytes& d, kt::Rng& rng) {
    unsigned int reg = 0xFFFFFFFFu;
    size_t i = 0;
    while (i < d.size()) {
        size_t piece = std::min<size_t>(d.size() - i, rng.below(20));
        CRC32_stream(&reg, const_cast<unsigned char*>(d.data()) + i, static_cast<unsigned int>(piece));
        i += piece;
    }
    return ~reg;
}

TEST(Crc32, AllFormsMatchZlib) {
    auto records = kt::load_records("encoding/crc32.txt");
    ASSERT_GT(records.size(), 20u);
    kt::Rng rng(1);
    for (auto& r : records) {
        Bytes d = kt::from_hex(r["data"]);
        unsigned int expect = static_cast<unsigned int>(std::stoul(r["crc"], nullptr, 16));
        unsigned int n = static_cast<unsigned int>(d.size());
        EXPECT_EQ(CRC32_block(d.data(), n), expect) << n;
        EXPECT_EQ(CRC32_block_lookup(d.data(), n), expect) << n;
        EXPECT_EQ(stream_in_pieces(d, rng), expect) << n;
    }
}

TEST(Crc32, CheckValue) {
    unsigned char digits[] = "123456789";
    EXPECT_EQ(CRC32_block(digits, 9), 0xCBF43926u);
    EXPECT_EQ(CRC32_block_lookup(digits, 9), 0xCBF43926u);
    EXPECT_EQ(CRC32_block(digits, 0), 0u);
    EXPECT_EQ(CRC32_block_lookup(nullptr, 0), 0u);

    // The stream leaves conditioning to the caller.
    unsigned int reg = 0xFFFFFFFFu;
    CRC32_stream(&reg, digits, 4);
    CRC32_stream(&reg, digits + 4, 5);
    EXPECT_EQ(reg, 0x340BC6D9u);
    CRC32_stream(&reg, digits, 0);
    EXPECT_EQ(reg, 0x340BC6D9u);
    // No preset: from 0 the register is the raw remainder, not the CRC.
    reg = 0;
    CRC32_stream(&reg, digits, 9);
    EXPECT_NE(~reg, 0xCBF43926u);
}

TEST(Crc32, FormsAgreeOnRandomDataAndOffsets) {
    kt::Rng rng(99);
    Bytes big = rng.bytes(5000);
    for (unsigned int off = 0; off < 8; ++off)
        for (unsigned int n : {0u, 1u, 7u, 8u, 9u, 63u, 64u, 1000u, 4099u}) {
            unsigned int a = CRC32_block(big.data() + off, n);
            ASSERT_EQ(CRC32_block_lookup(big.data() + off, n), a) << off << " " << n;
            unsigned int reg = 0xFFFFFFFFu;
            CRC32_stream(&reg, big.data() + off, n);
            ASSERT_EQ(~reg, a);
        }
}

TEST(Crc32, StreamStoresRegisterAfterEveryByte) {
    // A register lying inside the data is seen by the bytes after it, as a
    // byte-serial loop that stores back each time would have it.
    unsigned char buf[12] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    unsigned char ref[12];
    std::copy(buf, buf + 12, ref);
    unsigned int reg_ref;
    std::memcpy(&reg_ref, ref + 4, 4);
    for (int i = 0; i < 12; ++i) {
        unsigned int b = ref[i];
        reg_ref ^= b;
        for (int k = 0; k < 8; ++k) reg_ref = (reg_ref >> 1) ^ (0xEDB88320u & (0u - (reg_ref & 1u)));
        std::memcpy(ref + 4, &reg_ref, 4);
    }
    CRC32_stream(reinterpret_cast<unsigned int*>(buf + 4), buf, 12);
    EXPECT_EQ(kt::to_hex(buf, 12), kt::to_hex(ref, 12));
}

}  // namespace
