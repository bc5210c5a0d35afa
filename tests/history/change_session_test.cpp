// What a change leaves in the history, by its limits.
#include "history/change_session.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "history/database.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

// Some 2 MiB of descriptors, which no other batch has.
std::vector<DescriptorChange> LargeBatch(std::uint8_t number) {
    std::vector<DescriptorChange> batch(200);
    for (std::size_t i = 0; i < batch.size(); ++i) {
        batch[i].path = std::to_string(i);
        batch[i].before = {
            SecurityForm::kVolume, std::vector<std::uint8_t>(10'000, static_cast<std::uint8_t>(i)), {}};
        batch[i].before.bytes.front() = number;
        batch[i].after = {SecurityForm::kVolume, {1}, {}};
    }
    return batch;
}

TEST(ChangeSession, AChangeRemovesWhatExceedsTheLimits) {
    constexpr std::int64_t kDay = 86'400;
    const struct {
        const char* what;
        HistoryLimits limits;
        std::int64_t age;  // of the changes before, in seconds
        std::vector<std::int64_t> left;
    } rows[] = {
        {"neither old nor large", {.days = 2, .megabytes = 100}, kDay, {3, 2, 1}},
        {"old", {.days = 2, .megabytes = 100}, 3 * kDay, {3}},
        {"old, without that limit", {.days = 0, .megabytes = 100}, 3 * kDay, {3, 2, 1}},
        {"large: the oldest goes first", {.days = 2, .megabytes = 5}, kDay, {3, 2}},
        {"larger by itself: the newest stays", {.days = 2, .megabytes = 1}, kDay, {3}},
        {"large, without that limit", {.days = 2, .megabytes = 0}, kDay, {3, 2, 1}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const TemporaryFolder folder(FolderPlace::kMemory);
        const std::string path = folder.Path("state/history.db");
        std::uint8_t made = 0;
        const auto change = [&](const HistoryLimits& limits) {
            ChangeSession session(path, limits);
            ASSERT_EQ(session.Begin(ChangeKind::kReset), DWORD{ERROR_SUCCESS});
            std::uint64_t top = 0;
            ASSERT_EQ(session.Recorder().BeginTop({"C:\\top", true, {}}, top), DWORD{ERROR_SUCCESS});
            ASSERT_EQ(session.Recorder().Record(top, LargeBatch(++made)), DWORD{ERROR_SUCCESS});
            EXPECT_EQ(session.End(), DWORD{ERROR_SUCCESS});
        };
        change({.days = 0, .megabytes = 0});
        change({.days = 0, .megabytes = 0});
        Database database;
        ASSERT_EQ(database.Open(path, Database::Access::kReadWrite), DWORD{ERROR_SUCCESS});
        const std::string aged = "UPDATE changes SET ended=ended-" + std::to_string(row.age);
        ASSERT_EQ(database.Execute(aged.c_str()), DWORD{ERROR_SUCCESS});
        change(row.limits);

        std::unique_ptr<History> history;
        std::vector<ChangeFacts> changes;
        ASSERT_EQ(History::OpenToRead(path, history), DWORD{ERROR_SUCCESS});
        ASSERT_EQ(history->List(changes), DWORD{ERROR_SUCCESS});
        std::vector<std::int64_t> left;
        for (const ChangeFacts& facts : changes)
            left.push_back(facts.number);
        EXPECT_EQ(left, row.left);
    }
}

}  // namespace
}  // namespace permora::test
