// Skips every test of a cipher test program pinned to a missing kernel.
#include <gtest/gtest.h>

#include "kernel_guard.h"

namespace {
struct Guard : ::testing::Environment {
    void SetUp() override {
        if (const char* why = kernel_missing()) GTEST_SKIP() << why;
    }
};
::testing::Environment* const g_guard = ::testing::AddGlobalTestEnvironment(new Guard);
}  // namespace
