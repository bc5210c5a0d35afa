#include "platform/thread_tuner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>

namespace permora::host {
namespace {

// Objects in a second with so many threads.
using Machine = std::function<double(std::size_t threads)>;

struct Judgement {
    std::size_t threads;  // at the end
    double share;         // of the objects that the best number would have brought
};

// Lets a tuner choose for some seconds on a machine.
Judgement LetChoose(const Machine& machine, std::size_t most, std::size_t processors, double best) {
    constexpr int kSeconds = 10;
    constexpr int kStepsOfSecond = 1000;
    const ThreadTuner::Time begin{};
    ThreadTuner tuner(most, processors, begin);
    double objects = 0;
    for (int step = 1; step <= kSeconds * kStepsOfSecond; ++step) {
        objects += machine(tuner.Threads()) / kStepsOfSecond;
        tuner.Update(static_cast<std::uint64_t>(objects), begin + std::chrono::milliseconds(step));
    }
    return {tuner.Threads(), objects / (best * kSeconds)};
}

TEST(ThreadTuner, FindsTheNumberThatHelps) {
    const auto share = [](std::size_t threads, double serial) {
        return static_cast<double>(threads) / (1 + serial * static_cast<double>(threads - 1));
    };
    struct Case {
        const char* what;
        Machine machine;
        std::size_t most;
        std::size_t processors;
        double best;
        std::size_t least;  // the numbers that are as good as any
        std::size_t greatest;
    };
    const Case cases[] = {
        {"one request at a time", [](std::size_t) { return 30'000.0; }, 16, 2, 30'000, 1, 2},
        {"more threads are slower", [](std::size_t n) { return 30'000.0 / static_cast<double>(n); }, 16, 2,
         30'000, 1, 2},
        {"two processors", [&](std::size_t n) { return 1e5 * share(std::min<std::size_t>(n, 2), 0.2); }, 16,
         2, 1e5 * share(2, 0.2), 2, 4},
        {"a slow server", [](std::size_t n) { return 300.0 * static_cast<double>(n); }, 16, 2, 4800, 16, 16},
        {"a slow server to which two requests go like one",
         [](std::size_t n) { return 50.0 * static_cast<double>(std::max<std::size_t>(n / 2, 1)); }, 16, 2,
         400, 16, 16},
        {"a slow server, one request at a time", [](std::size_t) { return 50.0; }, 16, 2, 50, 1, 1},
        {"a large machine", [&](std::size_t n) { return 1e5 * share(n, 0.01); }, 64, 64,
         1e5 * share(64, 0.01), 32, 64},
        {"a limit that is no power of two", [](std::size_t n) { return 1e4 * static_cast<double>(n); }, 24, 8,
         24e4, 12, 24},
    };
    for (const Case& test : cases) {
        const Judgement judgement = LetChoose(test.machine, test.most, test.processors, test.best);
        EXPECT_GE(judgement.threads, test.least) << test.what;
        EXPECT_LE(judgement.threads, test.greatest) << test.what;
        EXPECT_GT(judgement.share, 0.9) << test.what;
    }
}

// Where each object takes a second, the way up must not be most of the work.
TEST(ThreadTuner, ClimbsWithinFewObjectsOfASlowServer) {
    const ThreadTuner::Time begin{};
    ThreadTuner tuner(16, 2, begin);
    std::uint64_t objects = 0;
    for (int second = 1; tuner.Threads() < 16 && second < 100; ++second)
        tuner.Update(objects += tuner.Threads(), begin + std::chrono::seconds(second));
    EXPECT_EQ(tuner.Threads(), 16U);
    EXPECT_LE(objects, 2U);
}

// Other programs take what they want of the processors, a different share at each moment.
TEST(ThreadTuner, IsNotMisledByTheLoadOfTheMachine) {
    std::minstd_rand random(1);
    const ThreadTuner::Time begin{};
    int stepsAtTwo = 0;
    constexpr int kWalks = 50;
    constexpr int kMillisecondsOfWalk = 500;
    for (int walk = 0; walk < kWalks; ++walk) {
        ThreadTuner tuner(16, 2, begin);
        double objects = 0;
        double share = 1;
        for (int step = 1; step <= kMillisecondsOfWalk; ++step) {
            if (step % 20 == 1) share = 0.85 + 0.3 * static_cast<double>(random() % 100) / 100;
            objects += share * (tuner.Threads() == 1 ? 100 : 170);
            tuner.Update(static_cast<std::uint64_t>(objects), begin + std::chrono::milliseconds(step));
            if (tuner.Threads() == 2) ++stepsAtTwo;
        }
    }
    EXPECT_GT(stepsAtTwo, kWalks * kMillisecondsOfWalk * 3 / 4);
}

TEST(ThreadTuner, NoticesWhenAnotherNumberHelps) {
    const ThreadTuner::Time begin{};
    ThreadTuner tuner(16, 2, begin);
    double objects = 0;
    std::size_t mostLater = 0;
    for (int step = 1; step <= 6000; ++step) {
        const bool isServed = step > 3000;
        objects += isServed ? static_cast<double>(tuner.Threads()) * 10 : 10;
        tuner.Update(static_cast<std::uint64_t>(objects), begin + std::chrono::milliseconds(step));
        if (isServed)
            mostLater = std::max(mostLater, tuner.Threads());
        else
            EXPECT_LE(tuner.Threads(), 2U);
    }
    EXPECT_EQ(mostLater, 16U);
}

}  // namespace
}  // namespace permora::host
