// The history on this system: real changes kept, listed and taken back, and a place that is nobody else's.
#include "history/history.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "history/undo.h"
#include "platform/api/errors.h"
#include "platform/private_place.h"
#include "tests/support/descriptor_texts.h"
#include "tests/support/recording_observer.h"
#include "tests/windows/test_folder.h"

namespace permora::test {
namespace {

class CountingObserver : public UndoObserver {
  public:
    bool Begin(const ChangedTop& /*top*/, const std::string& /*path*/) override { return true; }
    void Leave(const ChangedTop& /*top*/, const std::string& path, LeftAlone /*extent*/,
               DWORD /*reason*/) override {
        left.push_back(path);
    }

    std::vector<std::string> left;
};

class WindowsHistory : public testing::Test {
  protected:
    std::string Path() const { return folder.Path("state") + "\\history.db"; }

    void SetUp() override {
        ASSERT_EQ(History::Open(Path(), history), DWORD{ERROR_SUCCESS});
        tree.MakeFolder("Ünïcödé 日本");
        for (int i = 0; i < 20; ++i)
            objects.push_back(tree.MakeFile("Ünïcödé 日本\\file" + std::to_string(i)));
        for (const std::string& path : objects)
            ASSERT_EQ(SetListText(path, "D:(A;;FA;;;WD)"), DWORD{ERROR_SUCCESS});
        before = Snapshot();
    }

    std::map<std::string, StoredSecurity> Snapshot() const {
        std::map<std::string, StoredSecurity> all;
        for (const std::string& path : objects)
            EXPECT_EQ(Held(path).ReadStored(all[path]), DWORD{ERROR_SUCCESS}) << path;
        return all;
    }

    std::int64_t Reset() {
        const std::unique_ptr<Change> change = history->Begin(ChangeKind::kReset);
        RecordingObserver observer;
        TreeCounts counts;
        std::array<DWORD, 2> empty{};
        auto* list = reinterpret_cast<PACL>(empty.data());
        InitializeAcl(list, sizeof empty, ACL_REVISION);
        EXPECT_EQ(Held(tree.Path()).SetListsBelow(list, TreeListMode::kWrite, *change, observer, counts),
                  DWORD{ERROR_SUCCESS});
        EXPECT_EQ(change->Error(), DWORD{ERROR_SUCCESS});
        change->End();
        return change->Number();
    }

    const TestFolder folder;
    const TestFolder tree;
    std::unique_ptr<History> history;
    std::vector<std::string> objects;
    std::map<std::string, StoredSecurity> before;
};

TEST_F(WindowsHistory, ATreeIsTakenBackAndForthAcrossPrograms) {
    const std::int64_t number = Reset();
    const auto changed = Snapshot();
    ASSERT_NE(changed, before);
    // As another program finds it.
    history.reset();
    ASSERT_EQ(History::Open(Path(), history), DWORD{ERROR_SUCCESS});
    ChangeFacts facts;
    ASSERT_EQ(history->FindLast(facts), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(facts.number, number);
    EXPECT_EQ(facts.firstTop, tree.Path());
    EXPECT_EQ(facts.state, ChangeState::kDone);
    EXPECT_FALSE(facts.user.empty());

    CountingObserver observer;
    UndoCounts counts;
    ASSERT_EQ(UndoChange(*history, number, {}, observer, counts), DWORD{ERROR_SUCCESS});
    EXPECT_THAT(observer.left, testing::IsEmpty());
    EXPECT_EQ(Snapshot(), before);
    ASSERT_EQ(history->Find(number, facts), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(facts.state, ChangeState::kUndone);
    // The undo is a change itself.
    std::vector<ChangeFacts> all;
    ASSERT_EQ(history->List(all), DWORD{ERROR_SUCCESS});
    ASSERT_EQ(all.size(), 2U);
    ASSERT_EQ(UndoChange(*history, all.front().number, {}, observer, counts), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(Snapshot(), changed);
}

TEST_F(WindowsHistory, WhatWasChangedSinceIsNamedAndLeftAlone) {
    const std::int64_t number = Reset();
    ASSERT_EQ(SetListText(objects.front(), "D:(A;;FR;;;WD)"), DWORD{ERROR_SUCCESS});
    const StoredSecurity theirs = Snapshot()[objects.front()];
    ASSERT_TRUE(MoveFileW(VerbatimPath(objects.back()).c_str(), VerbatimPath(folder.Path("moved")).c_str()));
    tree.MakeFile("Ünïcödé 日本\\file19");
    const StoredSecurity another = Snapshot()[objects.back()];
    CountingObserver observer;
    UndoCounts counts;
    ASSERT_EQ(UndoChange(*history, number, {}, observer, counts), DWORD{ERROR_SUCCESS});
    EXPECT_THAT(observer.left, testing::Contains("Ünïcödé 日本\\file0"));
    EXPECT_THAT(observer.left, testing::Contains("Ünïcödé 日本\\file19"));
    auto after = Snapshot();
    EXPECT_EQ(after[objects.front()], theirs);
    EXPECT_EQ(after[objects.back()], another);
    EXPECT_EQ(after[objects[1]], before[objects[1]]);
    ChangeFacts facts;
    ASSERT_EQ(history->Find(number, facts), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(facts.state, ChangeState::kPartlyUndone);
}

TEST_F(WindowsHistory, DamagedAndForeignFilesAreReportedAndStay) {
    const std::string damaged = folder.MakeFile("state\\damaged.db", std::string(4096, 'x'));
    std::unique_ptr<History> none;
    EXPECT_EQ(History::Open(damaged, none), DWORD{ERROR_FILE_CORRUPT});
    EXPECT_EQ(History::OpenToRead(folder.Path("state") + "\\none.db", none), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(none, nullptr);
    ASSERT_EQ(SetListText(folder.Path("state"), "D:P(A;OICI;FA;;;BA)(A;OICI;FA;;;WD)"), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(History::Open(Path(), none), DWORD{ERROR_INVALID_OWNER});
    ASSERT_EQ(SetListText(folder.Path("state"), "D:P(A;OICI;FA;;;BA)(A;OICI;FA;;;SY)"), DWORD{ERROR_SUCCESS});
}

TEST(PrivatePlace, IsInTheUsersLocalData) {
    const char* local = std::getenv("LOCALAPPDATA");
    ASSERT_NE(local, nullptr);
    EXPECT_EQ(StateFolder(), std::string(local) + "\\Permora");
}

TEST(PrivatePlace, FilesAreMadeForTheUserAloneAndOthersRefused) {
    const TestFolder folder;
    std::shared_ptr<const PrivateFolder> held;
    EXPECT_EQ(PrivateFolder::Hold(folder.Path("p"), MissingFolder::kLeave, held),
              DWORD{ERROR_PATH_NOT_FOUND});
    ASSERT_EQ(PrivateFolder::Hold(folder.Path("p"), MissingFolder::kMake, held), DWORD{ERROR_SUCCESS});
    const std::string file = held->PathOf("file");
    EXPECT_EQ(file, folder.Path("p\\file"));
    EXPECT_EQ(CheckPrivateFile(file), DWORD{ERROR_FILE_NOT_FOUND});
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(MakePrivateFile(file), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(CheckPrivateFile(file), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(CheckWritable(file), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(PrivateFolder::Hold(file, MissingFolder::kLeave, held), DWORD{ERROR_DIRECTORY});
    EXPECT_EQ(CheckPrivateFile(folder.Path("p")), DWORD{ERROR_FILE_CORRUPT});
    ASSERT_EQ(SetListText(file, "D:P(A;;FA;;;WD)"), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(CheckPrivateFile(file), DWORD{ERROR_INVALID_OWNER});
    ASSERT_EQ(SetListText(file, "D:P(A;;FR;;;WD)(A;;FA;;;SY)"), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(CheckPrivateFile(file), DWORD{ERROR_SUCCESS}) << "others may read";
    ASSERT_TRUE(CreateHardLinkA(folder.Path("second").c_str(), file.c_str(), nullptr));
    EXPECT_EQ(CheckPrivateFile(file), DWORD{ERROR_INVALID_OWNER}) << "another name leads to it";
}

TEST(PrivatePlace, AProcessIsKnownByItsNumberAndItsStart) {
    ProcessMark own = ThisProcess();
    EXPECT_TRUE(IsRunning(own));
    ++own.start;
    EXPECT_FALSE(IsRunning(own));
    EXPECT_FALSE(IsRunning({0x7FFFFFF0, own.start}));
    std::array<char, MAX_PATH> path{};
    ASSERT_NE(GetModuleFileNameA(nullptr, path.data(), MAX_PATH), 0U);
    std::string line = '"' + std::string(path.data()) + "\" --gtest_list_tests";
    STARTUPINFOA start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION made{};
    ASSERT_TRUE(CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE,
                               CREATE_SUSPENDED | CREATE_NO_WINDOW, nullptr, nullptr, &start, &made));
    FILETIME born{};
    FILETIME unused{};
    ASSERT_TRUE(GetProcessTimes(made.hProcess, &born, &unused, &unused, &unused));
    const ProcessMark child{
        static_cast<std::int64_t>(made.dwProcessId),
        static_cast<std::int64_t>(std::uint64_t{born.dwHighDateTime} << 32 | born.dwLowDateTime)};
    EXPECT_TRUE(IsRunning(child));
    TerminateProcess(made.hProcess, 1);
    WaitForSingleObject(made.hProcess, 10'000);
    EXPECT_FALSE(IsRunning(child));
    CloseHandle(made.hThread);
    CloseHandle(made.hProcess);
}

}  // namespace
}  // namespace permora::test
