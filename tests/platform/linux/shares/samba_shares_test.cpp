// The services for shares over a real Samba server, with sharesec, rpcclient and net as judges.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "platform/linux/base/unique_fd.h"
#include "tests/platform/linux/shares/share_calls.h"
#include "tests/support/samba_fixture.h"

namespace permora::test {
namespace {

using host::ToAnsi;
using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr DWORD kNoLimit = SHI_USES_UNLIMITED;
constexpr const char* kAll = "D:(A;;FA;;;WD)";

class SambaSharesTest : public WithSambaServer {
  protected:
    static CommandResult Net(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "net");
        return RunCommand(arguments);
    }
    static void AddRegistryShare(const std::string& name) {
        const CommandResult added =
            Net({"conf", "addshare", "--", name, server->Root(), "writeable=y", "guest_ok=n", "remark"});
        ASSERT_EQ(added.exitCode, 0) << added.output;
    }
    static void AddUserShare(const std::string& name) {
        const CommandResult added = Net({"usershare", "add", "--", name, server->Root(), "a user's",
                                         "S-1-1-0:r,S-1-5-32-546:d", "guest_ok=n"});
        ASSERT_EQ(added.exitCode, 0) << added.output;
    }

    static std::string Served(const std::string& name) {
        return RunCommand({"rpcclient", "127.0.0.1", "-U", "root%secret", "-c",
                           "netsharegetinfo \"" + name + "\" 502"})
            .output;
    }

    // "name|type|remark|path" of each share.
    static std::vector<std::string> Listed(NET_API_STATUS expected = NERR_Success) {
        return TextsOfShares<2, SHARE_INFO_2>(
            [](const SHARE_INFO_2& record) {
                return ToAnsi(record.shi2_netname) + '|' + std::to_string(record.shi2_type) + '|' +
                       ToAnsi(record.shi2_remark) + '|' + ToAnsi(record.shi2_path);
            },
            expected);
    }
    static DWORD Add(const std::string& name, DWORD maxUses, const char* sddl) {
        return AddFolder(name, server->Root(), maxUses, sddl);
    }
    static DWORD AddFolder(const std::string& name, const std::string& folder, DWORD maxUses,
                           const char* sddl) {
        return AddShare(name, "C:" + folder, maxUses, sddl);
    }
    static std::string ShownPath() {
        return "C:" + [] {
            std::string path = server->Root();
            for (char& letter : path)
                if (letter == '/') letter = '\\';
            return path;
        }();
    }
};

TEST_F(SambaSharesTest, SharesOfAllOriginsAreListed) {
    AddRegistryShare("-odd [name]");
    AddRegistryShare("of the registry");
    AddUserShare("of a user");
    EXPECT_THAT(
        Listed(),
        AllOf(Contains("share|0||" + ShownPath()), Contains("-odd [name]|0|remark|" + ShownPath()),
              Contains("of the registry|0|remark|" + ShownPath()),
              Contains("of a user|0|a user's|" + ShownPath()), Contains("IPC$|2147483651|Remote IPC|")));
    EXPECT_EQ(ShareListText("of a user"), "D:(A;;FR;;;WD)(D;;FA;;;BG)");
    EXPECT_EQ(ShareListText("-ODD [name]"), "D:(A;;FA;;;WD)");
}

TEST_F(SambaSharesTest, TheServerHasWhatWasWritten) {
    AddRegistryShare("-dash");
    for (const char* name : {"plain", "-dash"}) {
        EXPECT_EQ(SetShareList(name, "O:BAD:(D;;FA;;;BG)(A;;FA;;;BA)(A;OICI;0x1200a9;;;S-1-5-21-1-2-3-4)"),
                  NERR_Success);
        EXPECT_EQ(ShareListText(name), "O:BAD:(D;;FA;;;BG)(A;;FA;;;BA)(A;OICI;0x1200a9;;;S-1-5-21-1-2-3-4)");
        EXPECT_THAT(Served(name), AllOf(HasSubstr("Num ACEs:\t3"), HasSubstr("0x1f01ff"),
                                        HasSubstr("SID: S-1-5-21-1-2-3-4")));
    }
    // No list and an empty one are opposites.
    EXPECT_EQ(SetShareList("-dash", "O:BAD:"), NERR_Success);
    EXPECT_EQ(ShareListText("-dash"), "O:BAD:");
    EXPECT_EQ(SetShareList("-dash", "O:BAD:NO_ACCESS_CONTROL"), NERR_Success);
    EXPECT_EQ(ShareListText("-dash"), "O:BA");

    const ShareRecord record = GetShare("-DASH");
    record->shi502_max_uses = 4;
    EXPECT_EQ(SetShareRemark(*record, u"new; \"one\""), NERR_Success);
    EXPECT_EQ(Net({"conf", "showshare", "--", "-dash"}).output,
              "[-dash]\n\tpath = " + server->Root() +
                  "\n\tguest ok = no\n\tread only = no\n\tcomment = new; \"one\"\n\tmax connections = 4\n");
    EXPECT_EQ(SetShareRemark(*record, u"a\n[b]"), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(DeleteShare("-dash"), NERR_Success);
    EXPECT_THAT(Net({"conf", "list"}).output, Not(HasSubstr("-dash")));
}

TEST_F(SambaSharesTest, WhatTheFileFixesStays) {
    std::ofstream("/etc/samba/more.conf")
        << "[included]\npath = " << server->Root() << "\n[ipc$]\nhosts allow = 127.0.0.1\n";
    std::ofstream("/etc/samba/smb.conf", std::ios::app) << "include = /etc/samba/more.conf\n";
    const std::string before = ReadWholeFile("/etc/samba/smb.conf");
    const std::string registry = Net({"conf", "list"}).output;
    const ShareRecord record = GetShare("share");
    EXPECT_EQ(SetShareRemark(*record, u"new"), ERROR_FILE_READ_ONLY);
    EXPECT_EQ(DeleteShare("SHARE"), ERROR_FILE_READ_ONLY);
    EXPECT_EQ(DeleteShare("included"), ERROR_FILE_READ_ONLY);
    EXPECT_EQ(DeleteShare("ipc$"), ERROR_NOT_SUPPORTED);
    EXPECT_THAT(Listed(), Contains(StartsWith("IPC$|")));
    EXPECT_EQ(DeleteShare("no such share"), NERR_NetNameNotFound);
    GetShare("no such share", NERR_NetNameNotFound);
    // Nor may the registry take such a share away, which only adds to it.
    ASSERT_EQ(Net({"conf", "setparm", "share", "comment", "added"}).exitCode, 0);
    EXPECT_EQ(DeleteShare("share"), ERROR_FILE_READ_ONLY);
    ASSERT_EQ(Net({"conf", "delshare", "share"}).exitCode, 0);
    ASSERT_EQ(Net({"conf", "setparm", "included", "comment", "added"}).exitCode, 0);
    EXPECT_EQ(DeleteShare("included"), ERROR_FILE_READ_ONLY);
    EXPECT_EQ(ReadWholeFile("/etc/samba/smb.conf"), before);
    EXPECT_EQ(Net({"conf", "list"}).output, registry);
}

TEST_F(SambaSharesTest, AUsersShareStaysTheUsers) {
    AddUserShare("Mine");
    const std::string file = "/var/lib/samba/usershares/mine";
    constexpr uid_t kMaker = 65534;
    ASSERT_EQ(chown(file.c_str(), kMaker, kMaker), 0);
    EXPECT_EQ(SetShareList("mine", "D:(A;;FA;;;BA)(A;;FR;;;WD)"), NERR_Success);
    EXPECT_EQ(ShareListText("mine"), "D:(A;;FA;;;BA)(A;;FR;;;WD)");
    EXPECT_EQ(SetShareRemark(*GetShare("mine"), u"new"), NERR_Success);
    EXPECT_THAT(Net({"usershare", "info", "--long", "mine"}).output,
                HasSubstr("comment=new\nusershare_acl=BUILTIN\\Administrators:F,Everyone:R,\nguest_ok=n\n"));
    struct stat status {};
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, kMaker);
    EXPECT_EQ(SetShareList("mine", "D:(A;OICIIO;FA;;;WD)"), ERROR_NOT_SUPPORTED);
    EXPECT_EQ(SetShareRemark(*GetShare("mine"), std::u16string(10'200, u'x')), ERROR_NOT_SUPPORTED);
    EXPECT_EQ(ShareListText("mine"), "D:(A;;FA;;;BA)(A;;FR;;;WD)");
    EXPECT_EQ(SetShareList("mine", "D:(A;OICI;FR;;;WD)"), NERR_Success);
    EXPECT_EQ(ShareListText("mine"), "D:(A;;FR;;;WD)");

    // The server serves a file with two names; what it says under the other one is not for us to change.
    const std::string other = "/var/lib/samba/other name";
    ASSERT_EQ(link(file.c_str(), other.c_str()), 0);
    EXPECT_THAT(Listed(), Contains(StartsWith("Mine|")));
    EXPECT_EQ(ShareListText("mine"), "D:(A;;FR;;;WD)");
    EXPECT_EQ(SetShareList("mine", "D:(A;;FA;;;BA)"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(ShareListText("mine"), "D:(A;;FR;;;WD)");
    ASSERT_EQ(unlink(other.c_str()), 0);

    // A file whose name looks like another share's text makes no one change that other share.
    std::ofstream("/var/lib/samba/usershares/x]\npath=\n[other") << ReadWholeFile(file);
    EXPECT_EQ(DeleteShare("other"), NERR_NetNameNotFound);
    EXPECT_EQ(DeleteShare("mine"), NERR_Success);
    EXPECT_NE(access(file.c_str(), F_OK), 0);
}

// The server calls a share's file by the name in small letters, of all scripts. Files that are called nearly
// so are other people's.
TEST_F(SambaSharesTest, OfFilesWithNearlyTheSameNameTheServersOneIsTheShare) {
    const std::string folder = "/var/lib/samba/usershares/";
    const std::string own = folder + "äb";
    const std::string foreign = folder + "Äb";
    constexpr uid_t kMaker = 65534;
    constexpr uid_t kOther = 1;
    for (const bool isForeignFirst : {true, false}) {
        if (isForeignFirst) std::ofstream(foreign) << "";
        AddUserShare("ÄB");
        std::string text = ReadWholeFile(own);
        std::ofstream(foreign) << text.replace(text.find("a user's"), 8, "another's");
        ASSERT_EQ(chown(own.c_str(), kMaker, kMaker), 0);
        ASSERT_EQ(chown(foreign.c_str(), kOther, kOther), 0);
        EXPECT_THAT(Listed(), Contains("ÄB|0|a user's|" + ShownPath()));
        EXPECT_EQ(SetShareList("Äb", "D:(A;;FA;;;BA)"), NERR_Success);
        EXPECT_EQ(ShareListText("ÄB"), "D:(A;;FA;;;BA)");
        EXPECT_THAT(ReadWholeFile(own),
                    AllOf(HasSubstr("comment=a user's\nusershare_acl=S-1-5-32-544:f\n"), HasSubstr("=ÄB\n")));
        EXPECT_EQ(ReadWholeFile(foreign), text);
        for (const auto& [path, owner] : {std::pair{own, kMaker}, {foreign, kOther}}) {
            struct stat status {};
            EXPECT_EQ(stat(path.c_str(), &status), 0);
            EXPECT_EQ(status.st_uid, owner) << path;
        }
        EXPECT_EQ(DeleteShare("äB"), NERR_Success);
        EXPECT_NE(access(own.c_str(), F_OK), 0);
        EXPECT_EQ(ReadWholeFile(foreign), text);
        ASSERT_EQ(unlink(foreign.c_str()), 0);
    }
    // A file that the server would never open is not written either.
    AddUserShare("ÄB");
    ASSERT_EQ(rename(own.c_str(), foreign.c_str()), 0);
    const std::string text = ReadWholeFile(foreign);
    EXPECT_EQ(SetShareList("ÄB", "D:(A;;FA;;;BA)"), NERR_NetNameNotFound);
    EXPECT_EQ(ReadWholeFile(foreign), text);
    EXPECT_NE(access(own.c_str(), F_OK), 0);
    ASSERT_EQ(unlink(foreign.c_str()), 0);
}

// What the server would not read either hides nothing; what it may read by and by is not left out of the
// list.
TEST_F(SambaSharesTest, AFileThatCannotBeReadNowIsNotPassedOver) {
    const std::string folder = "/var/lib/samba/usershares/";
    AddUserShare("leased");
    ASSERT_EQ(symlink("leased", (folder + "link").c_str()), 0);
    ASSERT_EQ(mkdir((folder + "folder").c_str(), 0755), 0);
    ASSERT_EQ(mknod((folder + "pipe").c_str(), S_IFIFO | 0644, 0), 0);
    ASSERT_EQ(mknod((folder + "socket").c_str(), S_IFSOCK | 0644, 0), 0);
    EXPECT_THAT(Listed(), Contains(StartsWith("leased|")));
    {
        const host::UniqueFd file(open((folder + "leased").c_str(), O_RDONLY | O_CLOEXEC));
        const auto before = std::signal(SIGIO, SIG_IGN);  // by which its maker hears that he is to let go
        ASSERT_EQ(fcntl(file.Get(), F_SETLEASE, F_WRLCK), 0);
        Listed(ERROR_BUSY);
        fcntl(file.Get(), F_SETLEASE, F_UNLCK);
        std::signal(SIGIO, before);
    }
    EXPECT_THAT(Listed(), Contains(StartsWith("leased|")));
    for (const char* name : {"leased", "link", "folder", "pipe", "socket"})
        EXPECT_EQ(std::remove((folder + name).c_str()), 0) << name;
}

TEST_F(SambaSharesTest, OneShareWithoutFolderHidesNoOthersAndIsNotReplaced) {
    const std::string configuration = ReadWholeFile("/etc/samba/smb.conf");
    const std::string folder = server->Root() + "/gone";
    // The server bears this; its tools' own judgement does not.
    std::ofstream("/etc/samba/smb.conf")
        << configuration << "[global]\nregistry shares = no\nwins support = yes\nwins server = 127.0.0.1\n";
    AddUserShare("of the host");
    // Which of them the tool comes upon last is chance.
    for (const std::string name : {"first", "second"}) {
        ASSERT_EQ(mkdir(folder.c_str(), 0755), 0);
        for (const std::string made : {"first", "second"})
            ASSERT_EQ(AddFolder(made, made == name ? folder : server->Root(), kNoLimit, kAll), NERR_Success);
        ASSERT_EQ(rmdir(folder.c_str()), 0);
        const std::string file = "/var/lib/samba/usershares/" + name;
        const std::string before = ReadWholeFile(file);
        EXPECT_THAT(Listed(), AllOf(Contains(StartsWith("of the host|")),
                                    Contains(StartsWith(name == "first" ? "second|" : "first|")),
                                    Not(Contains(StartsWith(name)))));
        EXPECT_EQ(Add(name, kNoLimit, kAll), NERR_DuplicateShare);
        EXPECT_EQ(ReadWholeFile(file), before);
        for (const char* made : {"first", "second"})
            ASSERT_EQ(Net({"usershare", "delete", made}).exitCode, 0);
    }
    EXPECT_EQ(Add("Daemon", kNoLimit, kAll), ERROR_INVALID_NAME);
    std::ofstream("/etc/samba/smb.conf", std::ios::app) << "usershare max shares = 0\n";
    EXPECT_EQ(Add("late", kNoLimit, kAll), ERROR_FILE_READ_ONLY);
    std::ofstream("/etc/samba/smb.conf") << configuration;
}

TEST_F(SambaSharesTest, NewSharesGoIntoTheRegistry) {
    EXPECT_EQ(Add("made", 3, "D:(A;;0x1200a9;;;WD)"), NERR_Success);
    EXPECT_THAT(Served("MADE"), AllOf(HasSubstr("remark:\tmade here\n"), HasSubstr("0x1200a9")));
    EXPECT_EQ(GetShare("made")->shi502_max_uses, 3U);
    EXPECT_EQ(Add("Made", 3, "D:(A;;FA;;;WD)"), NERR_DuplicateShare);
    EXPECT_EQ(Add("plain", 3, "D:(A;;FA;;;WD)"), NERR_DuplicateShare);
    for (const char* name : {"global", "Homes", "100%"})
        EXPECT_EQ(Add(name, 3, "D:(A;;FA;;;WD)"), ERROR_INVALID_NAME) << name;
    EXPECT_EQ(Add("many", DWORD{1} << 31, "D:(A;;FA;;;WD)"), NERR_InvalidMaxUsers);
    // A share whose list cannot be kept is not left open to everyone.
    EXPECT_NE(Add("half", 3, "D:(A;;FA;;;BA)S:(ML;;NW;;;LW)"), NERR_Success);
    GetShare("half", NERR_NetNameNotFound);
    EXPECT_EQ(DeleteShare("made"), NERR_Success);
}

}  // namespace
}  // namespace permora::test
