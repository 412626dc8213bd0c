// The generator: GOST 28147-89 in CFB mode under the CryptoPro-A S-box. A step
// enciphers 72 zero bytes under the current key and synchro; the first 40
// bytes of the result replace key and synchro before the last 32 are handed
// out, so the state never holds anything from which earlier output follows.
#include "PRNG.h"
#include "cipher/gost89_kernels.h"
#include "core/bytes.h"
#include "core/ct_check.h"
#include "rng/prng_state.h"

namespace kx {

alignas(64) unsigned char prng_state[kPrngStateSize];
alignas(64) unsigned char prng_test_buffer[kPrngTestBuffer];
SpinLock prng_lock;

bool prng_seeded() {
    uint32_t any = 0;
    for (size_t i = 0; i < kPrngStateSize; i += 4) any |= load32(prng_state + i);
    ct::declassify(any);  // seeded or not is public; the state itself is not
    return any != 0;
}

int prng_step(unsigned char* out) {
    if (!prng_seeded()) return 1;
    // Selector 2 is CryptoPro-A. CFB over zero plaintext is a chain of block
    // encryptions: each ciphertext block is the encryption of the previous.
    const Gost89Table& table = gost89_table(2);
    Gost89Key key = gost89_key(prng_state);
    uint64_t v = load64(prng_state + 32);
    uint64_t o[9] = {};
    unsigned char* b = reinterpret_cast<unsigned char*>(o);
    gost89_serial(b, 9, key, table, &v, Gost89Chain::kOfb);  // on the fastest constant-time kernel
    copy(prng_state, b, 40);
    copy(out, b + 40, 32);
    gost89_wipe(key);
    wipe(o, sizeof o);
    wipe(&v, sizeof v);
    return 0;
}

}  // namespace kx

KORVEX_API int PRNG_get(type_uN<32>* out) {
    if (out == nullptr) return 2;
    kx::SpinGuard guard(kx::prng_lock);
    return kx::prng_step(out->b);
}

KORVEX_API unsigned char* PRNG_get_RAND_ptr() {
    return kx::prng_state;
}
