// Linked into every hostile-input program: these fail when the program was
// built without AddressSanitizer or UndefinedBehaviorSanitizer, so that a
// suite whose checks are the sanitizers' reports cannot pass silently.
#include <gtest/gtest.h>

#include <climits>
#include <memory>

namespace {

volatile int sink;
volatile int one = 1;

void read_past(int n) {
    std::unique_ptr<char[]> p(new char[16]);
    sink = p[n];
}

void overflow(int n) { sink = n + INT_MAX; }

TEST(Sanitizers, ReportOverReadAndSignedOverflow) {
    EXPECT_DEATH(read_past(15 + one), "heap-buffer-overflow");
    EXPECT_DEATH(overflow(one), "signed integer overflow");
}

}  // namespace
