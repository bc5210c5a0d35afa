#include <fcntl.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

#include "platform/api/files.h"
#include "platform/linux/base/unique_fd.h"
#include "tests/platform/linux/shell/file_operation_fixture.h"
#include "tests/support/access_lists.h"

namespace permora::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr FILEOP_FLAGS kForGood = 0;

std::vector<Question> KindsOf(const std::vector<FileOperationQuestion>& questions) {
    std::vector<Question> kinds;
    std::transform(questions.begin(), questions.end(), std::back_inserter(kinds),
                   [](const FileOperationQuestion& question) { return question.kind; });
    return kinds;
}

void MakeLink(const std::string& target, const std::string& path) {
    ASSERT_EQ(symlink(target.c_str(), path.c_str()), 0);
}

TEST_F(FileOperations, CopiesATreeAndNamesCopiesInTheSameFolder) {
    const TemporaryFolder from;
    const TemporaryFolder to;
    from.MakeFolder("tree");
    from.MakeFolder("tree/sub");
    WriteFileText(from.Path("tree/sub/a.txt"), "one");
    MakeLink("/nowhere", from.Path("tree/link"));
    EXPECT_EQ(Run(FO_COPY, {from.Path("tree")}, to.Path()), 0U);
    EXPECT_FALSE(isAborted);
    EXPECT_THAT(Below(to.Path()),
                ElementsAre("tree", "tree/link->/nowhere", "tree/sub", "tree/sub/a.txt=one"));
    EXPECT_EQ(Below(from.Path()), Below(to.Path()));

    EXPECT_EQ(Run(FO_COPY, {to.Path("tree"), to.Path("tree/sub/a.txt")}, to.Path()), 0U);
    EXPECT_EQ(Run(FO_COPY, {to.Path("a.txt"), to.Path("a.txt")}, to.Path()), 0U);
    for (const char* name : {"a.txt", "a - Copy.txt", "a - Copy (2).txt", "tree - Copy/sub/a.txt"})
        EXPECT_EQ(ReadWholeFile(to.Path(name)), "one") << name;
}

TEST_F(FileOperations, AskBeforeAnythingIsReplacedOrMerged) {
    struct Case {
        const char* name;
        UINT function;
        std::map<Question, std::deque<Answer>> answers;
        std::vector<std::string> target;
        std::vector<std::string> left;
    };
    const std::vector<std::string> before = {"d", "d/a=new", "d/b=new", "d/e", "f=new"};
    const Case cases[] = {
        {"nothing is replaced",
         FO_COPY,
         {{Question::kMergeFolders, {Answer::kYes}}, {Question::kReplaceFile, {Answer::kNoToAll}}},
         {"d", "d/a=old", "d/b=old", "d/e", "f=old"},
         before},
        {"all is replaced",
         FO_COPY,
         {{Question::kMergeFolders, {Answer::kYes}}, {Question::kReplaceFile, {Answer::kYesToAll}}},
         {"d", "d/a=new", "d/b=new", "d/e", "f=new"},
         before},
        {"no merge",
         FO_COPY,
         {{Question::kMergeFolders, {Answer::kNo}}, {Question::kReplaceFile, {Answer::kYes}}},
         {"d", "d/a=old", "d/b=old", "f=new"},
         before},
        {"cancelled",
         FO_COPY,
         {{Question::kMergeFolders, {Answer::kCancel}}},
         {"d", "d/a=old", "d/b=old", "f=old"},
         before},
        {"moved",
         FO_MOVE,
         {{Question::kMergeFolders, {Answer::kYes}}, {Question::kReplaceFile, {Answer::kYesToAll}}},
         {"d", "d/a=new", "d/b=new", "d/e", "f=new"},
         {}},
        {"passed over in a move",
         FO_MOVE,
         {{Question::kMergeFolders, {Answer::kYes}}, {Question::kReplaceFile, {Answer::kNoToAll}}},
         {"d", "d/a=old", "d/b=old", "d/e", "f=old"},
         {"d", "d/a=new", "d/b=new", "f=new"}},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.name);
        const TemporaryFolder from;
        const TemporaryFolder to;
        for (const auto& [folder, text] : {std::pair(&from, "new"), std::pair(&to, "old")}) {
            folder->MakeFolder("d");
            for (const char* name : {"d/a", "d/b", "f"})
                WriteFileText(folder->Path(name), text);
        }
        from.MakeFolder("d/e");
        answers = each.answers;
        EXPECT_EQ(Run(each.function, {from.Path("d"), from.Path("f")}, to.Path()), 0U);
        EXPECT_EQ(isAborted, each.target != before);
        EXPECT_EQ(Below(to.Path()), each.target);
        EXPECT_EQ(Below(from.Path()), each.left);
    }
}

TEST_F(FileOperations, RefuseAFolderThatWouldComeIntoItself) {
    if (const std::string reason = CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    const TemporaryFolder place;
    const TemporaryFolder other;
    place.MakeFolder("a");
    place.MakeFolder("a/b");
    MakeLink(place.Path("a/b"), other.Path("link"));
    const std::string bound = other.MakeFolder("bound");
    ASSERT_EQ(mount(place.Path("a/b").c_str(), bound.c_str(), nullptr, MS_BIND, nullptr), 0);
    for (const UINT function : {FO_COPY, FO_MOVE}) {
        for (const std::string& target : {place.Path("a"), place.Path("a/b"), other.Path("link"), bound}) {
            SCOPED_TRACE(target);
            answers[Question::kFolderIntoItself] = {Answer::kNo};
            EXPECT_NE(Run(function, {place.Path("a")}, target), 0U);
            // Through the mount, this is visible only when the walk meets the target.
            EXPECT_EQ(asked.front().source.path, Shown(place.Path(target == bound ? "a/b" : "a")));
            std::filesystem::remove_all(place.Path("a/b/a"));  // what a copy by way of the mount began with
            EXPECT_THAT(Below(place.Path()), ElementsAre("a", "a/b"));
        }
    }
    umount(bound.c_str());
}

TEST_F(FileOperations, AreNotLedAwayByAFolderThatIsSwappedForALink) {
    for (const UINT function : {FO_COPY, FO_MOVE, FO_DELETE}) {
        SCOPED_TRACE(function);
        const TemporaryFolder outside;
        WriteFileText(outside.Path("a"), "outside");
        const TemporaryFolder from;
        const TemporaryFolder to;
        for (const TemporaryFolder* folder : {&from, &to}) {
            folder->MakeFolder("d");
            WriteFileText(folder->Path("d/a"), folder == &from ? "new" : "old");
        }
        chmod(from.Path("d/a").c_str(), 0444);
        // The folder of the item in question, and the target folder.
        onAsk = [&](const FileOperationQuestion& question) {
            if (question.source.isFolder) return;
            for (const TemporaryFolder* folder : {&from, &to}) {
                EXPECT_EQ(rename(folder->Path("d").c_str(), folder->Path("moved").c_str()), 0);
                MakeLink(outside.Path(), folder->Path("d"));
            }
        };
        if (function == FO_DELETE) {
            answers = {{Question::kDeleteForGood, {Answer::kYes}},
                       {Question::kProtectedItem, {Answer::kYes}}};
            // The folder's name is a link by then, and the link is deleted.
            answers[Question::kFailure] = {Answer::kNo};
            Run(function, {from.Path("d")}, "", kForGood);
            EXPECT_THAT(Below(from.Path("moved")), IsEmpty());
        } else {
            answers = {{Question::kMergeFolders, {Answer::kYes}}, {Question::kReplaceFile, {Answer::kYes}}};
            if (function == FO_MOVE) answers[Question::kFailure] = {Answer::kNo};
            Run(function, {from.Path("d")}, to.Path());
            EXPECT_THAT(Below(to.Path("moved")), ElementsAre("a=new"));
        }
        onAsk = [](auto&) {};
        EXPECT_THAT(Below(outside.Path()), ElementsAre("a=outside"));
    }
}

TEST_F(FileOperations, ACancelledCopyLeavesNothingHalf) {
    const TemporaryFolder from;
    const TemporaryFolder to;
    // Far more than can be copied between two reports.
    ASSERT_EQ(RunCommand({"fallocate", "-l", "2G", from.Path("big")}).exitCode, 0);
    onReport = [](const FileOperationProgress& progress) { return progress.bytesDone == 0; };
    EXPECT_EQ(Run(FO_COPY, {from.Path("big")}, to.Path()), 0U);
    EXPECT_TRUE(isAborted);
    EXPECT_THAT(Below(to.Path()), IsEmpty());
}

TEST_F(FileOperations, TellWhatTheyCannotCopyAndNeverWaitForAPipe) {
    const TemporaryFolder from;
    const TemporaryFolder to;
    from.MakeFolder("d");
    WriteFileText(from.Path("d/a"), "x");
    ASSERT_EQ(mkfifo(from.Path("d/pipe").c_str(), 0600), 0);
    answers[Question::kFailure] = {Answer::kRetry, Answer::kNo};
    EXPECT_EQ(Run(FO_COPY, {from.Path("d")}, to.Path()), ERROR_NOT_SUPPORTED);
    EXPECT_THAT(Below(to.Path()), ElementsAre("d", "d/a=x"));
}

TEST_F(FileOperations, GoThroughTreesOfThousandsOfLevels) {
    const TemporaryFolder from;
    const TemporaryFolder to;
    constexpr int kLevels = 3000;
    host::UniqueFd folder(open(from.MakeFolder("d").c_str(), O_PATH | O_DIRECTORY));
    for (int level = 1; level < kLevels; ++level) {
        ASSERT_EQ(mkdirat(folder.Get(), "d", 0777), 0);
        folder.Reset(openat(folder.Get(), "d", O_PATH | O_DIRECTORY));
    }
    EXPECT_EQ(Run(FO_COPY, {from.Path("d")}, to.Path()), 0U);
    ULONGLONG removed = 0;
    onReport = [&](const FileOperationProgress& progress) {
        removed = progress.itemsDone;
        return true;
    };
    answers[Question::kDeleteForGood] = {Answer::kYes, Answer::kYes};
    EXPECT_EQ(Run(FO_DELETE, {from.Path("d"), to.Path("d")}, "", kForGood), 0U);
    EXPECT_GE(removed, ULONGLONG{kLevels});
    EXPECT_THAT(Below(from.Path()), IsEmpty());
    EXPECT_THAT(Below(to.Path()), IsEmpty());
}

TEST_F(FileOperations, RenameWithinTheFolderAndNeverOntoAnother) {
    struct Case {
        const char* newName;
        DWORD error;
    };
    const Case cases[] = {
        {"new", ERROR_SUCCESS},      {"taken", ERROR_ALREADY_EXISTS}, {"other\\new", ERROR_INVALID_NAME},
        {"a?b", ERROR_INVALID_NAME}, {"twin", ERROR_ALREADY_EXISTS},  {"OLD", ERROR_SUCCESS},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.newName);
        const TemporaryFolder folder;
        WriteFileText(folder.Path("old"), "x");
        WriteFileText(folder.Path("taken"), "y");
        ASSERT_EQ(link(folder.Path("old").c_str(), folder.Path("twin").c_str()), 0);
        folder.MakeFolder("other");
        if (each.error != ERROR_SUCCESS) answers[Question::kFailure] = {Answer::kNo};
        const std::string from = Shown(folder.Path("old")) + '\0';
        const std::string to = Shown(folder.Path()) + "\\" + each.newName + '\0';
        SHFILEOPSTRUCTA operation{};
        operation.wFunc = FO_RENAME;
        operation.pFrom = from.c_str();
        operation.pTo = to.c_str();
        EXPECT_EQ(static_cast<DWORD>(SHFileOperationA(&operation)), each.error);
        const bool isRenamed = each.error == ERROR_SUCCESS;
        EXPECT_NE(std::filesystem::exists(folder.Path("old")), isRenamed);
        if (isRenamed) EXPECT_EQ(ReadWholeFile(folder.Path(each.newName)), "x");
        EXPECT_EQ(ReadWholeFile(folder.Path("taken")), "y");
    }
}

TEST_F(FileOperations, AskAboutReadOnlyItems) {
    const TemporaryFolder folder;
    const TemporaryFolder to;
    for (const char* name : {"a", "b", "c"}) {
        WriteFileText(folder.Path(name), "x");
        chmod(folder.Path(name).c_str(), 0444);
    }
    answers[Question::kProtectedItem] = {Answer::kNo, Answer::kYesToAll};
    EXPECT_EQ(Run(FO_MOVE, {folder.Path("a"), folder.Path("b"), folder.Path("c")}, to.Path()), 0U);
    EXPECT_THAT(Below(folder.Path()), ElementsAre("a=x"));
    WriteFileText(folder.Path("b"), "y");
    answers = {{Question::kReplaceFile, {Answer::kYes}}, {Question::kProtectedItem, {Answer::kNo}}};
    EXPECT_EQ(Run(FO_COPY, {folder.Path("b")}, to.Path()), 0U);
    EXPECT_EQ(KindsOf(asked).size(), 2U);
    EXPECT_EQ(ReadWholeFile(to.Path("b")), "x");
}

// A program that never releases its lease, in a process of its own.
class LeaseHolder {
  public:
    explicit LeaseHolder(const std::string& path) {
        int told[2];
        if (pipe(told) != 0) return;
        process = fork();
        if (process == 0) {
            const int file = open(path.c_str(), O_RDWR | O_CLOEXEC);
            signal(SIGIO, SIG_IGN);  // by which the kernel asks for it
            const char isHeld = fcntl(file, F_SETLEASE, F_WRLCK) == 0 ? 'y' : 'n';
            (void)!write(told[1], &isHeld, 1);
            for (;;)
                pause();
        }
        char isHeld = 'n';
        (void)!read(told[0], &isHeld, 1);
        EXPECT_EQ(isHeld, 'y');
        close(told[0]);
        close(told[1]);
    }
    ~LeaseHolder() { End(); }
    LeaseHolder(const LeaseHolder&) = delete;
    LeaseHolder& operator=(const LeaseHolder&) = delete;

    void End() {
        if (process <= 0) return;
        kill(process, SIGKILL);
        waitpid(process, nullptr, 0);
        process = 0;
    }

  private:
    pid_t process = 0;
};

TEST_F(FileOperations, DoNotWaitForTheLeaseOfAnother) {
    constexpr auto kSoon = std::chrono::seconds(10);
    const TemporaryFolder from;
    const TemporaryFolder to;
    for (const char* name : {"a", "leased", "z"})
        WriteFileText(from.Path(name), name);
    LeaseHolder holder(from.Path("leased"));
    const std::vector<std::string> all = {from.Path("a"), from.Path("leased"), from.Path("z")};
    const auto start = std::chrono::steady_clock::now();
    answers = {{Question::kFailure, {Answer::kRetry, Answer::kNo}}};
    EXPECT_EQ(Run(FO_COPY, all, to.Path()), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_LT(std::chrono::steady_clock::now() - start, kSoon);
    ASSERT_EQ(asked.size(), 2U);
    EXPECT_EQ(asked.front().error, DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_TRUE(asked.front().mayRetry);
    EXPECT_THAT(Below(to.Path()), ElementsAre("a=a", "z=z"));

    answers = {{Question::kFailure, {Answer::kRetry}}};
    onAsk = [&holder](const auto&) { holder.End(); };
    EXPECT_EQ(Run(FO_COPY, {from.Path("leased")}, to.Path()), 0U);
    EXPECT_EQ(ReadWholeFile(to.Path("leased")), "leased");
}

TEST(CreateDirectory, GivesTheFolderWhatItsOwnFolderHandsDown) {
    if (geteuid() != 0) GTEST_SKIP() << "without root the list is kept elsewhere";
    const TemporaryFolder folder;
    ASSERT_EQ(SetDescriptorText(folder.Path(), "D:P(A;OICI;FA;;;BA)(A;;FR;;;WD)"), 0U);
    folder.MakeFile("file");
    struct Case {
        const char* name;
        DWORD error;
    };
    const Case cases[] = {
        {"\\new", ERROR_SUCCESS},
        {"\\new", ERROR_ALREADY_EXISTS},
        {"\\slash\\", ERROR_SUCCESS},
        {"\\no\\new", ERROR_PATH_NOT_FOUND},
        {"\\a:b", ERROR_INVALID_NAME},
        {"\\dot.", ERROR_INVALID_NAME},
        {"\\file\\new", ERROR_PATH_NOT_FOUND},
        {"\\file", ERROR_ALREADY_EXISTS},
    };
    for (const Case& each : cases) {
        const std::string path = Shown(folder.Path()) + each.name;
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(CreateDirectoryA(path.c_str(), nullptr) != FALSE, each.error == ERROR_SUCCESS) << each.name;
        EXPECT_EQ(GetLastError(), each.error) << each.name;
    }
    EXPECT_EQ(DaclText(folder.Path("new")), "D:AI(A;OICIID;FA;;;BA)");
    EXPECT_EQ(DaclText(folder.Path("slash")), "D:AI(A;OICIID;FA;;;BA)");
}

}  // namespace
}  // namespace permora::test
