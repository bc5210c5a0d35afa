// The remains of a killed copy, which the next copy removes.
#include "platform/linux/shell/unfinished_files.h"

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>

#include "tests/platform/linux/shell/file_operation_fixture.h"
#include "tests/support/ntfs_volume.h"

namespace permora::test {
namespace {

using host::ObjectHandle;
using host::UniqueFd;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

// From its next call of this kind on, this process is as if it had been killed there.
void DieAt(long call) {
    std::array<sock_filter, 4> program{{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(call), 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    }};
    const sock_fprog filter{program.size(), program.data()};
    ASSERT_EQ(prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), 0);
    ASSERT_EQ(prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter), 0);
}

class Unfinished : public FileOperations {
  protected:
    // Copies over an existing file, in a process that dies at the given call. Returns whether it died.
    bool CopyAndDie(const std::vector<std::string>& items, const std::string& target, long call) {
        return !InAnotherProcess([&] {
            answers[Question::kReplaceFile].assign(items.size(), Answer::kYes);
            DieAt(call);
            return std::to_string(Run(FO_COPY, items, target));
        });
    }

    void KillAtEveryMoment(const std::string& target) {
        const std::string large(std::size_t{200} << 10, 'n');
        WriteFileText(sources.Path("file"), large);
        ASSERT_EQ(symlink("new", sources.Path("link").c_str()), 0);
        const std::vector<std::string> fileFirst = {sources.Path("file"), sources.Path("link")};
        const std::vector<std::string> linkFirst = {sources.Path("link"), sources.Path("file")};
        std::size_t deaths = 0;
        std::size_t left = 0;
        for (const long call : {SYS_linkat, SYS_renameat, SYS_renameat2, SYS_symlinkat, SYS_utimensat,
                                SYS_copy_file_range, SYS_write, SYS_pwrite64, SYS_close, SYS_fstatfs}) {
            for (const auto& both : {fileFirst, linkFirst}) {
                WriteFileText(target + "/file", "old");
                std::filesystem::remove(target + "/link");
                ASSERT_EQ(symlink("old", (target + "/link").c_str()), 0);
                if (CopyAndDie(both, target, call)) ++deaths;
                left += NamesIn(target).size() - both.size();
                EXPECT_THAT(ReadWholeFile(target + "/file"), testing::AnyOf("old", large)) << call;

                answers[Question::kReplaceFile] = {Answer::kYes, Answer::kYes};
                EXPECT_EQ(Run(FO_COPY, both, target), 0U) << call;
                EXPECT_THAT(NamesIn(target), UnorderedElementsAre("file", "link")) << call;
                EXPECT_EQ(ReadWholeFile(target + "/file"), large);
                EXPECT_EQ(std::filesystem::read_symlink(target + "/link"), "new");
            }
        }
        EXPECT_GE(deaths, 4U) << "it did not die where it should";
        EXPECT_GE(left, 2U) << "nothing was left that could have been swept";
    }

    const TemporaryFolder sources;
    const TemporaryFolder folder;
};

TEST_F(Unfinished, WhatAKilledCopyLeftIsGoneAfterTheNext) {
    KillAtEveryMoment(folder.Path());
}

TEST_F(Unfinished, NtfsTheSameWhereEveryFileHasAName) {
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    KillAtEveryMoment(volume.Root());
}

TEST_F(Unfinished, OnlyWhatIsOursAndForsakenIsSwept) {
    folder.MakeFile(".permora-0123456789abcdef");
    ASSERT_EQ(symlink("x", folder.Path(".permora-0123456789abcde0").c_str()), 0);
    const std::string kept[] = {
        folder.MakeFile(".permora-0123456789abcde"),    folder.MakeFile(".permora-0123456789abcdefg"),
        folder.MakeFile(".permora-0123456789ABCDEF"),   folder.MakeFile("x.permora-0123456789abcdef"),
        folder.MakeFolder(".permora-0123456789abcde1"), folder.MakeFile(".permora-0123456789abcde2"),
        folder.Path(".permora-0123456789abcde3"),
    };
    ASSERT_EQ(mkfifo(kept[6].c_str(), 0600), 0);
    const UniqueFd worked(open(kept[5].c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_TRUE(host::MarkUnfinished(worked.Get()));
    std::vector<std::string> names;
    for (const std::string& path : kept)
        names.push_back(path.substr(folder.Path().size() + 1));
    if (geteuid() == 0) {
        names.emplace_back(".permora-0123456789abcde4");
        names.emplace_back(".permora-0123456789abcde5");
        ASSERT_EQ(chown(folder.MakeFile(names[7]).c_str(), 65534, 65534), 0);
        ASSERT_EQ(symlink("x", folder.Path(names[8]).c_str()), 0);
        ASSERT_EQ(lchown(folder.Path(names[8]).c_str(), 65534, 65534), 0);
    }
    ObjectHandle held;
    ASSERT_EQ(ObjectHandle::OpenAt(AT_FDCWD, folder.Path().c_str(), held), 0U);
    host::SweepUnfinished(held);
    EXPECT_THAT(NamesIn(folder.Path()), testing::UnorderedElementsAreArray(names));
}

TEST_F(Unfinished, ACopyIsNotSweptFromUnderAnother) {
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const NtfsVolume volume(std::uint64_t{256} << 20);
    ASSERT_EQ(volume.Problem(), "");
    // Takes longer than the time between two reports.
    WriteFileText(sources.Path("file"), std::string(std::size_t{200} << 20, 'x'));
    WriteFileText(sources.Path("other"), "other");
    bool hasCopiedOther = false;
    onReport = [&](const FileOperationProgress& progress) {
        if (!hasCopiedOther && progress.bytesDone > 0) {
            hasCopiedOther = true;
            EXPECT_EQ(NamesIn(volume.Root()).size(), 1U);
            EXPECT_EQ(InAnotherProcess([&] {
                          onReport = [](auto&) { return true; };
                          return std::to_string(Run(FO_COPY, {sources.Path("other")}, volume.Root()));
                      }),
                      "0");
        }
        return true;
    };
    EXPECT_EQ(Run(FO_COPY, {sources.Path("file")}, volume.Root()), 0U);
    EXPECT_TRUE(hasCopiedOther);
    EXPECT_THAT(NamesIn(volume.Root()), UnorderedElementsAre("file", "other"));
}

}  // namespace
}  // namespace permora::test
