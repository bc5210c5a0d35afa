#include "history/history.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "history/database.h"
#include "history/schema.h"
#include "platform/private_place.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

StoredSecurity Stored(SecurityForm form, std::string_view bytes, std::optional<std::uint32_t> owner = {}) {
    return {form, {bytes.begin(), bytes.end()}, owner};
}

DescriptorChange ChangeOf(std::string path, std::uint64_t number, std::string_view before,
                          std::string_view after) {
    return {std::move(path), false, number, Stored(SecurityForm::kVolume, before),
            Stored(SecurityForm::kVolume, after)};
}

std::string TextOf(const RecordedObject& object) {
    const auto text = [](const StoredSecurity& stored) {
        return std::string(stored.bytes.begin(), stored.bytes.end()) + "/" +
               std::to_string(static_cast<int>(stored.form)) +
               (stored.hostOwner ? "/" + std::to_string(*stored.hostOwner) : "");
    };
    return object.top.path + "|" + object.change.path + "|" + std::to_string(object.change.fileNumber) + "|" +
           text(object.change.before) + ">" + text(object.change.after);
}

// By another program.
void RunSql(const std::string& path, const std::string& sql) {
    const std::string command =
        "python3 -c \"import sqlite3,sys; c=sqlite3.connect(sys.argv[1]); c.executescript(sys.argv[2])\" '" +
        path + "' '" + sql + "'";
    ASSERT_EQ(std::system(command.c_str()), 0);  // NOLINT(concurrency-mt-unsafe)
}

class HistoryTest : public testing::Test {
  protected:
    std::string Path() const { return folder.Path() + "/state/permora/history.db"; }
    std::unique_ptr<History> Open() const {
        std::unique_ptr<History> history;
        EXPECT_EQ(History::Open(Path(), history), DWORD{ERROR_SUCCESS});
        return history;
    }
    static std::vector<std::string> Objects(History& history, std::int64_t number,
                                            RecordOrder order = RecordOrder::kAsMade) {
        std::vector<std::string> texts;
        EXPECT_EQ(history.VisitObjects(number, order,
                                       [&](const RecordedObject& object) {
                                           texts.push_back(TextOf(object));
                                           return true;
                                       }),
                  DWORD{ERROR_SUCCESS});
        return texts;
    }
    // A change of `objects` objects in one top.
    static std::int64_t Make(History& history, std::size_t objects,
                             ChangeKind kind = ChangeKind::kPermissions) {
        const std::unique_ptr<Change> change = history.Begin(kind);
        std::uint64_t top = 0;
        change->BeginTop({"C:\\top", true, {}}, top);
        std::vector<DescriptorChange> batch;
        for (std::size_t i = 0; i < objects; ++i)
            batch.push_back(ChangeOf("f" + std::to_string(i), i, "old", "new"));
        EXPECT_EQ(change->Record(top, batch), DWORD{ERROR_SUCCESS});
        change->End();
        return change->Number();
    }

    const TemporaryFolder folder{FolderPlace::kMemory};
};

TEST_F(HistoryTest, KeepsWhatWasThereInItsOrderAndBackwards) {
    const auto history = Open();
    const auto change = history->Begin(ChangeKind::kAssign);
    std::uint64_t one = 0;
    std::uint64_t other = 0;
    ASSERT_EQ(change->BeginTop({"C:\\one", true, {1, 2, 0}}, one), DWORD{ERROR_SUCCESS});
    ASSERT_EQ(change->BeginTop({"C:\\other", false, {}}, other), DWORD{ERROR_SUCCESS});
    std::uint64_t again = 7;
    ASSERT_EQ(change->BeginTop({"C:\\one", true, {1, 2, 0}}, again), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(again, one);
    EXPECT_EQ(change->Number(), 0);
    const std::vector<DescriptorChange> batch = {
        ChangeOf("", 1, "a", "b"),          ChangeOf("sub", 2, "a", "b"),
        ChangeOf("sub\\x", 3, "a", "b"),    ChangeOf("sub\\deep\\y", 4, "b", "a"),
        ChangeOf("subway\\z", 5, "a", "b"), ChangeOf("sub\\w", ~std::uint64_t{0}, "", "b"),
    };
    ASSERT_EQ(change->Record(one, batch), DWORD{ERROR_SUCCESS});
    const DescriptorChange unstored{"", true, 9, Stored(SecurityForm::kNone, "", 1000),
                                    Stored(SecurityForm::kSamba, "a", 0)};
    ASSERT_EQ(change->Record(other, std::vector{unstored}), DWORD{ERROR_SUCCESS});
    change->End();

    const std::vector<std::string> expected = {
        R"(C:\one||1|a/1>b/1)",         R"(C:\one|sub|2|a/1>b/1)",
        R"(C:\one|sub\x|3|a/1>b/1)",    R"(C:\one|sub\deep\y|4|b/1>a/1)",
        R"(C:\one|subway\z|5|a/1>b/1)", R"(C:\one|sub\w|18446744073709551615|/1>b/1)",
        R"(C:\other||9|/0/1000>a/2/0)",
    };
    EXPECT_EQ(Objects(*history, change->Number()), expected);
    EXPECT_EQ(Objects(*history, change->Number(), RecordOrder::kReverse),
              std::vector<std::string>(expected.rbegin(), expected.rend()));
    ChangeFacts facts;
    ASSERT_EQ(history->FindLast(facts), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(facts.state, ChangeState::kDone);
    EXPECT_EQ(facts.kind, ChangeKind::kAssign);
    EXPECT_EQ(facts.tops, 2U);
    EXPECT_EQ(facts.firstTop, "C:\\one");
    EXPECT_EQ(facts.objects, expected.size());
    EXPECT_FALSE(facts.user.empty());
}

TEST_F(HistoryTest, AChangeWithoutRecordsLeavesNoTrace) {
    const auto history = Open();
    const auto change = history->Begin(ChangeKind::kOwner);
    std::uint64_t top = 0;
    change->BeginTop({"C:\\x", false, {}}, top);
    change->End();
    std::vector<ChangeFacts> changes;
    ASSERT_EQ(history->List(changes), DWORD{ERROR_SUCCESS});
    EXPECT_TRUE(changes.empty());
    ChangeFacts facts;
    EXPECT_EQ(history->FindLast(facts), DWORD{ERROR_NOT_FOUND});
    EXPECT_EQ(history->Find(1, facts), DWORD{ERROR_NOT_FOUND});
}

TEST_F(HistoryTest, WhatIsUndoneOrAnUndoIsNotTheLastChange) {
    const auto history = Open();
    const std::int64_t first = Make(*history, 1);
    const std::int64_t second = Make(*history, 1);
    Make(*history, 1, ChangeKind::kUndo);
    ChangeFacts facts;
    ASSERT_EQ(history->FindLast(facts), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(facts.number, second);
    ASSERT_EQ(history->MarkUndone(second, ChangeState::kUndone), DWORD{ERROR_SUCCESS});
    ASSERT_EQ(history->FindLast(facts), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(facts.number, first);
    ASSERT_EQ(history->MarkUndone(first, ChangeState::kPartlyUndone), DWORD{ERROR_SUCCESS});
    ASSERT_EQ(history->FindLast(facts), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(facts.state, ChangeState::kPartlyUndone);
}

TEST_F(HistoryTest, AChangeThatIsGivenUpIsInterrupted) {
    const auto history = Open();
    ChangeFacts facts;
    {
        const auto change = history->Begin(ChangeKind::kReset);
        std::uint64_t top = 0;
        change->BeginTop({"C:\\t", true, {}}, top);
        ASSERT_EQ(change->Record(top, std::vector{ChangeOf("x", 1, "old", "new")}), DWORD{ERROR_SUCCESS});
        ASSERT_EQ(history->Find(change->Number(), facts), DWORD{ERROR_SUCCESS});
        EXPECT_EQ(facts.state, ChangeState::kRunning);
        EXPECT_EQ(facts.objects, 1U);
    }
    ASSERT_EQ(history->FindLast(facts), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(facts.state, ChangeState::kInterrupted);
    EXPECT_EQ(history->MarkUndone(facts.number + 1, ChangeState::kUndone), DWORD{ERROR_NOT_FOUND});
    // A process has the number of another one that has ended.
    RunSql(Path(), "UPDATE changes SET process=" + std::to_string(getpid()));
    ASSERT_EQ(history->FindLast(facts), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(facts.state, ChangeState::kRunning);
    RunSql(Path(), "UPDATE changes SET process_start=process_start-1");
    ASSERT_EQ(history->FindLast(facts), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(facts.state, ChangeState::kInterrupted);
}

TEST_F(HistoryTest, ItsFoldersAreMadeForTheUserAlone) {
    const mode_t mask = umask(0);
    Open();
    umask(mask);
    for (const auto& [path, mode] : {std::pair(std::filesystem::path(Path()), 0600U),
                                     {std::filesystem::path(Path()).parent_path(), 0700U},
                                     {std::filesystem::path(Path()).parent_path().parent_path(), 0700U}}) {
        struct stat status {};
        ASSERT_EQ(stat(path.c_str(), &status), 0) << path;
        EXPECT_EQ(status.st_mode & 07777, mode) << path;
    }
}

// Each must find the database whole, whoever makes it.
TEST_F(HistoryTest, ManyMakeItAtTheSameTime) {
    for (int round = 0; round < 10; ++round) {
        const std::string path = folder.Path("round " + std::to_string(round)) + "/history.db";
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&path] {
                std::unique_ptr<History> history;
                ASSERT_EQ(History::Open(path, history), DWORD{ERROR_SUCCESS});
                Make(*history, 1);
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        std::unique_ptr<History> history;
        ASSERT_EQ(History::OpenToRead(path, history), DWORD{ERROR_SUCCESS});
        std::vector<ChangeFacts> changes;
        ASSERT_EQ(history->List(changes), DWORD{ERROR_SUCCESS});
        EXPECT_EQ(changes.size(), 4U);
    }
}

TEST_F(HistoryTest, ThreadsAndProgramsRecordAtTheSameTime) {
    constexpr std::size_t kThreads = 4;
    constexpr std::size_t kBatches = 25;
    const auto history = Open();
    const auto otherHistory = Open();
    std::vector<std::unique_ptr<Change>> changes;
    changes.push_back(history->Begin(ChangeKind::kReset));
    changes.push_back(otherHistory->Begin(ChangeKind::kReset));
    std::vector<std::thread> threads;
    for (const auto& change : changes) {
        std::uint64_t top = 0;
        ASSERT_EQ(change->BeginTop({"C:\\t", true, {}}, top), DWORD{ERROR_SUCCESS});
        for (std::size_t thread = 0; thread < kThreads; ++thread) {
            threads.emplace_back([&change, top, thread] {
                for (std::size_t i = 0; i < kBatches; ++i) {
                    const std::string name = std::to_string(thread) + "\\" + std::to_string(i);
                    EXPECT_EQ(change->Record(top, std::vector{ChangeOf(name, i, "old", name)}),
                              DWORD{ERROR_SUCCESS});
                }
            });
        }
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const auto& change : changes) {
        change->End();
        EXPECT_EQ(Objects(*history, change->Number()).size(), kThreads * kBatches);
    }
}

TEST_F(HistoryTest, WhatWasRecordedSurvivesTheEndOfItsProcess) {
    for (int round = 0; round < 20; ++round) {
        int counted[2];
        ASSERT_EQ(pipe(counted), 0);
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            std::unique_ptr<History> history;
            if (History::Open(Path(), history) != ERROR_SUCCESS) _exit(1);
            const auto change = history->Begin(ChangeKind::kReset);
            std::uint64_t top = 0;
            change->BeginTop({"C:\\t", true, {}}, top);
            for (std::uint64_t i = 0;; ++i) {
                if (change->Record(top, std::vector{ChangeOf("a\\" + std::to_string(i), i, "old", "new")}) !=
                    0)
                    _exit(1);
                if (write(counted[1], "x", 1) != 1) _exit(1);
            }
        }
        close(counted[1]);
        std::this_thread::sleep_for(std::chrono::milliseconds(10 + 7 * round));
        kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status));
        std::string told(100000, '\0');
        std::size_t count = 0;
        for (ssize_t got = 0; (got = read(counted[0], told.data(), told.size())) > 0;)
            count += static_cast<std::size_t>(got);
        close(counted[0]);
        if (count == 0) continue;
        const auto history = Open();
        ChangeFacts facts;
        ASSERT_EQ(history->FindLast(facts), DWORD{ERROR_SUCCESS});
        EXPECT_EQ(facts.state, ChangeState::kInterrupted);
        EXPECT_GE(Objects(*history, facts.number).size(), count);
        EXPECT_LE(Objects(*history, facts.number).size(), count + 1);
    }
}

TEST_F(HistoryTest, AMillionObjectsCostLittle) {
    constexpr std::size_t kFolders = 500;
    constexpr std::size_t kFiles = 100;
    const auto history = Open();
    const auto change = history->Begin(ChangeKind::kReset);
    std::uint64_t top = 0;
    change->BeginTop({"C:\\t", true, {}}, top);
    for (std::size_t i = 0; i < kFolders; ++i) {
        std::vector<DescriptorChange> batch;
        for (std::size_t k = 0; k < kFiles; ++k) {
            batch.push_back(
                ChangeOf("folder " + std::to_string(i) + "\\document " + std::to_string(k) + ".txt",
                         5000000 + i * kFiles + k, std::to_string(i % 20), "new"));
        }
        ASSERT_EQ(change->Record(top, batch), DWORD{ERROR_SUCCESS});
    }
    change->End();
    std::size_t removed = 9;
    ASSERT_EQ(history->PruneOlder(0, removed), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(removed, 0U);
    const auto size = std::filesystem::file_size(Path());
    EXPECT_LT(size, kFolders * kFiles * 60);

    // The newest stays.
    ASSERT_EQ(history->PruneLarger(size / 2, removed), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(removed, 0U);
    const std::int64_t next = Make(*history, 2);
    ASSERT_EQ(history->PruneLarger(size / 2, removed), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(removed, 1U);
    EXPECT_LT(std::filesystem::file_size(Path()), size / 10);
    EXPECT_EQ(Objects(*history, next).size(), 2U);
    // Of the descriptors, those of that change are left.
    RunSql(Path(), "CREATE TEMP TABLE t(n CHECK(n=2)); INSERT INTO t SELECT count(*) FROM descriptors");
}

TEST_F(HistoryTest, APruningTakesWholeChangesThatHaveEnded) {
    const auto history = Open();
    const std::int64_t old = Make(*history, 3);
    const auto running = history->Begin(ChangeKind::kReset);
    std::uint64_t top = 0;
    running->BeginTop({"C:\\t", true, {}}, top);
    ASSERT_EQ(running->Record(top, std::vector{ChangeOf("x", 1, "old", "new")}), DWORD{ERROR_SUCCESS});
    std::size_t removed = 0;
    ASSERT_EQ(history->PruneOlder(std::int64_t{1} << 40, removed), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(removed, 1U);
    ChangeFacts facts;
    EXPECT_EQ(history->Find(old, facts), DWORD{ERROR_NOT_FOUND});
    // What it has in memory of the database may be gone by now.
    ASSERT_EQ(running->Record(top, std::vector{ChangeOf("y", 2, "old", "new")}), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(Objects(*history, running->Number()).size(), 2U);
}

// Thousands of levels, one file in each folder, there and back.
TEST_F(HistoryTest, DeepTreesComeBackInBothOrders) {
    constexpr int kLevels = 3000;
    const auto history = Open();
    const auto change = history->Begin(ChangeKind::kReset);
    std::uint64_t top = 0;
    change->BeginTop({"C:\\t", true, {}}, top);
    std::string path;
    std::vector<DescriptorChange> batch;
    std::vector<std::string> paths;
    for (int i = 0; i < kLevels; ++i) {
        path += path.empty() ? "level" : "\\level";
        paths.push_back(path);
        batch.push_back(ChangeOf(path, 1, "old", "new"));
    }
    ASSERT_EQ(change->Record(top, batch), DWORD{ERROR_SUCCESS});
    change->End();
    for (const RecordOrder order : {RecordOrder::kAsMade, RecordOrder::kReverse}) {
        std::vector<std::string> seen;
        EXPECT_EQ(history->VisitObjects(change->Number(), order,
                                        [&](const RecordedObject& object) {
                                            seen.push_back(object.change.path);
                                            return true;
                                        }),
                  DWORD{ERROR_SUCCESS});
        if (order == RecordOrder::kReverse) std::reverse(seen.begin(), seen.end());
        EXPECT_EQ(seen, paths);
    }
}

// What a row says cannot change by itself unnoticed: no undo may write a list that was never there.
TEST_F(HistoryTest, ARowThatHasChangedIsTold) {
    const auto history = Open();
    std::int64_t number = 0;
    {
        const auto change = history->Begin(ChangeKind::kReset);
        std::uint64_t top = 0;
        change->BeginTop({"C:\\t", true, {1}}, top);
        ASSERT_EQ(change->Record(
                      top, std::vector{ChangeOf("a\\b", 1, "old", "new"), ChangeOf("c", 2, "older", "new")}),
                  DWORD{ERROR_SUCCESS});
        change->End();
        number = change->Number();
    }
    const char* const cases[] = {
        "UPDATE objects SET before=3 WHERE number=1",
        "UPDATE objects SET file=7 WHERE number=1",
        "UPDATE objects SET name=\"x\" WHERE number=2",
        "UPDATE objects SET number=3 WHERE number=2",
        "UPDATE objects SET name=\"..\"",
        "DELETE FROM objects WHERE number=1",
        "DELETE FROM objects WHERE number=2",
        "UPDATE folders SET name=\"x\" WHERE number=2",
        "UPDATE folders SET above=2 WHERE number=2",
        "UPDATE tops SET path=\"C:\\u\"",
        "UPDATE tops SET mark=zeroblob(1)",
        "UPDATE descriptors SET bytes=zeroblob(3) WHERE number=1",
        "UPDATE descriptors SET form=2 WHERE number=1",
        "UPDATE descriptors SET owner=5 WHERE number=1",
        "DELETE FROM descriptors WHERE number=1",
        "UPDATE changes SET objects=3",
        "INSERT INTO times VALUES(1,1,5,0)",
    };
    const std::string copy = folder.Path("copy");
    RunSql(Path(), "VACUUM INTO \"" + copy + "\"");
    for (const char* damage : cases) {
        SCOPED_TRACE(damage);
        const std::string state = folder.Path("damaged");
        std::filesystem::remove_all(state);
        std::filesystem::create_directory(state);
        std::filesystem::permissions(state, std::filesystem::perms::owner_all);
        std::filesystem::copy_file(copy, state + "/history.db");
        RunSql(state + "/history.db", damage);
        std::unique_ptr<History> damaged;
        ASSERT_EQ(History::OpenToRead(state + "/history.db", damaged), DWORD{ERROR_SUCCESS});
        for (const RecordOrder order : {RecordOrder::kAsMade, RecordOrder::kReverse}) {
            EXPECT_EQ(damaged->VisitObjects(number, order, [](const RecordedObject&) { return true; }),
                      DWORD{ERROR_FILE_CORRUPT});
        }
    }
}

TEST_F(HistoryTest, PathsThatLeadElsewhereAreNotRecorded) {
    for (const char* path : {"..", "a\\..\\b", "a\\\\b", "a/b", "a\\", "\\a", "."}) {
        const auto history = Open();
        const auto change = history->Begin(ChangeKind::kReset);
        std::uint64_t top = 0;
        change->BeginTop({"C:\\t", true, {}}, top);
        EXPECT_EQ(change->Record(top, std::vector{ChangeOf(path, 1, "a", "b")}), DWORD{ERROR_INVALID_NAME})
            << path;
        EXPECT_EQ(change->Error(), DWORD{ERROR_INVALID_NAME});
    }
}

TEST_F(HistoryTest, AHistoryInTheFirstLayoutIsReadAsItIsAndBroughtUpToDateByTheFirstWriter) {
    const std::int64_t old = Make(*Open(), 3);
    RunSql(Path(), "DROP TABLE times; PRAGMA user_version=1");
    const auto timesOf = [](History& history, std::int64_t number) {
        ChangeFacts facts;
        EXPECT_EQ(history.Find(number, facts), DWORD{ERROR_SUCCESS});
        std::vector<std::int64_t> times;
        EXPECT_EQ(history.VisitObjects(number, RecordOrder::kAsMade,
                                       [&](const RecordedObject& object) {
                                           times.push_back(object.time - facts.began);
                                           return true;
                                       }),
                  DWORD{ERROR_SUCCESS});
        return times;
    };
    std::unique_ptr<History> reader;
    ASSERT_EQ(History::OpenToRead(Path(), reader), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(timesOf(*reader, old), std::vector<std::int64_t>(3, 0));
    RunSql(Path(), "CREATE TABLE times(n)");  // fails unless the reader has left it alone
    RunSql(Path(), "DROP TABLE times");

    const auto history = Open();
    EXPECT_EQ(timesOf(*history, old), std::vector<std::int64_t>(3, 0));
    const auto start = std::chrono::steady_clock::now();
    const auto change = history->Begin(ChangeKind::kReset);
    std::uint64_t top = 0;
    change->BeginTop({"C:\\top", true, {}}, top);
    const std::vector<DescriptorChange> batch = {ChangeOf("x", 1, "old", "new"),
                                                 ChangeOf("y", 2, "old", "new")};
    for (int i = 0; i < 3; ++i) {
        if (i > 0) std::this_thread::sleep_for(std::chrono::milliseconds(1100));
        ASSERT_EQ(change->Record(top, batch), DWORD{ERROR_SUCCESS});
    }
    change->End();
    const auto taken = std::chrono::ceil<std::chrono::seconds>(std::chrono::steady_clock::now() - start);
    for (History* const each : {history.get(), reader.get()}) {
        const std::vector<std::int64_t> times = timesOf(*each, change->Number());
        ASSERT_EQ(times.size(), 6U);
        EXPECT_EQ(times[1], times[0]);
        EXPECT_GT(times[2], times[1]);
        EXPECT_EQ(times[3], times[2]);
        EXPECT_GT(times[4], times[3]);
        EXPECT_LE(times[4], taken.count());
        EXPECT_EQ(times[5], times[4]);
    }
    std::size_t removed = 0;
    ASSERT_EQ(history->PruneOlder(std::int64_t{1} << 40, removed), DWORD{ERROR_SUCCESS});
    RunSql(Path(), "CREATE TEMP TABLE t(n CHECK(n=0)); INSERT INTO t SELECT count(*) FROM times");
}

// Whoever may rename a folder above it leads nobody to another database, at no moment.
TEST_F(HistoryTest, ItsFolderIsHeldWhateverBecomesOfTheNamesAboveIt) {
    const std::string state = folder.Path("above/permora");
    std::shared_ptr<const PrivateFolder> held;
    ASSERT_EQ(PrivateFolder::Hold(state, MissingFolder::kMake, held), DWORD{ERROR_SUCCESS});
    const std::string path = held->PathOf("history.db");
    ASSERT_EQ(MakePrivateFile(path), DWORD{ERROR_SUCCESS});
    Database database;
    database.Keep(held);
    ASSERT_EQ(database.Open(path, Database::Access::kReadWrite), DWORD{ERROR_SUCCESS});
    std::filesystem::rename(folder.Path("above"), folder.Path("away"));
    Make(*Open(), 1);
    std::filesystem::create_directories(state);
    std::filesystem::copy_file(Path(), state + "/history.db");
    ASSERT_EQ(database.Execute("PRAGMA journal_mode=WAL; CREATE TABLE own(n); INSERT INTO own VALUES(1)"),
              DWORD{ERROR_SUCCESS});
    std::optional<std::int64_t> rows;
    ASSERT_EQ(database.Ask("SELECT count(*) FROM own", rows), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(rows, 1);
    const auto namesIn = [](const std::string& where) {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(where))
            names.insert(entry.path().filename());
        return names;
    };
    EXPECT_EQ(namesIn(state), std::set<std::string>{"history.db"});
    EXPECT_EQ(namesIn(folder.Path("away/permora")),
              (std::set<std::string>{"history.db", "history.db-shm", "history.db-wal"}));
    // Another one of this process goes on when the first has ended.
    std::shared_ptr<const PrivateFolder> again;
    ASSERT_EQ(PrivateFolder::Hold(folder.Path("away/permora"), MissingFolder::kLeave, again),
              DWORD{ERROR_SUCCESS});
    EXPECT_EQ(again, held);
}

// A program that opens the file of a database and closes it again gives up its locks on it, as POSIX has it.
TEST_F(HistoryTest, AHistoryThatIsOpenedAgainStaysLockedAgainstOtherPrograms) {
    const auto history = Open();
    const auto change = history->Begin(ChangeKind::kReset);
    std::uint64_t top = 0;
    change->BeginTop({"C:\\t", true, {}}, top);
    ASSERT_EQ(change->Record(top, std::vector{ChangeOf("x", 1, "old", "new")}), DWORD{ERROR_SUCCESS});
    Open();
    // A program that takes itself for the last one removes the log when it ends.
    RunSql(Path(), "SELECT count(*) FROM changes");
    EXPECT_TRUE(std::filesystem::exists(Path() + "-wal"));
    ASSERT_EQ(change->Record(top, std::vector{ChangeOf("y", 2, "old", "new")}), DWORD{ERROR_SUCCESS});
    RunSql(Path(), "SELECT count(*) FROM changes");
    EXPECT_EQ(Objects(*Open(), change->Number()).size(), 2U);
}

void Overwrite(const std::string& path, std::streamoff from, std::size_t count) {
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(from);
    const std::string noise(count, '\x5a');
    file.write(noise.data(), static_cast<std::streamsize>(noise.size()));
}

TEST_F(HistoryTest, WhatIsNoHistoryIsToldAndStays) {
    Make(*Open(), 2000);
    std::size_t removed = 0;
    Open()->PruneOlder(0, removed);
    const std::string whole = Path();
    const std::string state = std::filesystem::path(whole).parent_path();
    const auto sql = [&](const std::string& text) { RunSql(whole, text); };
    struct Case {
        const char* name;
        std::function<void()> damage;
        DWORD expected;
    };
    const Case cases[] = {
        {"no database", [&] { Overwrite(whole, 0, 4000); }, ERROR_FILE_CORRUPT},
        {"a newer one", [&] { sql("PRAGMA user_version=" + std::to_string(kSchemaVersion + 1)); },
         ERROR_UNKNOWN_REVISION},
        {"somebody else's", [&] { sql("PRAGMA application_id=7"); }, ERROR_FILE_CORRUPT},
        {"not marked", [&] { sql("PRAGMA application_id=0; PRAGMA user_version=0"); }, ERROR_FILE_CORRUPT},
        {"writable by others", [&] { chmod(whole.c_str(), 0666); }, ERROR_INVALID_OWNER},
        {"in a folder of others", [&] { chmod(state.c_str(), 0777); }, ERROR_INVALID_OWNER},
        {"a link",
         [&] {
             std::filesystem::rename(whole, whole + ".real");
             std::filesystem::create_symlink("history.db.real", whole);
         },
         ERROR_CANT_RESOLVE_FILENAME},
        {"a log that is a link", [&] { std::filesystem::create_symlink("/etc/passwd", whole + "-wal"); },
         ERROR_CANT_RESOLVE_FILENAME},
    };
    const std::string copy = folder.Path() + "/copy";
    std::filesystem::copy_file(whole, copy);
    for (const Case& current : cases) {
        SCOPED_TRACE(current.name);
        std::filesystem::remove_all(state);
        std::filesystem::create_directory(state);
        std::filesystem::copy_file(copy, whole);
        chmod(state.c_str(), 0700);
        chmod(whole.c_str(), 0600);
        current.damage();
        const auto size = std::filesystem::file_size(whole);
        std::unique_ptr<History> history;
        EXPECT_EQ(History::Open(whole, history), current.expected);
        EXPECT_EQ(History::OpenToRead(whole, history), current.expected);
        EXPECT_EQ(history, nullptr);
        EXPECT_EQ(std::filesystem::file_size(whole), size);
    }
}

}  // namespace
}  // namespace permora::test
