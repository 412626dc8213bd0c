// Seeding and the start-up self-test: up to five attempts, each judging
// 819,200 bits (100 fills of the 1024-byte test buffer with 32 outputs).
#include "PRNG.h"
#include "core/bytes.h"
#include "rng/bit_stats.h"
#include "rng/prng_state.h"

namespace {

constexpr int kAttempts = 5;
constexpr int kFillsPerAttempt = 100;

}  // namespace

KORVEX_API int PRNG_init(unsigned char* seed) {
    kx::SpinGuard guard(kx::prng_lock);
    // The seed may overlap the state itself.
    unsigned char copy[kx::kPrngStateSize];
    kx::copy(copy, seed, sizeof copy);
    kx::copy(kx::prng_state, copy, sizeof copy);
    kx::wipe(copy, sizeof copy);

    kx::BitStats stats;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        stats.reset();
        for (int fill = 0; fill < kFillsPerAttempt; ++fill) {
            // Result codes are ignored: an unseeded state leaves the buffer as
            // it is, and the test then judges that.
            for (size_t o = 0; o < kx::kPrngTestBuffer; o += kx::kPrngOutput)
                kx::prng_step(kx::prng_test_buffer + o);
            stats.feed(kx::prng_test_buffer, kx::kPrngTestBuffer / 8);
        }
        if (kx::bit_counts_pass(stats.finish())) {
            kx::wipe(kx::prng_test_buffer, sizeof kx::prng_test_buffer);
            return 0;
        }
    }
    return 3;
}
