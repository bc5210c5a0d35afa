// Writing in batches: what is recorded, what is written, and when.
#include "history/stored_writes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/api/errors.h"
#include "tests/support/access_lists.h"
#include "tests/support/patience.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::IsEmpty;

DescriptorChange ChangeOf(std::uint64_t number) {
    DescriptorChange change;
    change.path = std::to_string(number);
    change.fileNumber = number;
    return change;
}

// Both halves, and what came of them.
class Watcher : public ChangeRecorder {
  public:
    DWORD BeginTop(const ChangedTop& /*top*/, std::uint64_t& number) override {
        number = 7;
        return ERROR_SUCCESS;
    }
    DWORD Record(std::uint64_t top, std::span<const DescriptorChange> batch) override {
        const std::lock_guard lock(guard);
        if (batches == mostBatches) return ERROR_DISK_FULL;
        ++batches;
        begun.notify_all();
        EXPECT_EQ(top, 7U);
        for (const DescriptorChange& change : batch)
            recorded.insert(change.path);
        return ERROR_SUCCESS;
    }
    DWORD Error() const override { return ERROR_SUCCESS; }

    // The last object of the second batch is not written before the third one is being recorded.
    DWORD Write(const DescriptorChange& change) {
        std::unique_lock lock(guard);
        if (!recorded.contains(change.path)) late.push_back(change.path);
        if (change.path == waiting) isBegun = begun.wait_for(lock, kPatience, [this] { return batches > 2; });
        return change.fileNumber % 10 == 3 ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
    }

    std::size_t mostBatches = 1000;
    std::string waiting;
    bool isBegun = false;
    std::size_t batches = 0;
    std::set<std::string> recorded;
    std::vector<std::string> late;

  private:
    std::mutex guard;
    std::condition_variable begun;
};

class StoredWritesTest : public testing::Test {
  protected:
    // So many objects; the last result.
    DWORD Add(std::uint64_t count) {
        DWORD error = ERROR_SUCCESS;
        for (std::uint64_t i = 0; i < count && error == ERROR_SUCCESS; ++i) {
            const std::uint64_t number = added++;
            error = writes.Add(Held(file), ChangeOf(number));
        }
        return error;
    }
    // Whether these are all that are done, in their order and with their results.
    void ExpectDone(std::uint64_t count) const {
        ASSERT_EQ(done.size(), count);
        for (std::uint64_t i = 0; i < count; ++i)
            EXPECT_EQ(done[i],
                      std::pair(std::to_string(i), DWORD(i % 10 == 3 ? ERROR_ACCESS_DENIED : ERROR_SUCCESS)));
        EXPECT_THAT(watcher.late, IsEmpty());
    }

    const TemporaryFolder folder;
    const std::string file = folder.MakeFile("file");
    Watcher watcher;
    std::uint64_t added = 0;
    std::vector<std::pair<std::string, DWORD>> done;
    StoredWrites writes{
        watcher,
        {},
        [this](const std::optional<HeldObject>& /*object*/, const DescriptorChange& change) {
            return watcher.Write(change);
        },
        [this](const DescriptorChange& change, DWORD result) { done.emplace_back(change.path, result); }};
};

// Batches of 16, 32, 64 and 128.
TEST_F(StoredWritesTest, OneBatchIsWrittenWhileTheNextIsRecorded) {
    watcher.waiting = "47";
    EXPECT_EQ(Add(250), ERROR_SUCCESS);
    EXPECT_TRUE(watcher.isBegun);
    EXPECT_FALSE(writes.Holds(40));
    for (const std::uint64_t held : {120U, 239U, 249U})
        EXPECT_TRUE(writes.Holds(held)) << held;
    EXPECT_EQ(writes.Finish(), ERROR_SUCCESS);
    ExpectDone(240);
    EXPECT_TRUE(writes.Holds(249));
    EXPECT_EQ(writes.Flush(), ERROR_SUCCESS);
    ExpectDone(250);
    EXPECT_FALSE(writes.Holds(249));
}

TEST_F(StoredWritesTest, AFailingRecorderEndsTheWriting) {
    watcher.mostBatches = 2;
    EXPECT_EQ(Add(1000), DWORD{ERROR_DISK_FULL});
    EXPECT_LE(added, 16U + 32U + 64U + 128U);
    EXPECT_EQ(writes.Flush(), DWORD{ERROR_DISK_FULL});
    EXPECT_LE(done.size(), 48U);
    ExpectDone(done.size());
    EXPECT_EQ(watcher.recorded.size(), 48U);
}

}  // namespace
}  // namespace permora::test
