// Histories that cannot be read or written.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "history/database.h"
#include "history/history.h"
#include "tests/support/own_mounts.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

constexpr DWORD kDone = ERROR_SUCCESS;

std::vector<DescriptorChange> Batch(std::size_t objects) {
    std::vector<DescriptorChange> batch;
    for (std::size_t i = 0; i < objects; ++i) {
        const std::string list = "list " + std::to_string(i);
        batch.push_back({"folder\\file " + std::to_string(i),
                         false,
                         i,
                         {SecurityForm::kVolume, {list.begin(), list.end()}, std::nullopt},
                         {SecurityForm::kVolume, {'n', 'e', 'w'}, std::nullopt}});
    }
    return batch;
}

class HistoryFailures : public testing::Test {
  protected:
    std::string State() const { return folder.Path("permora"); }
    std::string File() const { return State() + "/history.db"; }
    void Make() const {
        std::unique_ptr<History> history;
        ASSERT_EQ(History::Open(File(), history), kDone);
        const auto change = history->Begin(ChangeKind::kReset);
        std::uint64_t top = 0;
        change->BeginTop({"C:\\top", true, {}}, top);
        ASSERT_EQ(change->Record(top, Batch(2000)), kDone);
        change->End();
    }

    const TemporaryFolder folder{FolderPlace::kMemory};
};

// Every page after the first in turn is filled with noise. What a page says may not be needed; what is needed
// is never guessed at.
TEST_F(HistoryFailures, ADamagedPageIsToldByWhoeverMeetsIt) {
    constexpr std::streamoff kPage = 4096;
    Make();
    ASSERT_TRUE(std::filesystem::exists(File()));
    const std::string whole = folder.Path("whole");
    std::filesystem::copy_file(File(), whole);
    const auto pages = static_cast<std::streamoff>(std::filesystem::file_size(whole)) / kPage;
    ASSERT_GT(pages, 20);
    int told = 0;
    for (std::streamoff page = 1; page < pages; ++page) {
        SCOPED_TRACE(page);
        std::filesystem::copy_file(whole, File(), std::filesystem::copy_options::overwrite_existing);
        {
            std::fstream file(File(), std::ios::in | std::ios::out | std::ios::binary);
            file.seekp(page * kPage);
            file << std::string(kPage, '\x5a');
        }
        std::unique_ptr<History> history;
        DWORD error = History::Open(File(), history);
        std::size_t seen = 0;
        if (error == ERROR_SUCCESS) {
            error = history->VisitObjects(1, RecordOrder::kAsMade, [&seen](const RecordedObject& object) {
                EXPECT_EQ(object.change.path, "folder\\file " + std::to_string(seen));
                const std::string list = "list " + std::to_string(seen);
                EXPECT_EQ(std::string(object.change.before.bytes.begin(), object.change.before.bytes.end()),
                          list);
                ++seen;
                return true;
            });
        }
        if (error == ERROR_SUCCESS) {
            EXPECT_EQ(seen, 2000U);
        } else {
            EXPECT_EQ(error, DWORD{ERROR_FILE_CORRUPT});
            ++told;
        }
        if (history == nullptr) continue;
        const auto change = history->Begin(ChangeKind::kReset);
        std::uint64_t top = 0;
        change->BeginTop({"C:\\top", true, {}}, top);
        const DWORD recorded = change->Record(top, Batch(10));
        EXPECT_TRUE(recorded == ERROR_SUCCESS || recorded == ERROR_FILE_CORRUPT) << recorded;
        EXPECT_EQ(change->Error(), recorded);
    }
    EXPECT_GT(told, 10);
}

TEST_F(HistoryFailures, AFullDiskStopsTheChangeAndKeepsWhatWasRecorded) {
    ASSERT_EQ(EnterOwnMounts(), "");
    std::filesystem::create_directory(State());
    ASSERT_EQ(mount("none", State().c_str(), "tmpfs", 0, "size=512k,mode=0700"), 0);
    std::unique_ptr<History> history;
    ASSERT_EQ(History::Open(File(), history), kDone);
    const auto change = history->Begin(ChangeKind::kReset);
    std::uint64_t top = 0;
    change->BeginTop({"C:\\top", true, {}}, top);
    std::size_t recorded = 0;
    DWORD error = ERROR_SUCCESS;
    while ((error = change->Record(top, Batch(100))) == ERROR_SUCCESS)
        recorded += 100;
    EXPECT_EQ(error, DWORD{ERROR_DISK_FULL});
    // From here on the change is over, also where there is room again.
    ASSERT_EQ(mount("none", State().c_str(), "tmpfs", MS_REMOUNT, "size=8m,mode=0700"), 0);
    EXPECT_EQ(change->Record(top, Batch(1)), DWORD{ERROR_DISK_FULL});
    EXPECT_EQ(change->Error(), DWORD{ERROR_DISK_FULL});
    std::size_t seen = 0;
    EXPECT_EQ(history->VisitObjects(change->Number(), RecordOrder::kReverse,
                                    [&seen](const RecordedObject&) { return ++seen > 0; }),
              kDone);
    EXPECT_EQ(seen, recorded);
    umount2(State().c_str(), MNT_DETACH);
}

// Wherever the room ends while it is made: the code is the disk's, and with more room it can be made.
TEST_F(HistoryFailures, AFullDiskIsToldWhileTheHistoryIsMade) {
    ASSERT_EQ(EnterOwnMounts(), "");
    std::filesystem::create_directory(State());
    bool isMade = false;
    for (int pages = 1; !isMade; ++pages) {
        SCOPED_TRACE(pages);
        ASSERT_LT(pages, 100);
        const std::string size = "mode=0700,size=" + std::to_string(pages * 4096);
        ASSERT_EQ(mount("none", State().c_str(), "tmpfs", 0, size.c_str()), 0);
        std::unique_ptr<History> history;
        const DWORD error = History::Open(File(), history);
        isMade = error == ERROR_SUCCESS;
        if (!isMade) {
            EXPECT_EQ(error, DWORD{ERROR_DISK_FULL});
            ASSERT_EQ(mount("none", State().c_str(), "tmpfs", MS_REMOUNT, "mode=0700,size=8m"), 0);
            EXPECT_EQ(History::Open(File(), history), kDone);
        }
        history.reset();
        umount2(State().c_str(), MNT_DETACH);
    }
}

TEST_F(HistoryFailures, AVolumeThatCannotBeWrittenIsTold) {
    ASSERT_EQ(EnterOwnMounts(), "");
    Make();
    ASSERT_EQ(mount(State().c_str(), State().c_str(), nullptr, MS_BIND, nullptr), 0);
    ASSERT_EQ(mount(nullptr, State().c_str(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr), 0);
    std::unique_ptr<History> history;
    EXPECT_EQ(History::Open(File(), history), DWORD{ERROR_WRITE_PROTECT});
    ASSERT_EQ(History::OpenToRead(File(), history), kDone);
    std::vector<ChangeFacts> changes;
    ASSERT_EQ(history->List(changes), kDone);
    EXPECT_EQ(changes.size(), 1U);
    EXPECT_EQ(history->MarkUndone(changes.front().number, ChangeState::kUndone), DWORD{ERROR_WRITE_PROTECT});
    umount2(State().c_str(), MNT_DETACH);
}

TEST_F(HistoryFailures, ALockedHistoryIsWaitedForAndThenTold) {
    Make();
    std::unique_ptr<History> history;
    ASSERT_EQ(History::Open(File(), history), kDone);
    const auto change = history->Begin(ChangeKind::kReset);
    std::uint64_t top = 0;
    change->BeginTop({"C:\\top", true, {}}, top);
    Database other;
    ASSERT_EQ(other.Open(File(), Database::Access::kReadWrite), kDone);
    Transaction transaction(other);
    ASSERT_EQ(transaction.Begin(), kDone);
    EXPECT_EQ(change->Record(top, Batch(1)), DWORD{ERROR_LOCK_VIOLATION});
    // Reading goes on meanwhile.
    std::vector<ChangeFacts> changes;
    EXPECT_EQ(history->List(changes), kDone);
    EXPECT_EQ(changes.size(), 1U);
}

}  // namespace
}  // namespace permora::test
