// Concurrent draws: every step is atomic, so the values drawn by several
// threads at once are exactly the first N values of the serial stream, each
// once, in some order.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <thread>

#include "PRNG.h"
#include "rng/prng_model.h"

namespace {

using kt::Out32;

// Draws `each` values on each of `threads` threads released together, runs
// `meanwhile` on this thread once they are, and returns every value drawn, sorted.
template <class F>
std::vector<Out32> draw_concurrently(int threads, int each, F meanwhile) {
    std::vector<std::vector<Out32>> drawn(threads);
    std::atomic<int> ready{0}, failures{0};
    std::vector<std::thread> pool;
    for (int t = 0; t < threads; ++t)
        pool.emplace_back([&, t] {
            ready.fetch_add(1);
            while (ready.load() < threads) {
            }
            for (int i = 0; i < each; ++i) {
                type_uN<32> out;
                if (PRNG_get(&out) != 0) failures.fetch_add(1);
                drawn[t].emplace_back();
                std::memcpy(drawn[t].back().data(), out.b, 32);
            }
        });
    while (ready.load() < threads) {
    }
    meanwhile();
    for (auto& th : pool) th.join();
    EXPECT_EQ(failures.load(), 0);
    std::vector<Out32> all;
    for (auto& v : drawn) all.insert(all.end(), v.begin(), v.end());
    std::sort(all.begin(), all.end());
    return all;
}

std::vector<Out32> serial_stream(kt::PrngModel& m, int n) {
    std::vector<Out32> s(n);
    for (auto& o : s) o = m.step();
    return s;
}

TEST(PrngThreads, DrawsAreTheSerialStreamInSomeOrder) {
    constexpr int kThreads = 6, kEach = 1500;
    kt::Bytes seed = kt::Rng(2024).bytes(40);
    std::memcpy(PRNG_get_RAND_ptr(), seed.data(), 40);
    std::vector<Out32> all = draw_concurrently(kThreads, kEach, [] {});
    EXPECT_EQ(std::adjacent_find(all.begin(), all.end()), all.end()) << "an output was drawn twice";

    kt::PrngModel m(seed.data());
    std::vector<Out32> serial = serial_stream(m, kThreads * kEach);
    std::sort(serial.begin(), serial.end());
    EXPECT_EQ(all, serial);
    EXPECT_EQ(kt::Bytes(PRNG_get_RAND_ptr(), PRNG_get_RAND_ptr() + 40), m.state()) << "state after N steps";
}

TEST(PrngThreads, InitWhileOthersDraw) {
    // A seeding in the middle of draws is atomic too: the values drawn are a
    // prefix of the old stream (before the seeding) and a prefix of the new
    // one (after its self-test), never from a mix of states.
    constexpr int kThreads = 3, kEach = 400;
    kt::Bytes old_seed = kt::Rng(31).bytes(40), new_seed = kt::Rng(32).bytes(40);
    std::memcpy(PRNG_get_RAND_ptr(), old_seed.data(), 40);
    std::vector<Out32> all = draw_concurrently(kThreads, kEach, [&] {
        std::this_thread::sleep_for(std::chrono::microseconds(200));
        ASSERT_EQ(PRNG_init(new_seed.data()), 0);
    });

    kt::PrngModel a(old_seed.data()), b(new_seed.data());
    kt::model_init(b);
    std::vector<Out32> old_stream = serial_stream(a, kThreads * kEach), new_stream = serial_stream(b, kThreads * kEach);
    // n_old values from the old stream; the rest must be the first of the new.
    auto n_old = std::count_if(all.begin(), all.end(), [&](const Out32& o) {
        return std::find(old_stream.begin(), old_stream.end(), o) != old_stream.end();
    });
    std::vector<Out32> expect(old_stream.begin(), old_stream.begin() + n_old);
    expect.insert(expect.end(), new_stream.begin(), new_stream.begin() + (all.size() - n_old));
    std::sort(expect.begin(), expect.end());
    EXPECT_EQ(all, expect);
}

}  // namespace
