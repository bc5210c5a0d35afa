#include "platform/linux/shell/trash.h"

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/platform/linux/shell/file_operation_fixture.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/scoped_variable.h"

namespace permora::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::UnorderedElementsAre;

// Restores an item by its info file, as any program does that follows the common rules.
void Restore(const std::string& trash, const std::string& name, const std::string& top) {
    const CommandResult result =
        RunCommand({"python3", "-c",
                    "import sys,os,configparser,urllib.parse as u\n"
                    "t,n,top=sys.argv[1:]\n"
                    "c=configparser.RawConfigParser(); c.read(t+'/info/'+n+'.trashinfo')\n"
                    "p=u.unquote(c['Trash Info']['Path'],errors='surrogateescape')\n"
                    "os.rename(t+'/files/'+n,os.path.join(top,p)); os.remove(t+'/info/'+n+'.trashinfo')",
                    trash, name, top});
    EXPECT_EQ(result.exitCode, 0) << result.output;
}

class TrashOperations : public FileOperations {
  protected:
    void Delete(const std::vector<std::string>& paths) {
        answers[Question::kTrash] = {Answer::kYes};
        EXPECT_EQ(Run(FO_DELETE, paths), 0U);
        EXPECT_FALSE(isAborted);
    }

    const TemporaryFolder data;
    const ScopedVariable dataHome{"XDG_DATA_HOME", data.Path()};
};

TEST_F(TrashOperations, TakeWhatIsDeletedAndTellWhereItWas) {
    const TemporaryFolder folder;
    const std::string odd = "50% \xC3\xA4\xFF.txt";
    // Nothing but what only ever continues a character, and too long for the trash.
    const std::string unreadable(255, '\x80');
    const std::string cut = unreadable.substr(13);
    folder.MakeFolder("d");
    WriteFileText(folder.Path(unreadable), "z");
    WriteFileText(folder.Path(odd), "x");
    WriteFileText(folder.Path("d/" + odd), "y");
    const auto before = Below(folder.Path());
    Delete({folder.Path(odd), folder.Path("d/" + odd), folder.Path("d"), folder.Path(unreadable)});
    EXPECT_EQ(asked.size(), 1U);
    EXPECT_EQ(asked.front().itemCount, 4U);
    EXPECT_THAT(Below(folder.Path()), IsEmpty());
    const std::string trash = data.Path("Trash");
    const std::string second = "50% \xC3\xA4\xFF.2.txt";
    EXPECT_THAT(NamesIn(trash + "/files"), UnorderedElementsAre(odd, second, "d", cut));
    EXPECT_THAT(
        ReadWholeFile(trash + "/info/" + odd + ".trashinfo"),
        MatchesRegex("\\[Trash Info\\]\nPath=" + folder.Path() +
                     "/50%25%20%C3%A4%FF\\.txt\nDeletionDate=[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}\n"));
    struct stat status {};
    ASSERT_EQ(stat(trash.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
    Restore(trash, "d", "/");
    Restore(trash, odd, "/");
    Restore(trash, second, "/");
    Restore(trash, cut, "/");
    EXPECT_EQ(Below(folder.Path()), before);
    EXPECT_THAT(NamesIn(trash + "/info"), IsEmpty());
}

TEST_F(TrashOperations, KeepEachVolumesItemsOnTheVolume) {
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    mkdir(volume.Path("d").c_str(), 0777);
    WriteFileText(volume.Path("d/a"), "x");
    WriteFileText(volume.Path("a"), "y");
    const auto before = Below(volume.Root());
    Delete({volume.Path("a"), volume.Path("d/a"), volume.Path("d")});
    const std::string trash = volume.Path(".Trash-" + std::to_string(getuid()));
    EXPECT_THAT(NamesIn(trash + "/files"), UnorderedElementsAre("a", "a.2", "d"));
    EXPECT_THAT(ReadWholeFile(trash + "/info/a.2.trashinfo"), testing::HasSubstr("\nPath=d/a\n"));
    for (const char* name : {"d", "a", "a.2"})
        Restore(trash, name, volume.Root());
    std::filesystem::remove_all(trash);
    EXPECT_EQ(Below(volume.Root()), before);
    EXPECT_THAT(volume.Audit(), testing::HasSubstr("No errors were found"));
}

// On a volume whose trash another user made, or that has none, the user is asked about everything.
TEST_F(TrashOperations, NeverUseWhatAnotherUserMayHaveLaidOut) {
    if (const std::string reason = CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    const std::string own = ".Trash-" + std::to_string(getuid());
    struct Case {
        const char* name;
        std::function<void(const TemporaryFolder&)> prepare;
    };
    const TemporaryFolder outside;
    const Case cases[] = {
        {"a link", [&](auto& top) { EXPECT_EQ(symlink(outside.Path().c_str(), top.Path(own).c_str()), 0); }},
        {"another's", [&](auto& top) { EXPECT_EQ(chown(top.MakeFolder(own).c_str(), 65534, 65534), 0); }},
        {"a mount inside",
         [&](auto& top) {
             top.MakeFolder("d/m");
             EXPECT_EQ(mount("none", top.Path("d/m").c_str(), "tmpfs", 0, nullptr), 0);
             WriteFileText(top.Path("d/m/kept"), "x");
         }},
        {"read-only",
         [](auto& top) { mount(nullptr, top.Path().c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr); }},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.name);
        const TemporaryFolder top;
        ASSERT_EQ(mount("none", top.Path().c_str(), "tmpfs", 0, nullptr), 0);
        top.MakeFolder("d");
        each.prepare(top);
        answers[Question::kDeleteForGood] = {Answer::kNo};
        Run(FO_DELETE, {top.Path("d")});
        EXPECT_TRUE(isAborted);
        EXPECT_TRUE(std::filesystem::exists(top.Path("d")));
        EXPECT_THAT(Below(outside.Path()), IsEmpty());
        if (std::string(each.name) == "a mount inside") {
            answers = {{Question::kDeleteForGood, {Answer::kYes}}, {Question::kFailure, {Answer::kNo}}};
            EXPECT_EQ(Run(FO_DELETE, {top.Path("d")}), ERROR_NOT_SAME_DEVICE);
            EXPECT_EQ(ReadWholeFile(top.Path("d/m/kept")), "x");
            umount(top.Path("d/m").c_str());
        }
        umount(top.Path().c_str());
    }
}

// A shared folder counts only with its sticky bit.
TEST_F(TrashOperations, UseTheSharedFolderThatTheAdministratorMade) {
    if (const std::string reason = CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    for (const bool isSticky : {false, true}) {
        const TemporaryFolder top;
        ASSERT_EQ(mount("none", top.Path().c_str(), "tmpfs", 0, nullptr), 0);
        WriteFileText(top.Path("a"), "x");
        chmod(top.MakeFolder(".Trash").c_str(), isSticky ? 01777 : 0777);
        Delete({top.Path("a")});
        const std::string user = std::to_string(getuid());
        EXPECT_TRUE(
            std::filesystem::exists(top.Path((isSticky ? ".Trash/" + user : ".Trash-" + user) + "/files/a")));
        umount(top.Path().c_str());
    }
}

}  // namespace
}  // namespace permora::test
