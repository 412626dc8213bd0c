// main() for the static hash test programs: with KORVEX_FORCE_PORTABLE every
// Streebog compression runs on the portable kernel.
#include <gtest/gtest.h>

#include "hash/streebog_core.h"

int main(int argc, char** argv) {
#ifdef KORVEX_FORCE_PORTABLE
    kx::streebog::forced_kernel = 1;
#endif
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
