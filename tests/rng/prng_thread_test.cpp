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

TEST(PrngThreads, DrawsAreTheSerialStreamInSomeOrder) {
    constexpr int kThreads = 6, kEach = 1500;
    kt::Bytes seed = kt::Rng(2024).bytes(40);
    std::memcpy(PRNG_get_RAND_ptr(), seed.data(), 40);

    std::vector<std::vector<Out32>> drawn(kThreads);
    std::atomic<int> ready{0};
    std::atomic<int> failures{0};
    std::vector<std::thread> pool;
    for (int t = 0; t < kThreads; ++t)
        pool.emplace_back([&, t] {
            ready.fetch_add(1);
            while (ready.load() < kThreads) {
            }
            for (int i = 0; i < kEach; ++i) {
                type_uN<32> out;
                if (PRNG_get(&out) != 0) failures.fetch_add(1);
                Out32 o;
                std::memcpy(o.data(), out.b, 32);
                drawn[t].push_back(o);
            }
        });
    for (auto& th : pool) th.join();
    ASSERT_EQ(failures.load(), 0);

    std::vector<Out32> all;
    for (auto& v : drawn) all.insert(all.end(), v.begin(), v.end());
    std::sort(all.begin(), all.end());
    EXPECT_EQ(std::adjacent_find(all.begin(), all.end()), all.end()) << "an output was drawn twice";

    kt::PrngModel m(seed.data());
    std::vector<Out32> serial;
    for (int i = 0; i < kThreads * kEach; ++i) serial.push_back(m.step());
    std::sort(serial.begin(), serial.end());
    EXPECT_EQ(all, serial);
    EXPECT_EQ(0, std::memcmp(PRNG_get_RAND_ptr(), m.st, 40)) << "state after N steps";
}

TEST(PrngThreads, InitWhileOthersDraw) {
    // A seeding in the middle of draws is atomic too: every value drawn is
    // either from the old stream before the seeding or from the new one after
    // its self-test, never a mix of states.
    constexpr int kThreads = 3, kEach = 400;
    kt::Bytes old_seed = kt::Rng(31).bytes(40), new_seed = kt::Rng(32).bytes(40);
    std::memcpy(PRNG_get_RAND_ptr(), old_seed.data(), 40);

    std::vector<std::vector<Out32>> drawn(kThreads);
    std::atomic<bool> go{false};
    std::vector<std::thread> pool;
    for (int t = 0; t < kThreads; ++t)
        pool.emplace_back([&, t] {
            while (!go.load()) {
            }
            for (int i = 0; i < kEach; ++i) {
                type_uN<32> out;
                PRNG_get(&out);
                Out32 o;
                std::memcpy(o.data(), out.b, 32);
                drawn[t].push_back(o);
            }
        });
    go = true;
    std::this_thread::sleep_for(std::chrono::microseconds(200));
    ASSERT_EQ(PRNG_init(new_seed.data()), 0);
    for (auto& th : pool) th.join();

    std::vector<Out32> all;
    for (auto& v : drawn) all.insert(all.end(), v.begin(), v.end());
    std::sort(all.begin(), all.end());

    // Candidates: enough of both streams to cover every draw.
    kt::PrngModel a(old_seed.data()), b(new_seed.data());
    kt::model_init(b);
    std::vector<Out32> old_stream, new_stream;
    for (int i = 0; i < kThreads * kEach; ++i) {
        old_stream.push_back(a.step());
        new_stream.push_back(b.step());
    }
    // The old values form a prefix of the old stream, the new ones a prefix
    // of the new stream, and together they are all draws.
    size_t n_old = 0, n_new = 0;
    for (const Out32& o : all) {
        if (std::find(old_stream.begin(), old_stream.end(), o) != old_stream.end()) ++n_old;
        else if (std::find(new_stream.begin(), new_stream.end(), o) != new_stream.end()) ++n_new;
        else ADD_FAILURE() << "a value from neither stream";
    }
    std::vector<Out32> expect(old_stream.begin(), old_stream.begin() + n_old);
    expect.insert(expect.end(), new_stream.begin(), new_stream.begin() + n_new);
    std::sort(expect.begin(), expect.end());
    EXPECT_EQ(all, expect);
}

}  // namespace
