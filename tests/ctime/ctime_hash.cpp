// Constant-time check of the hashes, HMAC and PBKDF2 under valgrind memcheck:
// data, keys and passwords are marked undefined, so any branch or memory
// address that depends on them is reported. Lengths stay public.
// Valgrind runs no AVX-512 code (it hides those CPUID bits), so under it
// Streebog runs its portable kernel (S by shuffles, L by masks); the AVX-512
// kernel makes no memory access at all that depends on its inputs (S and L
// are register permutes and GF(2) affine steps).
#include <valgrind/memcheck.h>

#include <cstdio>
#include <initializer_list>

#include "GOST_34_11_2012.h"
#include "GOST_34_11_94.h"
#include "pkcs5.h"

namespace {

template <class T>
void secret(T& v) { VALGRIND_MAKE_MEM_UNDEFINED(&v, sizeof v); }

}  // namespace

int main() {
    unsigned char data[150], key[80], salt[4];
    for (unsigned i = 0; i < sizeof data; ++i) data[i] = static_cast<unsigned char>(i * 7);
    for (unsigned i = 0; i < sizeof key; ++i) key[i] = static_cast<unsigned char>(i * 13);
    for (unsigned i = 0; i < sizeof salt; ++i) salt[i] = static_cast<unsigned char>(i);
    secret(data);
    secret(key);
    secret(salt);
    type_uN<64> h512;
    type_uN<32> h256;
    for (unsigned len : {0u, 63u, 64u, 150u}) {
        GOST_34_11_94_hash(data, len, nullptr, &h256);
        GOST_34_11_2012_hash_512_bit(data, len, &h512);
        GOST_34_11_2012_hash_256_bit(data, len, &h256);
        stream_hash_2012_t st;
        GOST_34_11_2012_hash_512_init(&st);
        GOST_34_11_2012_hash_write(data, len / 3, &st);
        GOST_34_11_2012_hash_write(data + len / 3, len - len / 3, &st);
        GOST_34_11_2012_hash_512_end(&h512, &st);
    }
    for (unsigned char klen : {0, 32, 64, 80}) {  // short, 94 block, 2012 block, hashed key
        GOST_34_11_94_HMAC(data, 100, key, klen, &h256);
        GOST_34_11_2012_HMAC_512_bit(data, 100, key, klen, &h512);
        GOST_34_11_2012_HMAC_256_bit(data, 100, key, klen, &h256);
    }
    pkcs5_PBKDF2(key, 13, salt, 3, &h256);
    pkcs5_PBKDF2_2012(key, 13, salt, 3, &h256);
    std::printf("ctime_hash: done\n");
    return 0;
}
