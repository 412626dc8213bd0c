// GOST 28147-89 functions on exact-size heap buffers under AddressSanitizer:
// no function may read or write a byte outside data[0..len), the 8-byte
// synchro, the 32-byte key or the 44-byte wrapped key, at any length, and a
// length of 0 must not touch the (null) data pointer.
#include <gtest/gtest.h>

#include <memory>

#include "gost89_test_util.h"

using namespace kt;

namespace {

// Separately allocated, so that ASan's redzones sit right after each object;
// a length of 0 gives a null pointer.
struct Heap {
    std::unique_ptr<unsigned char[]> p;
    explicit Heap(const Bytes& b) : p(b.empty() ? nullptr : new unsigned char[b.size()]) {
        std::copy(b.begin(), b.end(), p.get());
    }
    unsigned char* data() { return p.get(); }
    template <class T>
    T* as() { return reinterpret_cast<T*>(p.get()); }
};

}  // namespace

TEST(Gost89Bounds, EveryModeAtEveryLength) {
    Rng rng(40);
    Heap key(rng.bytes(32)), iv(rng.bytes(8));
    type_uN<32>* k = key.as<type_uN<32>>();
    type_u64* s = iv.as<type_u64>();
    for (unsigned n = 0; n <= 80; ++n) {
        for (unsigned char sel : {0, 7}) {
            const Bytes plain = rng.bytes(n);
            Heap buf(plain);
            unsigned char* d = buf.data();
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
            if (n) { EXPECT_EQ(Bytes(d, d + n), plain) << n; }
            GOST_28147_89_MAC(d, n, k, s, sel);
            GOST_28147_89_MAC(d, n, k, nullptr, sel);
        }
    }
}

TEST(Gost89Bounds, StreamingPiecesOfExactSize) {
    Rng rng(41);
    Heap key(rng.bytes(32)), iv(rng.bytes(8));
    for (int trial = 0; trial < 100; ++trial) {
        std::unique_ptr<stream_GOST_CTR_t> cs(new stream_GOST_CTR_t);
        std::unique_ptr<stream_MAC_t> ms(new stream_MAC_t);
        GOST_28147_89_ZR_CTR_init(key.as<type_uN<32>>(), iv.as<type_u64>(), 0, cs.get());
        GOST_28147_89_MAC_init(key.as<type_uN<32>>(), 0, ms.get());
        for (int piece = 0; piece < 12; ++piece) {
            const unsigned n = rng.below(19);
            Heap buf(rng.bytes(n));
            GOST_28147_89_ZR_CTR_step(buf.data(), n, cs.get());
            GOST_28147_89_MAC_step(buf.data(), n, ms.get());
        }
    }
}

TEST(Gost89Bounds, PaddingWritesOnlyItsBlock) {
    for (unsigned char len = 0; len <= 9; ++len)
        for (unsigned char mode : {0, 1}) {
            Heap d(Bytes(len ? len : 1, 0x42)), out(Bytes(8));
            // Lengths 0 and 8 or more read nothing: the data pointer may be null.
            GOST_28147_89_padding(len && len < 8 ? d.data() : nullptr, len, out.as<type_u64>(), mode);
        }
}

TEST(Gost89Bounds, KeyWrapBuffers) {
    Rng rng(42);
    Heap ukm(rng.bytes(8)), kek(rng.bytes(32)), cek(rng.bytes(32)), cek_out(Bytes(32)), wrapped(Bytes(44));
    type_uN<32> *k = kek.as<type_uN<32>>(), *c = cek.as<type_uN<32>>(), *out = cek_out.as<type_uN<32>>();
    for (unsigned char sel : {0, 1, 7}) {
        GOST_28147_89_Key_Wrap(wrapped.data(), ukm.as<type_u64>(), k, c, sel);
        EXPECT_FALSE(GOST_28147_89_Key_Unwrap(wrapped.data(), 0, k, out, sel));
        GOST_28147_89_CryptoPro_Key_Wrap(wrapped.data(), ukm.as<type_u64>(), k, c, sel);
        EXPECT_FALSE(GOST_28147_89_CryptoPro_Key_Unwrap(wrapped.data(), 0, k, out, sel));
        EXPECT_EQ(0, std::memcmp(cek.data(), cek_out.data(), 32));
        GOST_28147_89_key_mesh(k, ukm.as<type_u64>(), sel);
    }
    Heap z(Bytes(128));
    GOST_28147_89_tableZ(0, z.data());
}
