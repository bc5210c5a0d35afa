// Names that vanish at the moment of the count, and the folder in which none can.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <utility>

#include "platform/api/errors.h"
#include "tests/deletion/recording_host.h"
#include "tests/support/command.h"
#include "tests/support/temporary_folder.h"

namespace {

// The action before the next entry is moved, the number of folders made, and the planned failure.
std::function<void()> beforeMove;
int madeFolders = 0;
int makingProblem = 0;  // an errno value

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the linker demands these names
extern "C" {

int __real_renameat2(int from, const char* name, int to, const char* newName, unsigned flags);
int __wrap_renameat2(int from, const char* name, int to, const char* newName, unsigned flags) {
    if (const auto work = std::exchange(beforeMove, nullptr)) work();
    return __real_renameat2(from, name, to, newName, flags);
}

int __real_mkdirat(int folder, const char* name, mode_t mode);
int __wrap_mkdirat(int folder, const char* name, mode_t mode) {
    ++madeFolders;
    if (makingProblem != 0) {
        errno = makingProblem;
        return -1;
    }
    return __real_mkdirat(folder, name, mode);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)

namespace permora {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

const std::string kText(700, 'x');

class SeclusionTest : public ::testing::Test {
  protected:
    SeclusionTest() {
        std::filesystem::current_path(work);
        host.scrutiny = FileScrutiny::kObstacles;
    }
    ~SeclusionTest() override {
        std::filesystem::current_path("/");
        beforeMove = nullptr;
        madeFolders = makingProblem = 0;
    }

    static void Fill(const std::string& path) { std::ofstream(path, std::ios::binary) << kText; }
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(work))
            names.push_back(entry.path().filename());
        return names;
    }

    const test::TemporaryFolder folder;
    const std::string work = folder.MakeFolder("work");
    test::RecordingHost host;
};

// Somebody links a file into the folder and unlinks it there, as fast as can be.
TEST_F(SeclusionTest, AFileThatGetsASecondNameAgainAndAgainIsNeverOverwritten) {
    const std::string secret = folder.Path("secret");
    Fill(secret);
    const pid_t other = fork();
    if (other == 0) {
        for (;;) {
            if (link(secret.c_str(), "bait") != 0) continue;
            unlink("bait");
        }
    }
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(3);
    bool isWhole = true;
    for (int i = 0; i < 20'000 && isWhole && std::chrono::steady_clock::now() < end; ++i) {
        host.Delete("bait");
        isWhole = test::ReadWholeFile(secret) == kText;
    }
    kill(other, SIGKILL);
    waitpid(other, nullptr, 0);
    EXPECT_TRUE(isWhole);
    EXPECT_FALSE(host.failures.empty());
    unlink("bait");
    // Where the name was taken again, the file could not go back, which is reported.
    for (const std::string& name : Names()) {
        EXPECT_TRUE(std::any_of(host.failures.begin(), host.failures.end(), [&](const Outcome& failure) {
            return failure.place == name;
        })) << name;
    }
}

TEST_F(SeclusionTest, WhatIsRefusedGoesBackToItsPlace) {
    Fill("file");
    beforeMove = [] { std::filesystem::create_hard_link("file", "second"); };
    host.Delete("file");
    EXPECT_THAT(host.obstacles, ElementsAre(OverwriteObstacle::kSeveralNames));
    EXPECT_THAT(Names(), ::testing::UnorderedElementsAre("file", "second"));
    EXPECT_EQ(test::ReadWholeFile("second"), kText);

    // A stop in the middle too.
    unlink("second");
    beforeMove = [this] { host.isStopping = true; };
    host.Delete("file");
    EXPECT_THAT(Names(), ElementsAre("file"));
    EXPECT_THAT(host.failures, IsEmpty());
}

TEST_F(SeclusionTest, AnotherFileUnderTheNameStaysWhole) {
    Fill("file");
    Fill("other");
    beforeMove = [] {
        std::filesystem::rename("file", "taken");
        std::filesystem::rename("other", "file");
    };
    host.Delete("file");
    EXPECT_THAT(host.failures, ElementsAre(Outcome{ERROR_FILE_INVALID, Step::kCompare, "file"}));
    EXPECT_THAT(Names(), ::testing::UnorderedElementsAre("file", "taken"));
    for (const char* name : {"file", "taken"})
        EXPECT_EQ(test::ReadWholeFile(name), kText);
}

TEST_F(SeclusionTest, WhatCannotGoBackIsNamedWithItsPlace) {
    Fill("file");
    beforeMove = [] {
        std::filesystem::create_hard_link("file", "second");
        beforeMove = [] { std::ofstream("file") << "new"; };
    };
    host.Delete("file");
    ASSERT_THAT(host.failures, ElementsAre(Outcome{ERROR_ALREADY_EXISTS, Step::kGiveBack, "file"}));
    EXPECT_THAT(host.failures[0].place, StartsWith(".permora-shred-"));
    EXPECT_EQ(test::ReadWholeFile(host.failures[0].place + "/file"), kText);
    EXPECT_EQ(test::ReadWholeFile("file"), "new");
    EXPECT_THAT(host.seclusion.TakeLeftovers(), IsEmpty()) << "it was told once";
}

TEST_F(SeclusionTest, OneFolderServesATree) {
    for (const char* name : {"top", "top/a", "top/b"})
        folder.MakeFolder(std::string("work/") + name);
    for (const char* name : {"top/a/one", "top/a/two", "top/b/one", "top/one"})
        Fill(name);
    host.Delete("top");
    EXPECT_THAT(host.failures, IsEmpty());
    EXPECT_EQ(host.deleted.size(), 7U);
    EXPECT_THAT(Names(), IsEmpty());
    EXPECT_EQ(madeFolders, 1);
}

TEST_F(SeclusionTest, AFolderThatSomebodyRemovesIsMadeAgain) {
    folder.MakeFolder("work/top");
    for (const char* name : {"top/one", "top/two", "top/three"})
        Fill(name);
    host.onEntry = [this](const std::string&) {
        for (const std::string& name : Names())
            if (name != "top") std::filesystem::remove(name);
    };
    host.Delete("top");
    EXPECT_THAT(host.failures, IsEmpty());
    EXPECT_THAT(Names(), IsEmpty());
    EXPECT_EQ(madeFolders, 3);

    // It need not be there at the end.
    Fill("file");
    SecureDeleteItem(host, host.Remember("file"));
    for (const std::string& name : Names())
        std::filesystem::remove(name);
    host.seclusion.End();
    EXPECT_THAT(host.seclusion.TakeLeftovers(), IsEmpty());
}

// The folder above cannot be changed by the user, so it is made in the one that is being listed.
TEST_F(SeclusionTest, TheFolderItselfIsNoEntryOfTheTree) {
    if (geteuid() != 0) GTEST_SKIP() << "becoming an ordinary user needs root";
    constexpr int kCount = 2000;
    folder.MakeFolder("work/top");
    for (const std::string& path : {folder.Path(""), work})
        chmod(path.c_str(), 0755);
    ASSERT_EQ(chown("top", 65534, 65534), 0);
    for (int i = 0; i < kCount; ++i) {
        // Long ones, so that the system lists them in many pieces.
        const std::string name = "top/" + std::string(200, 'n') + std::to_string(i);
        Fill(name);
        ASSERT_EQ(chown(name.c_str(), 65534, 65534), 0);
    }
    const auto answer = test::AsOrdinaryUser([this] {
        host.Delete("top");
        const bool isFolderAlone =
            host.failures == std::vector{Outcome{ERROR_ACCESS_DENIED, Step::kRemoveFolder, "top"}};
        return (isFolderAlone ? "deleted: " : "failures: " + std::to_string(host.failures.size()) + ": ") +
               std::to_string(host.deleted.size()) + ", folders: " + std::to_string(madeFolders);
    });
    // One that could not be made above, and one for all.
    EXPECT_EQ(answer, "deleted: " + std::to_string(kCount) + ", folders: 2");
    EXPECT_TRUE(std::filesystem::is_empty("top"));
}

TEST_F(SeclusionTest, OnlyWhereNoFolderCanBeIsItUncertain) {
    struct Case {
        int problem;
        std::vector<OverwriteObstacle> obstacles;
        Outcomes failures;
    };
    Fill("file");
    for (const Case& each : {Case{EROFS, {OverwriteObstacle::kNamesUnknown}, {}},
                             {EACCES, {OverwriteObstacle::kNamesUnknown}, {}},
                             {ENOSPC, {}, {{ERROR_DISK_FULL, Step::kSeclude, "file"}}},
                             {EDQUOT, {}, {{ERROR_NOT_ENOUGH_QUOTA, Step::kSeclude, "file"}}}}) {
        makingProblem = each.problem;
        host.obstacles.clear();
        host.failures.clear();
        host.Delete("file");
        EXPECT_EQ(host.obstacles, each.obstacles) << each.problem;
        EXPECT_EQ(host.failures, each.failures) << each.problem;
        EXPECT_EQ(test::ReadWholeFile("file"), kText) << each.problem;
    }
}

TEST_F(SeclusionTest, WhereNoFolderCanBeMadeItIsSaid) {
    if (geteuid() != 0) GTEST_SKIP() << "becoming an ordinary user needs root";
    // The folder above can be changed by others only, the one with the file also by the user; or neither.
    folder.MakeFolder("work/top");
    folder.MakeFolder("work/top/own");
    folder.MakeFolder("work/top/foreign");
    for (const std::string& path : {folder.Path(""), work, work + "/top", work + "/top/foreign"})
        chmod(path.c_str(), 0755);
    Fill("top/own/file");
    Fill("top/foreign/file");
    for (const char* path : {"top/own", "top/own/file", "top/foreign/file"})
        ASSERT_EQ(chown(path, 65534, 65534), 0);
    const auto answer = test::AsOrdinaryUser([this] {
        host.Delete("top");
        const bool isUnknown = host.obstacles == std::vector{OverwriteObstacle::kNamesUnknown};
        return std::string(isUnknown ? "unknown" : "known") +
               (std::filesystem::is_empty("top/own") ? " gone" : "");
    });
    EXPECT_EQ(answer, "unknown gone");
    EXPECT_EQ(test::ReadWholeFile("top/foreign/file"), kText);
}

}  // namespace
}  // namespace permora
