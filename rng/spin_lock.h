// A test-and-test-and-set spin lock on one lock-free byte. It needs no OS
// call and no constructor: a zero byte is the unlocked state, so a
// zero-initialised global is ready before any code runs.
#ifndef KORVEX_RNG_SPIN_LOCK_H
#define KORVEX_RNG_SPIN_LOCK_H

#include <emmintrin.h>

namespace kx {

struct SpinLock {
    bool locked;  // accessed only through __atomic builtins

    void lock() {
        while (__atomic_test_and_set(&locked, __ATOMIC_ACQUIRE)) {
            // Wait on a plain load so the line stays shared while it is held.
            while (__atomic_load_n(&locked, __ATOMIC_RELAXED)) _mm_pause();
        }
    }
    void unlock() { __atomic_clear(&locked, __ATOMIC_RELEASE); }
};

static_assert(__atomic_always_lock_free(sizeof(bool), 0), "the lock byte must be lock-free");

// Holds a SpinLock for the lifetime of a scope.
class SpinGuard {
public:
    explicit SpinGuard(SpinLock& l) : l_(l) { l_.lock(); }
    ~SpinGuard() { l_.unlock(); }
    SpinGuard(const SpinGuard&) = delete;
    SpinGuard& operator=(const SpinGuard&) = delete;

private:
    SpinLock& l_;
};

}  // namespace kx

#endif
