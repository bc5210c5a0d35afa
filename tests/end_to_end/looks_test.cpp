// The windowed program opens every page on a machine whose Samba was never started (looks_test.sh), and
// leaves the machine as it was.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/cli/cli_program.h"
#include "tests/support/folder_states.h"
#include "tests/support/own_mounts.h"
#include "tests/support/project_folders.h"
#include "tests/support/samba_server.h"

namespace permora::test {
namespace {

TEST(Looks, ThroughEveryWindowWriteNothing) {
    if (const std::string reason = SambaServer::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const TemporaryFolder folder;
    ASSERT_EQ(EnterOwnMounts(), "");
    ASSERT_EQ(HaveOwnFolder("/etc", FolderContents::kCopied), "");
    for (const char* place : {"/run", "/root", "/home"})
        ASSERT_EQ(HaveOwnFolder(place, FolderContents::kNone), "");
    const std::string looked = folder.MakeFolder("looked at");
    ASSERT_EQ(InstallSamba(looked), "");
    ASSERT_EQ(mkdir((looked + "/Alpha").c_str(), 0755), 0);
    std::ofstream(looked + "/text.txt") << "text";
    std::filesystem::create_symlink("text.txt", looked + "/link");
    for (const char* name : {"/Alpha", "/text.txt"}) {
        const CommandResult granted = RunCli({"grant", looked + name, "--account", "daemon", "--rights",
                                              "Full control", "--replace-null-list"});
        ASSERT_EQ(granted.exitCode, 0) << granted.output;
    }

    FolderStates machine(
        {"/etc", "/run", "/root", "/home", "/var/lib/samba", "/var/cache/samba", "/var/log/samba", looked},
        {"/run", "/etc/permora", "/root/.config/permora"});
    const CommandResult run = RunCommand({"bash", InProject("tests/end_to_end/looks_test.sh"),
                                          ProgramFolder(), PictureFolder("looks"), "light", looked});
    EXPECT_EQ(run.exitCode, 0) << run.output;
    EXPECT_EQ(machine.Changes(), "");
}

}  // namespace
}  // namespace permora::test
