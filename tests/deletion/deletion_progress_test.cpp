#include "deletion/deletion_progress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace permora {
namespace {

using namespace std::chrono_literals;

constexpr ULONGLONG kMiB = 1 << 20;

// So many bytes a second for so long, looked at every fifth of it. Returns the last text.
std::string Overwrite(DeletionProgress& progress, DeletionProgress::Time& now, int seconds, ULONGLONG rate) {
    constexpr int kLooks = 5;
    DeletionState state = progress.Look(now);
    for (int i = 0; i < seconds * kLooks; ++i) {
        now += 200ms;
        progress.Overwritten(rate / kLooks);
        state = progress.Look(now);
    }
    return state.text;
}

TEST(DeletionProgress, ShowsPercentAndACalmTimeLeft) {
    DeletionProgress progress;
    DeletionProgress::Time now;
    progress.Counting({kMiB, 7});
    EXPECT_EQ(progress.Look(now).text, "Counting: 7 objects");
    progress.AddItem(DeletionSize{1000 * kMiB, 1});
    progress.AddItem(DeletionSize{1000 * kMiB, 1});
    progress.Start();
    EXPECT_EQ(Overwrite(progress, now, 1, 10 * kMiB), "0 %");  // too early to tell more
    EXPECT_EQ(Overwrite(progress, now, 49, 10 * kMiB), "24 %, about 3 minutes left");
    EXPECT_EQ(progress.Look(now).percent, 24);
    // The user is asked, and takes his time.
    progress.Pause();
    now += 1h;
    progress.Look(now);
    progress.GoOn();
    EXPECT_EQ(Overwrite(progress, now, 10, 10 * kMiB), "29 %, about 3 minutes left");
    // Nothing moves for a moment, and then for long.
    now += 1s;
    EXPECT_EQ(progress.Look(now).text, "29 %, about 3 minutes left");
    EXPECT_THAT(Overwrite(progress, now, 20, 0), ::testing::MatchesRegex("29 %, about .. minutes left"));
    // The rest of the first item could not be deleted.
    progress.EndItem();
    EXPECT_EQ(progress.Look(now).percent, 50);
    progress.EndItem();
    progress.EndItem();
    EXPECT_EQ(progress.Look(now).percent, 100);
}

TEST(DeletionProgress, ClaimsNothingThatItDoesNotKnow) {
    DeletionProgress progress;
    DeletionProgress::Time now;
    progress.AddItem(DeletionSize{kMiB, 1});
    progress.AddItem(std::nullopt);
    progress.Start();
    EXPECT_EQ(progress.Look(now).text, "0 objects deleted");
    EXPECT_EQ(Overwrite(progress, now, 10, 128 * kMiB), "1.2 GB overwritten");
    EXPECT_FALSE(progress.Look(now).percent);
}

TEST(DeletionProgress, TakesTheLargestSizesAndMoreThanWasCounted) {
    constexpr ULONGLONG kMost = std::numeric_limits<ULONGLONG>::max();
    DeletionProgress progress;
    DeletionProgress::Time now;
    progress.AddItem(DeletionSize{kMost / 2 + 1, 1});
    progress.AddItem(DeletionSize{kMost / 2 + 1, kMost});
    progress.Start();
    EXPECT_EQ(Overwrite(progress, now, 5, 1), "0 %");  // a time that nobody will see
    progress.Overwritten(kMost / 4);
    EXPECT_GE(progress.Look(now).percent, 0);
    progress.Overwritten(kMost);
    progress.Deleted();
    progress.EndItem();
    progress.EndItem();
    progress.Deleted();
    EXPECT_EQ(progress.Look(now).percent, 100);
}

}  // namespace
}  // namespace permora
