// Copies and moves between volumes of different kinds.
#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <utility>

#include "platform/api/files.h"
#include "platform/linux/base/unique_fd.h"
#include "tests/platform/linux/shell/file_operation_fixture.h"
#include "tests/support/access_lists.h"
#include "tests/support/ntfs_volume.h"

namespace {

bool isSyncLost = false;

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the linker demands these names
extern "C" {

int __real_syncfs(int descriptor);
int __wrap_syncfs(int descriptor) {
    // Like the kernel: a lost write is reported once.
    if (!std::exchange(isSyncLost, false)) return __real_syncfs(descriptor);
    errno = EIO;
    return -1;
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)

namespace permora::test {
namespace {

using testing::ElementsAre;

constexpr time_t kThen = 1'000'000'000;
constexpr off_t kSparseBytes = off_t{64} << 20;

// No two pages of it are alike, and the last one is no whole one.
std::string LargeContents() {
    std::string contents;
    for (int i = 0; contents.size() < (std::size_t{3} << 20); ++i)
        contents += std::to_string(i) + ' ';
    return contents + "end";
}

void MakeEverything(const std::string& tree) {
    for (const char* name : {"", "/sub", "/sub/empty"})
        ASSERT_EQ(mkdir((tree + name).c_str(), 0755), 0);
    WriteFileText(tree + "/sub/\xC3\xA4 a", "contents");
    WriteFileText(tree + "/hidden", "h");
    WriteFileText(tree + "/large", LargeContents());
    ASSERT_EQ(symlink("sub/\xC3\xA4 a", (tree + "/link").c_str()), 0);
    const host::UniqueFd sparse(open((tree + "/sparse").c_str(), O_WRONLY | O_CREAT, 0644));
    ASSERT_EQ(ftruncate(sparse.Get(), kSparseBytes), 0);
    ASSERT_EQ(pwrite(sparse.Get(), "data", 4, off_t{32} << 20), 4);
    for (const char* name : {"/sub/\xC3\xA4 a", "/sub"})
        ASSERT_EQ(setxattr((tree + name).c_str(), "user.note", "stream", 6, 0), 0) << name;
    ASSERT_TRUE(
        SetFileAttributesA(Shown(tree + "/hidden").c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY));
    const timespec times[2] = {{kThen, 0}, {kThen, 500}};
    for (const char* name : {"/sub/\xC3\xA4 a", "/sparse", "/link", "/sub/empty", "/sub", ""})
        ASSERT_EQ(utimensat(AT_FDCWD, (tree + name).c_str(), times, AT_SYMLINK_NOFOLLOW), 0) << name;
}

void ExpectEverything(const std::string& tree, const std::string& inherited) {
    EXPECT_THAT(Below(tree), ElementsAre("hidden=h", "large=large", "link->sub/\xC3\xA4 a", "sparse=large",
                                         "sub", "sub/empty", "sub/\xC3\xA4 a=contents"));
    EXPECT_TRUE(ReadWholeFile(tree + "/large") == LargeContents());
    struct stat status {};
    ASSERT_EQ(stat((tree + "/sparse").c_str(), &status), 0);
    EXPECT_EQ(status.st_size, kSparseBytes);
    EXPECT_LT(status.st_blocks, 4096);
    EXPECT_EQ(ReadWholeFile(tree + "/sparse").substr(std::size_t{32} << 20, 4), "data");
    for (const char* name : {"/sub/\xC3\xA4 a", "/sub"}) {
        char value[8] = {};
        EXPECT_EQ(getxattr((tree + name).c_str(), "user.note", value, sizeof value), 6) << name;
    }
    EXPECT_EQ(GetFileAttributesA(Shown(tree + "/hidden").c_str()) &
                  (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY),
              FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY);
    for (const char* name : {"/sub/\xC3\xA4 a", "/sparse", "/link", "/sub/empty", "/sub", ""}) {
        ASSERT_EQ(lstat((tree + name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mtim.tv_sec, kThen) << name;
    }
    EXPECT_EQ(DaclText(tree + "/sub/\xC3\xA4 a"), "D:AI(A;ID;FA;;;" + inherited + ")");
    EXPECT_EQ(DaclText(tree + "/sub"), "D:AI(A;OICIID;FA;;;" + inherited + ")");
}

// Between the local disk and an NTFS volume.
class VolumeOperations : public FileOperations {
  protected:
    void SetUp() override {
        if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
        MakeVolume(std::uint64_t{256} << 20);
    }
    void MakeVolume(std::uint64_t bytes) {
        volume = std::make_unique<NtfsVolume>(bytes);
        ASSERT_EQ(volume->Problem(), "");
    }
    void ExpectSoundVolume() { EXPECT_THAT(volume->Audit(), testing::HasSubstr("No errors were found")); }

    const TemporaryFolder local;
    std::unique_ptr<NtfsVolume> volume;
};

TEST_F(VolumeOperations, CarryEverythingButTheAccessListFromVolumeToVolume) {
    const std::string places[] = {local.Path(), volume->Root()};
    for (const std::string& from : places) {
        for (const std::string& to : places) {
            for (const UINT function : {FO_COPY, FO_MOVE}) {
                if (function == FO_MOVE && from == to) continue;  // is renamed
                SCOPED_TRACE(from + " to " + to);
                const std::string source = from + "/source";
                const std::string target = to + "/target";
                MakeEverything(source);
                if (HasFatalFailure()) return;
                ASSERT_EQ(mkdir(target.c_str(), 0755), 0);
                ASSERT_EQ(SetDescriptorText(source, "D:P(A;OICI;FA;;;WD)"), 0U);
                ASSERT_EQ(SetDescriptorText(target, "D:P(A;OICI;FA;;;BA)"), 0U);
                EXPECT_EQ(Run(function, {source}, target), 0U);
                EXPECT_FALSE(isAborted);
                ExpectEverything(target + "/source", "BA");
                EXPECT_EQ(std::filesystem::exists(source), function == FO_COPY);
                std::filesystem::remove_all(source);
                std::filesystem::remove_all(target);
            }
        }
    }
    ExpectSoundVolume();
}

TEST_F(VolumeOperations, MoveWithinAVolumeKeepsTheAccessList) {
    for (const char* name : {"d", "to"})
        mkdir(volume->Path(name).c_str(), 0777);
    WriteFileText(volume->Path("d/f"), "x");
    ASSERT_EQ(SetDescriptorText(volume->Path("d"), "D:P(A;OICI;FA;;;WD)"), 0U);
    ASSERT_EQ(SetDescriptorText(volume->Path("to"), "D:P(A;OICI;FA;;;BA)"), 0U);
    const std::string ofFolder = DaclText(volume->Path("d"));
    const std::string ofFile = DaclText(volume->Path("d/f"));
    EXPECT_EQ(Run(FO_MOVE, {volume->Path("d")}, volume->Path("to")), 0U);
    EXPECT_EQ(DaclText(volume->Path("to/d")), ofFolder);
    EXPECT_EQ(Run(FO_MOVE, {volume->Path("to/d/f")}, volume->Root()), 0U);
    EXPECT_EQ(DaclText(volume->Path("f")), ofFile);
    ExpectSoundVolume();
}

TEST_F(VolumeOperations, CarryStreamsThatAreShownAsFiles) {
    NtfsVolume files;
    ASSERT_EQ(files.Problem(), "");
    files.Mount(NtfsMount::kStreamsAsFiles);
    WriteFileText(local.Path("a"), "x");
    ASSERT_EQ(setxattr(local.Path("a").c_str(), "user.note", "stream", 6, 0), 0);
    EXPECT_EQ(Run(FO_COPY, {local.Path("a")}, files.Root()), 0U);
    EXPECT_EQ(ReadWholeFile(files.Path("a:note")), "stream");
    WriteFileText(files.Path("a:big"), std::string(100'000, 'b'));
    EXPECT_EQ(Run(FO_COPY, {files.Path("a")}, files.Root()), 0U);
    EXPECT_EQ(ReadWholeFile(files.Path("a - Copy:big")).size(), 100'000U);
    // An attribute holds 64 KiB: the user is asked, and without consent nothing is copied.
    for (const Answer answer : {Answer::kNo, Answer::kYes}) {
        answers[Question::kPropertyLoss] = {answer};
        EXPECT_EQ(Run(FO_COPY, {files.Path("a")}, volume->Root()), 0U);
        EXPECT_EQ(std::filesystem::exists(volume->Path("a")), answer == Answer::kYes);
    }
    // A name that is no stream's would lead elsewhere.
    local.MakeFolder("d");
    ASSERT_EQ(setxattr(local.Path("d").c_str(), "user./../stray", "x", 1, 0), 0);
    answers[Question::kPropertyLoss] = {Answer::kYes};
    EXPECT_EQ(Run(FO_COPY, {local.Path("d")}, files.Root()), 0U);
    EXPECT_FALSE(std::filesystem::exists(files.Path("stray")));
    char value[8] = {};
    EXPECT_EQ(getxattr(volume->Path("a").c_str(), "user.note", value, sizeof value), 6);
}

TEST_F(VolumeOperations, GiveNothingANameOnNtfsUnderWhichWindowsWouldNotFindIt) {
    local.MakeFolder("d");
    WriteFileText(local.Path("d/\xC3\xA4.txt"), "one");
    WriteFileText(local.Path("d/\xC3\x84.TXT"), "two");
    WriteFileText(local.Path("d/a:b"), "stream of another");
    for (const char* device : {"aux.c", "Nul", "com7 .x", "LPT\xC2\xB2"})
        WriteFileText(local.Path("d/" + std::string(device)), "out of reach there");
    for (const char* plain : {"com", "com10", "console", "x.con"})
        WriteFileText(local.Path("d/" + std::string(plain)), "reached");
    constexpr std::size_t kTaken = 5;
    // Neither replaces the other, and nothing is removed.
    const auto before = Below(local.Path());
    answers[Question::kFailure].assign(6, Answer::kNo);
    EXPECT_NE(Run(FO_MOVE, {local.Path("d")}, volume->Root()), 0U);
    EXPECT_EQ(Below(volume->Path("d")).size(), kTaken);
    EXPECT_EQ(Below(local.Path()), before);
    EXPECT_EQ(Run(FO_RENAME, {volume->Path("d")}, volume->Path("D")), 0U);
    EXPECT_EQ(Below(volume->Path("D")).size(), kTaken);
    // If the driver allowed both names, each is a file of its own.
    for (const char* name : {"x", "X"})
        WriteFileText(volume->Path(name), "old");
    WriteFileText(local.Path("X"), "new");
    answers[Question::kReplaceFile] = {Answer::kYes};
    EXPECT_EQ(Run(FO_COPY, {local.Path("X")}, volume->Root()), 0U);
    EXPECT_EQ(ReadWholeFile(volume->Path("x")) + ReadWholeFile(volume->Path("X")), "oldnew");
}

TEST_F(VolumeOperations, AMoveKeepsASourceThatItDidNotCopyAsItIs) {
    const auto expectKept = [this](DWORD error, const char* contents) {
        answers[Question::kFailure] = {Answer::kRetry};
        EXPECT_EQ(Run(FO_MOVE, {local.Path("f")}, volume->Root()), error);
        EXPECT_TRUE(!asked.empty() && !asked.back().mayRetry);
        EXPECT_TRUE(isAborted);
        EXPECT_EQ(ReadWholeFile(local.Path("f")), contents);
    };
    // The disk lost what was written to it.
    WriteFileText(local.Path("f"), "then");
    isSyncLost = true;
    expectKept(ERROR_IO_DEVICE, "then");
    // The source was changed meanwhile.
    WriteFileText(volume->Path("f"), "old");
    onAsk = [&](const FileOperationQuestion& question) {
        if (question.kind == Question::kReplaceFile) WriteFileText(local.Path("f"), "and now");
    };
    answers[Question::kReplaceFile] = {Answer::kYes};
    expectKept(ERROR_FILE_INVALID, "and now");
}

TEST_F(VolumeOperations, AFullVolumeLeavesNothingHalfAndTheSourceWhole) {
    ASSERT_NO_FATAL_FAILURE(MakeVolume(std::uint64_t{4} << 20));
    const TemporaryFolder small;
    ASSERT_EQ(mount("none", small.Path().c_str(), "tmpfs", 0, "size=2m"), 0);
    local.MakeFolder("d");
    WriteFileText(local.Path("d/a"), "x");
    WriteFileText(local.Path("d/big"), std::string(std::size_t{6} << 20, 'x'));
    const auto before = Below(local.Path());
    for (const std::string& target : {volume->Root(), small.Path()}) {
        SCOPED_TRACE(target);
        answers[Question::kFailure] = {Answer::kRetry, Answer::kNo};
        EXPECT_EQ(Run(FO_MOVE, {local.Path("d")}, target), ERROR_DISK_FULL);
        EXPECT_TRUE(isAborted);
        EXPECT_THAT(Below(target), ElementsAre("d", "d/a=x"));
        EXPECT_EQ(Below(local.Path()), before);
        // The old file is kept until the new one is complete.
        WriteFileText(target + "/d/big", "old");
        std::filesystem::remove(target + "/d/a");
        answers = {{Question::kMergeFolders, {Answer::kYes}},
                   {Question::kReplaceFile, {Answer::kYes}},
                   {Question::kFailure, {Answer::kNo}}};
        EXPECT_EQ(Run(FO_COPY, {local.Path("d")}, target), ERROR_DISK_FULL);
        EXPECT_EQ(ReadWholeFile(target + "/d/big"), "old");
        EXPECT_EQ(Below(target).size(), 3U);
    }
    umount(small.Path().c_str());
    ExpectSoundVolume();
}

// The kernel does not rename objects that are only in the lower layer, although it is one volume.
TEST_F(FileOperations, MoveAnOverlaysFoldersByCopyingThem) {
    if (const std::string reason = CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    const TemporaryFolder base;
    ASSERT_EQ(mount("none", base.Path().c_str(), "tmpfs", 0, "size=4m"), 0);
    for (const char* name :
         {"lower", "upper", "work", "all", "lower/d", "lower/e", "lower/e/sub", "lower/to"})
        base.MakeFolder(name);
    WriteFileText(base.Path("lower/d/f"), "x");
    WriteFileText(base.Path("lower/e/sub/g"), "y");
    const std::string options = "lowerdir=" + base.Path("lower") + ",upperdir=" + base.Path("upper") +
                                ",workdir=" + base.Path("work");
    const std::string all = base.Path("all");
    ASSERT_EQ(mount("overlay", all.c_str(), "overlay", 0, options.c_str()), 0);
    EXPECT_EQ(Run(FO_MOVE, {all + "/d"}, all + "/to"), 0U);
    base.MakeFolder("all/to/e");
    answers[Question::kMergeFolders] = {Answer::kYes};
    EXPECT_EQ(Run(FO_MOVE, {all + "/e"}, all + "/to"), 0U);
    EXPECT_EQ(Run(FO_RENAME, {all + "/to"}, all + "/renamed"), 0U);
    EXPECT_FALSE(isAborted);
    EXPECT_THAT(Below(all), ElementsAre("renamed", "renamed/d", "renamed/d/f=x", "renamed/e", "renamed/e/sub",
                                        "renamed/e/sub/g=y"));
    umount(all.c_str());
    umount(base.Path().c_str());
}

}  // namespace
}  // namespace permora::test
