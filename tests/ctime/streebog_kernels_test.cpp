// The Streebog kernels against each other, on the library's sources (the
// kernel switch is internal): the compression on random values, and whole
// hashes, HMAC and PBKDF2 of random data of every length up to three blocks
// read at odd offsets and from a buffer that ends right before an unmapped page.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>

#include "GOST_34_11_2012.h"
#include "common/test_util.h"
#include "hash/streebog_core.h"
#include "pkcs5.h"

namespace {

namespace sb = kx::streebog;

// Every 2012 result of data on the kernel chosen by forced_kernel.
kt::Bytes digests(unsigned char* p, unsigned n) {
    type_uN<64> h512, mac512;
    type_uN<32> h256, mac256, kdf;
    GOST_34_11_2012_hash_512_bit(p, n, &h512);
    GOST_34_11_2012_hash_256_bit(p, n, &h256);
    GOST_34_11_2012_HMAC_512_bit(p, n, p, static_cast<unsigned char>(n), &mac512);
    GOST_34_11_2012_HMAC_256_bit(p, n, p, static_cast<unsigned char>(n), &mac256);
    unsigned char salt[4] = {1, 2, 3, 4};  // always 4 bytes read
    pkcs5_PBKDF2_2012(p, static_cast<unsigned char>(n), salt, 3, &kdf);
    kt::Bytes r(h512.b, h512.b + 64);
    for (auto* v : {h256.b, mac256.b, kdf.b}) r.insert(r.end(), v, v + 32);
    r.insert(r.end(), mac512.b, mac512.b + 64);
    return r;
}

class StreebogKernels : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!sb::avx512_available()) GTEST_SKIP() << "no AVX-512 VBMI/GFNI here";
    }
    void TearDown() override { sb::forced_kernel = 0; }
};

TEST_F(StreebogKernels, CompressionOnRandomValues) {
    kt::Rng rng(15);
    for (int i = 0; i < 500; ++i) {
        sb::Block h, N, m, h2;
        for (auto* b : {&h, &N, &m})
            for (auto& w : b->w) w = rng.next();
        if (i & 1) N = sb::Block{};  // the finalisation's zero counter
        h2 = h;
        sb::compress_portable(h, N, m);
        sb::compress_avx512(h2, N, m);
        ASSERT_EQ(0, std::memcmp(h.w, h2.w, 64)) << i;
    }
}

TEST_F(StreebogKernels, WholeMessagesAtPageEndAndOddOffsets) {
    const long page = sysconf(_SC_PAGESIZE);
    unsigned char* map = static_cast<unsigned char*>(
        mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    ASSERT_NE(map, MAP_FAILED);
    ASSERT_EQ(0, mprotect(map + page, page, PROT_NONE));
    kt::Rng rng(16);
    for (unsigned n = 0; n <= 192; ++n) {
        const kt::Bytes data = rng.bytes(n);
        unsigned char* at_end = map + page - n;  // the last byte is right before the guard page
        if (n) std::memcpy(at_end, data.data(), n);
        kt::Bytes odd(n + 3);
        if (n) std::memcpy(odd.data() + 3, data.data(), n);
        sb::forced_kernel = 1;
        const kt::Bytes want = digests(odd.data() + 3, n);
        sb::forced_kernel = 0;
        ASSERT_EQ(want, digests(at_end, n)) << n;
        ASSERT_EQ(want, digests(odd.data() + 3, n)) << n;
    }
    munmap(map, 2 * page);
}

}  // namespace
