// Changes in a history of the test's own: of real objects, and of as many made-up ones as a test wants.
#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "history/history.h"
#include "platform/api/errors.h"
#include "platform/nt/sddl.h"
#include "tests/support/access_lists.h"

namespace permora::test {

inline StoredSecurity StoredText(const std::string& sddl) {
    StoredSecurity stored{SecurityForm::kVolume, {}, {}};
    const auto descriptor = nt::FromSddl(sddl);
    EXPECT_TRUE(descriptor && descriptor->AppendTo(stored.bytes)) << sddl;
    return stored;
}

// Gives an object at an absolute host path a list, and says what to record of it.
inline void ChangeList(const std::string& hostPath, const std::string& sddl, DescriptorChange& record) {
    const HeldObject object = Held(hostPath);
    ASSERT_EQ(object.ReadStored(record.before), ERROR_SUCCESS) << hostPath;
    ASSERT_EQ(SetDescriptorText(hostPath, sddl), ERROR_SUCCESS) << hostPath;
    ASSERT_EQ(object.ReadStored(record.after), ERROR_SUCCESS) << hostPath;
    record.isFolder = object.IsFolder();
    record.fileNumber = object.FileNumber();
}

enum class ChangeEnd { kEnded, kKilled };

// Gives the objects at the absolute host paths a list, as one change of the history at `historyPath`.
inline void ChangeLists(const std::string& historyPath, ChangeKind kind,
                        const std::vector<std::string>& hostPaths, const std::string& sddl,
                        ChangeEnd end = ChangeEnd::kEnded) {
    std::unique_ptr<History> history;
    ASSERT_EQ(History::Open(historyPath, history), ERROR_SUCCESS);
    const std::unique_ptr<Change> change = history->Begin(kind);
    for (const std::string& path : hostPaths) {
        ChangedTop top;
        DescriptorChange record;
        std::uint64_t number = 0;
        ASSERT_EQ(Held(path).FindTop(top), ERROR_SUCCESS) << path;
        ASSERT_NO_FATAL_FAILURE(ChangeList(path, sddl, record));
        ASSERT_EQ(change->BeginTop(top, number), ERROR_SUCCESS);
        ASSERT_EQ(change->Record(number, {&record, 1}), ERROR_SUCCESS);
    }
    if (end == ChangeEnd::kKilled) kill(getpid(), SIGKILL);
    change->End();
}

// The same of files in a folder, by their names, where the folder is what the user has named.
inline void ChangeListsIn(const std::string& historyPath, const std::string& hostFolder,
                          const std::vector<std::string>& names, const std::string& sddl) {
    std::unique_ptr<History> history;
    ASSERT_EQ(History::Open(historyPath, history), ERROR_SUCCESS);
    const std::unique_ptr<Change> change = history->Begin(ChangeKind::kReset);
    ChangedTop top;
    std::uint64_t number = 0;
    ASSERT_EQ(Held(hostFolder).FindTop(top), ERROR_SUCCESS);
    ASSERT_EQ(change->BeginTop(top, number), ERROR_SUCCESS);
    std::vector<DescriptorChange> batch(names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        batch[i].path = names[i];
        ASSERT_NO_FATAL_FAILURE(ChangeList(hostFolder + '/' + names[i], sddl, batch[i]));
    }
    ASSERT_EQ(change->Record(number, batch), ERROR_SUCCESS);
    change->End();
}

// The same by another process, which is killed before the change is over.
inline void CutOffChange(const std::string& historyPath, const std::vector<std::string>& hostPaths,
                         const std::string& sddl) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        ChangeLists(historyPath, ChangeKind::kPermissions, hostPaths, sddl, ChangeEnd::kKilled);
        _exit(1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
}

// A change of `count` files below C:\made up.
inline void ChangeMadeUpFiles(const std::string& historyPath, int count) {
    std::unique_ptr<History> history;
    ASSERT_EQ(History::Open(historyPath, history), ERROR_SUCCESS);
    const std::unique_ptr<Change> change = history->Begin(ChangeKind::kReset);
    std::vector<DescriptorChange> batch(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        DescriptorChange& record = batch[static_cast<std::size_t>(i)];
        record.path = "file " + std::to_string(i);
        record.fileNumber = static_cast<std::uint64_t>(i) + 1;
        record.before = StoredText("O:BAD:(A;;FA;;;WD)");
        record.after = StoredText("O:BAD:P(A;;FR;;;WD)");
    }
    std::uint64_t number = 0;
    ASSERT_EQ(change->BeginTop({R"(C:\made up)", true, {1, 2, 3}}, number), ERROR_SUCCESS);
    ASSERT_EQ(change->Record(number, batch), ERROR_SUCCESS);
    change->End();
}

}  // namespace permora::test
