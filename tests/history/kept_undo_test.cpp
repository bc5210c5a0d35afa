// Changes that earlier versions have recorded are taken back on real objects.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <memory>
#include <string>

#include "history/undo.h"
#include "platform/api/errors.h"
#include "tests/history/recorded_changes.h"
#include "tests/support/access_lists.h"
#include "tests/support/kept_files.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/own_mounts.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kTopFolder = "/mnt/kept/data";
constexpr const char* kFileInTop = "/mnt/kept/data/file";
constexpr SECURITY_INFORMATION kSavedParts = 7;

struct ListsOfBoth {
    const char* top;
    const char* file;
};
constexpr ListsOfBoth kListsBefore = {"O:BAG:BAD:PAI(A;OICI;FA;;;BA)",
                                      "O:S-1-5-21-1-2-3-1001G:BGD:PAI(A;;FR;;;WD)"};
constexpr ListsOfBoth kListsAfter = {"O:BAG:SYD:PAI(A;OICI;FA;;;SY)",
                                     "O:BAG:BAD:PAI(D;;FW;;;BG)(A;;FA;;;WD)"};

void SetBoth(const ListsOfBoth& lists) {
    ASSERT_EQ(SetDescriptorText(kTopFolder, lists.top), ERROR_SUCCESS);
    ASSERT_EQ(SetDescriptorText(kFileInTop, lists.file), ERROR_SUCCESS);
}

// The objects of all these histories: on a new volume they get the same numbers, and their time of birth can
// be set.
void MakeKeptObjects() {
    ASSERT_TRUE(fs::create_directory(kTopFolder));
    ASSERT_EQ(mknod(kFileInTop, S_IFREG | 0644, 0), 0);
    const std::array<unsigned char, 8> birth = {0, 0, 0x80, 0x3e, 0xd5, 0xde, 0xb1, 0x01};  // 1970 began
    for (const char* path : {kTopFolder, kFileInTop})
        ASSERT_EQ(lsetxattr(path, "system.ntfs_crtime", birth.data(), birth.size(), 0), 0) << path;
}

void RecordBoth(const std::string& historyPath) {
    SetBoth(kListsBefore);
    std::unique_ptr<History> history;
    ASSERT_EQ(History::Open(historyPath, history), ERROR_SUCCESS);
    const std::unique_ptr<Change> change = history->Begin(ChangeKind::kPermissions);
    ChangedTop top;
    ASSERT_EQ(Held(kTopFolder).FindTop(top), ERROR_SUCCESS);
    std::array<DescriptorChange, 2> batch;
    batch[1].path = "file";
    ChangeList(kTopFolder, kListsAfter.top, batch[0]);
    ChangeList(kFileInTop, kListsAfter.file, batch[1]);
    std::uint64_t number = 0;
    ASSERT_EQ(change->BeginTop(top, number), ERROR_SUCCESS);
    ASSERT_EQ(change->Record(number, batch), ERROR_SUCCESS);
    change->End();
}

class NothingLeft : public UndoObserver {
    bool Begin(const ChangedTop& /*top*/, const std::string& /*path*/) override { return true; }
    void Leave(const ChangedTop& /*top*/, const std::string& path, LeftAlone /*extent*/,
               DWORD reason) override {
        ADD_FAILURE() << path << " was left alone: " << reason;
    }
};

TEST(KeptUndos, ChangesOfEveryVersionAreTakenBack) {
    if (geteuid() != 0) GTEST_SKIP() << "mounts need root";
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    ASSERT_EQ(EnterOwnMounts(), "");
    ASSERT_EQ(HaveOwnFolder("/mnt", FolderContents::kNone), "");
    const TemporaryFolder folder;
    const NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    // The path is part of the history.
    ASSERT_TRUE(fs::create_directory("/mnt/kept"));
    ASSERT_EQ(mount(volume.Root().c_str(), "/mnt/kept", nullptr, MS_BIND, nullptr), 0);
    ASSERT_NO_FATAL_FAILURE(MakeKeptObjects());
    for (const std::string& file : KeptFiles(folder.Path(), "undone.db", RecordBoth)) {
        SCOPED_TRACE(file);
        SetBoth(kListsAfter);
        std::unique_ptr<History> history;
        ASSERT_EQ(History::Open(file, history), ERROR_SUCCESS);
        NothingLeft observer;
        UndoCounts counts;
        EXPECT_EQ(UndoChange(*history, 1, {}, observer, counts), ERROR_SUCCESS);
        EXPECT_EQ(counts.restored, 2U);
        EXPECT_EQ(DescriptorText(kTopFolder, kSavedParts), kListsBefore.top);
        EXPECT_EQ(DescriptorText(kFileInTop, kSavedParts), kListsBefore.file);
    }
    EXPECT_EQ(umount("/mnt/kept"), 0);
}

}  // namespace
}  // namespace permora::test
