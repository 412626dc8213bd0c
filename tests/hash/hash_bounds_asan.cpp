// Under AddressSanitizer: every function reads exactly the bytes it is given
// (messages, keys and passwords in buffers of exactly their length, a salt of
// exactly 4 bytes) and writes exactly its output.
#include <gtest/gtest.h>

#include <memory>

#include "GOST_34_11_2012.h"
#include "GOST_34_11_94.h"
#include "common/buffers.h"
#include "pkcs5.h"

namespace {

using kt::Exact;

TEST(HashBounds, MessagesOfEveryLength) {
    kt::Rng rng(21);
    std::unique_ptr<type_uN<32>> o32(new type_uN<32>);
    std::unique_ptr<type_uN<64>> o64(new type_uN<64>);
    for (unsigned len = 0; len <= 200; ++len) {
        Exact m(rng.bytes(len));
        GOST_34_11_94_hash(m.get(), len, nullptr, o32.get());
        GOST_34_11_2012_hash_256_bit(m.get(), len, o32.get());
        GOST_34_11_2012_hash_512_bit(m.get(), len, o64.get());
        GOST_34_11_2012_base(m.get(), len, o64.get());
        std::unique_ptr<stream_hash_t> s94(new stream_hash_t);
        std::unique_ptr<stream_hash_2012_t> s12(new stream_hash_2012_t);
        GOST_34_11_94_hash_init(nullptr, s94.get());
        GOST_34_11_2012_hash_512_init(s12.get());
        for (unsigned pos = 0, n; pos < len; pos += n) {
            n = 1 + rng.below(len - pos);
            Exact piece(kt::Bytes(m.get() + pos, m.get() + pos + n));
            GOST_34_11_94_hash_write(piece.get(), n, s94.get());
            GOST_34_11_2012_hash_write(piece.get(), n, s12.get());
        }
        GOST_34_11_94_hash_end(o32.get(), s94.get());
        GOST_34_11_2012_hash_512_end(o64.get(), s12.get());
    }
}

TEST(HashBounds, KeysAndPasswords) {
    kt::Rng rng(22);
    Exact data(rng.bytes(50));
    std::unique_ptr<type_uN<32>> o32(new type_uN<32>);
    std::unique_ptr<type_uN<64>> o64(new type_uN<64>);
    for (unsigned kl : {0u, 1u, 32u, 33u, 64u, 65u, 255u}) {
        Exact k(rng.bytes(kl));
        Exact salt(rng.bytes(4));
        const auto n = static_cast<unsigned char>(kl);
        GOST_34_11_94_HMAC(data.get(), 50, k.get(), n, o32.get());
        GOST_34_11_2012_HMAC_256_bit(data.get(), 50, k.get(), n, o32.get());
        GOST_34_11_2012_HMAC_512_bit(data.get(), 50, k.get(), n, o64.get());
        pkcs5_PBKDF2(k.get(), n, salt.get(), 3, o32.get());
        pkcs5_PBKDF2_2012(k.get(), n, salt.get(), 3, o32.get());
    }
}

// An N-byte value at an odd address, ending exactly where its allocation
// ends: misaligned and with nothing readable after it.
template <unsigned N>
struct Odd {
    std::unique_ptr<unsigned char[]> mem{new unsigned char[N + 1]()};
    type_uN<N>* operator&() { return reinterpret_cast<type_uN<N>*>(mem.get() + 1); }
};

TEST(HashBounds, BuildingBlocksOnMisalignedExactValues) {
    Odd<32> a, b, c;
    GOST_34_11_94_base_step(&a, &b);
    GOST_34_11_94_gen_key_and_encrypt(&a, &b, &c);
    GOST_34_11_94_mixing(&a, &b, &c);
    GOST_34_11_94_mixing(&a, nullptr, &c);
    GOST_34_11_94_mix(&a, 255);
    GOST_34_11_94_P(&a, &b);
    GOST_34_11_94_A(&a);
    GOST_34_11_94_sum_mod_2_256(&a, &b);
    GOST_34_11_94_xor_u256(&a, &b, &c);
    GOST_34_11_94_hash(nullptr, 0, &b, &a);
    Odd<64> x, y, z;
    GOST_34_11_2012_Sbox(&x);
    GOST_34_11_2012_Transposition(&x);
    GOST_34_11_2012_Mix_Columns(&x);
    GOST_34_11_2012_xor_512(&x, &y, &z);
    GOST_34_11_2012_sum_mod_2_512(&x, &y, &z);
    for (unsigned char i = 0; i < 13; ++i) GOST_34_11_2012_Key(&x, i);
    GOST_34_11_2012_E(&x, &y, &z);
    GOST_34_11_2012_G(&x, &y, &z);
    GOST_34_11_2012_base(nullptr, 0, &x);
    Odd<4> salt;
    GOST_34_11_2012_HMAC_256_bit(nullptr, 0, nullptr, 0, &a);
    GOST_34_11_2012_HMAC_512_bit(nullptr, 0, nullptr, 0, &x);
    pkcs5_PBKDF2(nullptr, 0, salt.mem.get() + 1, 2, &a);
    pkcs5_PBKDF2_2012(nullptr, 0, salt.mem.get() + 1, 2, &a);
}

}  // namespace
