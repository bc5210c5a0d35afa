// Commands that only look leave the machine as it was, Samba's databases above all: where they are missing,
// its tools would make them, and with them a new identity of the machine.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

#include "tests/cli/cli_program.h"
#include "tests/support/folder_states.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/own_mounts.h"
#include "tests/support/samba_server.h"

namespace permora::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

// A machine of this process's own, with a Samba that was never started. One for the program.
class LooksTest : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        if (!SambaServer::SkipReason().empty()) return;
        folder = std::make_unique<TemporaryFolder>();
        problem = EnterOwnMounts();
        if (problem.empty()) problem = HaveOwnFolder("/etc", FolderContents::kCopied);
        for (const char* place : {"/run", "/root", "/home", "/dev/shm"})
            if (problem.empty()) problem = HaveOwnFolder(place, FolderContents::kNone);
        if (problem.empty()) problem = InstallSamba(folder->MakeFolder("shared"));
        setenv("HOME", "/root", 1);
        unsetenv("XDG_CONFIG_HOME");
    }
    static void TearDownTestSuite() { folder.reset(); }

    void SetUp() override {
        if (!folder) GTEST_SKIP() << SambaServer::SkipReason();
        ASSERT_EQ(problem, "");
    }

    // Everything on the machine that something could be written to, but for our own settings.
    static FolderStates Machine(const std::string& looked) {
        return {{"/etc", "/run", "/root", "/home", "/var/lib/samba", "/var/cache/samba", "/var/log/samba",
                 looked},
                {"/run", "/etc/permora", "/root/.config/permora"}};
    }

    // All commands that change nothing, on the folder `inner` and the file `file` in a folder.
    static std::vector<std::vector<std::string>> Looks(const std::string& place, const std::string& share) {
        const std::string inner = place + "/inner";
        const std::string file = place + "/file";
        return {
            {"show", inner, file},
            {"show", "--json", file},
            {"show", "--sddl", inner},
            {"show", "--share", share},
            {"show", "--sddl", "--share", share},
            {"grant", inner, "--account", "daemon", "--rights", "Full control", "--dry-run"},
            {"deny", file, "--account", "daemon", "--rights", "Full control", "--dry-run"},
            {"deny", "--share", share, "--account", "daemon", "--rights", "Full control", "--dry-run"},
            {"revoke", file, "--account", "Everyone", "--dry-run"},
            {"inherit", inner, "--on", "--dry-run"},
            {"assign", inner, "--account", "daemon", "--combination", "Modify", "--dry-run"},
            {"reset", place, "--dry-run", "--verbose", "--empty-lists"},
            {"owner", inner, file},
            {"effective", inner, "--account", "daemon"},
            {"accounts"},
            {"accounts", "--find", "admin"},
            {"shares"},
            {"shares", "--json"},
            {"shares", "show", share},
            {"--version"},
        };
    }

    static void ExpectNothingWritten(const std::string& place, const std::string& share) {
        // That of earlier changes: a look does not make it either.
        std::filesystem::remove("/run/permora.lock");
        FolderStates machine = Machine(place);
        for (const std::vector<std::string>& look : Looks(place, share)) {
            const CommandResult result = RunCli(look);
            EXPECT_EQ(result.exitCode, 0) << testing::PrintToString(look) << result.output;
            EXPECT_EQ(machine.Changes(), "") << testing::PrintToString(look);
        }
    }

    // A folder and a file with lists of their own.
    static void FillFolder(const std::string& place) {
        ASSERT_EQ(RunCommand({"mkdir", place + "/inner"}).exitCode, 0);
        std::ofstream(place + "/file") << "text";
        for (const char* name : {"/inner", "/file"}) {
            const CommandResult granted = RunCli({"grant", place + name, "--account", "daemon", "--rights",
                                                  "Full control", "--replace-null-list"});
            ASSERT_EQ(granted.exitCode, 0) << granted.output;
        }
    }

    // There the configuration's own places are not found out.
    static void ExpectNoIdentityMadeUpWhereNothingCanBeMade() {
        const char* const places[] = {"/run", "/dev/shm", "/tmp"};
        for (const char* place : places) {
            ASSERT_EQ(mount(place, place, nullptr, MS_BIND, nullptr), 0) << place;
            ASSERT_EQ(mount(nullptr, place, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr), 0) << place;
        }
        const CommandResult accounts = RunCli({"accounts"});
        EXPECT_THAT(accounts.output, AllOf(HasSubstr("Unix User\\daemon"), Not(HasSubstr("S-1-5-21-"))));
        for (const char* place : places)
            EXPECT_EQ(umount2(place, MNT_DETACH), 0) << place;
    }

    // Files that a command makes for itself are removed with it.
    void TearDown() override {
        EXPECT_EQ(RunCommand({"find", "/run", "/dev/shm", "-name", "permora-*"}).output, "");
    }

    static inline std::unique_ptr<TemporaryFolder> folder;
    static inline std::string problem;
};

TEST_F(LooksTest, WriteNothing) {
    const std::string place = folder->MakeFolder("looked at");
    ASSERT_NO_FATAL_FAILURE(FillFolder(place));
    ExpectNothingWritten(place, "share");
    EXPECT_THAT(RunCli({"show", place + "/file"}).output, HasSubstr("daemon"));
}

TEST_F(LooksTest, WriteNothingOnNtfs) {
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    ASSERT_NO_FATAL_FAILURE(FillFolder(volume.Root()));
    ExpectNothingWritten(volume.Root(), "share");
}

// The list of a share is kept without an identity of the machine, by which its accounts would be strangers.
TEST_F(LooksTest, AChangeOfAListMakesNoNewIdentity) {
    const std::string place = folder->MakeFolder("changed");
    ASSERT_NO_FATAL_FAILURE(FillFolder(place));
    ASSERT_EQ(
        RunCli({"grant", "--share", "share", "--account", "daemon", "--rights", "Read permissions"}).exitCode,
        0);
    EXPECT_EQ(RunCommand({"find", "/var/lib/samba/private", "-mindepth", "1"}).output, "");
    EXPECT_THAT(RunCli({"show", "--share", "share"}).output, HasSubstr("daemon"));
    EXPECT_THAT(RunCli({"show", place + "/file"}).output, HasSubstr("daemon"));
}

// The contents of the databases are found as before, wherever the configuration puts them.
TEST_F(LooksTest, SeeDatabasesInOtherPlaces) {
    const std::string place = folder->MakeFolder("moved");
    const std::string elsewhere = folder->MakeFolder("samba");
    for (const char* name : {"/state", "/private"})
        ASSERT_EQ(RunCommand({"mkdir", "-m", "700", elsewhere + name}).exitCode, 0);
    const std::string before = ReadWholeFile("/etc/samba/smb.conf");
    std::ofstream("/etc/samba/more.conf") << "include = registry\n";
    std::ofstream("/etc/samba/smb.conf")
        << "[global]\nstate directory = " << elsewhere << "/state\nprivate dir = " << elsewhere
        << "/private\npassdb backend = tdbsam:" << elsewhere
        << "/users.tdb\nInclude = \\\n  Registry\ninclude = /etc/samba/more.conf\n"
        << before;
    FolderStates unused = Machine(elsewhere);
    EXPECT_EQ(RunCli({"show", "--share", "share"}).exitCode, 0);
    EXPECT_EQ(unused.Changes(), "");

    ASSERT_EQ(RunCommand({"smbpasswd", "-a", "-s", "daemon"}, "secret\nsecret\n").exitCode, 0);
    ASSERT_EQ(RunCommand({"net", "conf", "addshare", "kept", place}).exitCode, 0);
    ASSERT_EQ(RunCommand({"sharesec", "kept", "--setsddl=D:(A;;0x001200a9;;;BG)"}).exitCode, 0);
    FolderStates used = Machine(elsewhere);
    EXPECT_THAT(RunCli({"shares", "show", "kept"}).output,
                AllOf(HasSubstr("Guests"), Not(HasSubstr("Everyone"))));
    EXPECT_THAT(RunCli({"accounts"}).output, HasSubstr("PERMORATEST\\daemon"));
    EXPECT_EQ(used.Changes(), "");
    ExpectNoIdentityMadeUpWhereNothingCanBeMade();
    std::ofstream("/etc/samba/smb.conf") << before;
}

}  // namespace
}  // namespace permora::test
