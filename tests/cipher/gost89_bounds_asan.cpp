// GOST 28147-89 functions on exact-size heap buffers under AddressSanitizer:
// no function may read or write a byte outside data[0..len), the 8-byte
// synchro, the 32-byte key or the 44-byte wrapped key, at any length, and a
// length of 0 must not touch the (null) data pointer.
#include <gtest/gtest.h>

#include <memory>

#include "gost89_test_util.h"

using namespace kt;

namespace {

// Separately allocated so that ASan's redzones sit right after each object.
struct Heap {
    std::unique_ptr<unsigned char[]> p;
    explicit Heap(const Bytes& b) : p(new unsigned char[b.size()]) { std::memcpy(p.get(), b.data(), b.size()); }
    unsigned char* data() { return p.get(); }
    template <class T>
    T* as() { return reinterpret_cast<T*>(p.get()); }
};

unsigned char* data_or_null(std::unique_ptr<unsigned char[]>& p, size_t n) { return n ? p.get() : nullptr; }

}  // namespace

TEST(Gost89Bounds, EveryModeAtEveryLength) {
    Rng rng(40);
    Heap key(rng.bytes(32)), iv(rng.bytes(8));
    for (size_t len = 0; len <= 80; ++len) {
        for (unsigned char sel : {0, 7}) {
            const Bytes plain = rng.bytes(len);
            std::unique_ptr<unsigned char[]> buf(len ? new unsigned char[len] : nullptr);
            if (len) std::memcpy(buf.get(), plain.data(), len);
            unsigned char* d = data_or_null(buf, len);
            const unsigned n = static_cast<unsigned>(len);
            type_uN<32>* k = key.as<type_uN<32>>();
            type_u64* s = iv.as<type_u64>();
            GOST_28147_89_Z_ECB(d, n, k, sel);
            GOST_28147_89_R_ECB(d, n, k, sel);
            GOST_28147_89_ZR_CTR(d, n, k, s, sel);
            GOST_28147_89_ZR_CTR(d, n, k, s, sel);
            GOST_28147_89_Z_CFB(d, n, k, s, sel);
            GOST_28147_89_R_CFB(d, n, k, s, sel);
            GOST_28147_89_Z_CBC(d, n, k, s, sel);
            GOST_28147_89_R_CBC(d, n, k, nullptr, sel);
            GOST_28147_89_Z_CBC(d, n, k, nullptr, sel);
            GOST_28147_89_R_CBC(d, n, k, s, sel);
            if (len) EXPECT_EQ(Bytes(d, d + len), plain) << len;
            GOST_28147_89_MAC(d, n, k, s, sel);
            GOST_28147_89_MAC(d, n, k, nullptr, sel);
        }
    }
}

TEST(Gost89Bounds, StreamingPiecesOfExactSize) {
    Rng rng(41);
    Heap key(rng.bytes(32)), iv(rng.bytes(8));
    for (int trial = 0; trial < 100; ++trial) {
        stream_GOST_CTR_t* cs = new stream_GOST_CTR_t;
        stream_MAC_t* ms = new stream_MAC_t;
        GOST_28147_89_ZR_CTR_init(key.as<type_uN<32>>(), iv.as<type_u64>(), 0, cs);
        GOST_28147_89_MAC_init(key.as<type_uN<32>>(), 0, ms);
        for (int piece = 0; piece < 12; ++piece) {
            const size_t n = rng.below(19);
            std::unique_ptr<unsigned char[]> buf(n ? new unsigned char[n] : nullptr);
            for (size_t i = 0; i < n; ++i) buf[i] = static_cast<unsigned char>(i);
            GOST_28147_89_ZR_CTR_step(data_or_null(buf, n), static_cast<unsigned>(n), cs);
            GOST_28147_89_MAC_step(data_or_null(buf, n), static_cast<unsigned>(n), ms);
        }
        delete cs;
        delete ms;
    }
}

TEST(Gost89Bounds, PaddingWritesOnlyItsBlock) {
    for (unsigned char len = 0; len <= 9; ++len)
        for (unsigned char mode : {0, 1}) {
            std::unique_ptr<unsigned char[]> d(new unsigned char[len ? len : 1]);
            std::unique_ptr<unsigned char[]> out(new unsigned char[8]);
            std::memset(d.get(), 0x42, len ? len : 1);
            // Lengths 0 and 8 or more read nothing: the data pointer may be null.
            GOST_28147_89_padding(len && len < 8 ? d.get() : nullptr, len, reinterpret_cast<type_u64*>(out.get()), mode);
        }
}

TEST(Gost89Bounds, KeyWrapBuffers) {
    Rng rng(42);
    Heap ukm(rng.bytes(8)), kek(rng.bytes(32)), cek(rng.bytes(32)), cek_out(Bytes(32)), wrapped(Bytes(44));
    for (unsigned char sel : {0, 1, 7}) {
        GOST_28147_89_Key_Wrap(wrapped.data(), ukm.as<type_u64>(), kek.as<type_uN<32>>(), cek.as<type_uN<32>>(), sel);
        EXPECT_FALSE(GOST_28147_89_Key_Unwrap(wrapped.data(), 0, kek.as<type_uN<32>>(), cek_out.as<type_uN<32>>(), sel));
        GOST_28147_89_CryptoPro_Key_Wrap(wrapped.data(), ukm.as<type_u64>(), kek.as<type_uN<32>>(), cek.as<type_uN<32>>(), sel);
        EXPECT_FALSE(
            GOST_28147_89_CryptoPro_Key_Unwrap(wrapped.data(), 0, kek.as<type_uN<32>>(), cek_out.as<type_uN<32>>(), sel));
        EXPECT_EQ(0, std::memcmp(cek.data(), cek_out.data(), 32));
        GOST_28147_89_key_mesh(kek.as<type_uN<32>>(), ukm.as<type_u64>(), sel);
    }
    std::unique_ptr<unsigned char[]> z(new unsigned char[128]);
    GOST_28147_89_tableZ(0, z.get());
}
