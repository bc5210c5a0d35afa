// The security editor from a selection to applied permissions, worked as a user works it (editor_test.sh) on
// a real volume and on what a real server shares; their own tools judge what then stands there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/own_mounts.h"
#include "tests/support/project_folders.h"
#include "tests/support/samba_server.h"

namespace permora::test {
namespace {

using testing::HasSubstr;

// The folder that is shown, with lists of its own below for the apply to replace.
void MakeTeam(const std::string& root) {
    for (const char* folder : {"team", "team/Alpha", "team/Alpha/Inner", "team/Beta"})
        std::filesystem::create_directory(root + "/" + folder);
    for (const char* file : {"team/Alpha/Inner/plan", "team/Beta/draft", "team/letter"})
        ASSERT_EQ(RunCommand({"touch", root + "/" + file}).exitCode, 0) << file;
    ASSERT_EQ(SetDescriptorText(root + "/team", "D:P(A;OICI;FA;;;BA)"), 0U);
    ASSERT_EQ(SetDescriptorText(root + "/team/Alpha", "D:"), 0U);
    ASSERT_EQ(SetDescriptorText(root + "/team/Beta", "D:P(A;OICI;FR;;;BU)"), 0U);
    for (const char* below : {"Alpha/Inner", "Alpha/Inner/plan", "Beta/draft"})
        ASSERT_EQ(SetDescriptorText(root + "/team/" + below, "D:P(D;;WD;;;WD)"), 0U) << below;
    ASSERT_EQ(SetDescriptorText(root + "/team/letter", "D:P(A;;FR;;;BU)"), 0U);
}

void WorkTheEditor(const std::string& root, const std::string& pictures, const std::string& hands) {
    const CommandResult run = RunCommand({"bash", InProject("tests/end_to_end/editor_test.sh"),
                                          ProgramFolder(), PictureFolder(pictures), root + "/team", hands});
    ASSERT_EQ(run.exitCode, 0) << run.output;
}

TEST(Editor, OnAnNtfsVolumeByKeyboard) {
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    ASSERT_EQ(EnterOwnMounts(), "");
    NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    ASSERT_NO_FATAL_FAILURE(MakeTeam(volume.Root()));
    ASSERT_NO_FATAL_FAILURE(WorkTheEditor(volume.Root(), "editor-ntfs", "keyboard"));

    for (const char* folder : {"team/Alpha", "team/Beta"}) {
        EXPECT_EQ(EntriesOf(volume.Path(folder)),
                  "Allow S-1-5-32-546 0x20000 13\n"
                  "Allow S-1-5-32-545 0xe01ff 3\n"
                  "Allow S-1-5-32-544 0xf01ff 3\n");
    }
    for (const char* folder : {"/team/Alpha", "/team/Beta"}) {
        EXPECT_EQ(volume.AuditedEntries(folder),
                  "0 0xd 0x120000 S-1-5-20-222\n"
                  "0 0x3 0x1e01ff S-1-5-20-221\n"
                  "0 0x3 0x1f01ff S-1-5-20-220\n");
    }
    const char* const inherited =
        "0 0x13 0x1e01ff S-1-5-20-221\n"
        "0 0x13 0x1f01ff S-1-5-20-220\n";
    EXPECT_EQ(volume.AuditedEntries("/team/Alpha/Inner"), inherited);
    EXPECT_EQ(volume.AuditedEntries("/team/Alpha/Inner/plan"),
              "0 0x10 0x1e01ff S-1-5-20-221\n"
              "0 0x10 0x1f01ff S-1-5-20-220\n");
    EXPECT_EQ(volume.AuditedEntries("/team/Beta/draft"),
              "0 0x10 0x120000 S-1-5-20-222\n"
              "0 0x10 0x1e01ff S-1-5-20-221\n"
              "0 0x10 0x1f01ff S-1-5-20-220\n");
    EXPECT_EQ(volume.AuditedEntries("/team/letter"), "0 0x0 0x120089 S-1-5-20-221\n") << "not selected";
    EXPECT_THAT(volume.Audit(), HasSubstr("No errors were found"));
}

TEST(Editor, OnASambaShareByMouse) {
    if (const std::string reason = SambaServer::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const SambaServer server;
    ASSERT_EQ(server.Problem(), "");
    ASSERT_NO_FATAL_FAILURE(MakeTeam(server.Root()));
    ASSERT_NO_FATAL_FAILURE(WorkTheEditor(server.Root(), "editor-samba", "mouse"));
    for (const char* folder : {"team/Alpha", "team/Beta"}) {
        EXPECT_EQ(server.ServedEntries(folder),
                  "S-1-5-32-546:0/0xd/0x00120000\n"
                  "S-1-1-0:0/0x3/0x001e01ff\n"
                  "S-1-5-32-544:0/0x3/0x001f01ff\n");
    }
    EXPECT_EQ(server.ServedEntries("team/Alpha/Inner"),
              "S-1-1-0:0/0x13/0x001e01ff\n"
              "S-1-5-32-544:0/0x13/0x001f01ff\n");
    EXPECT_EQ(server.ServedEntries("team/Beta/draft"),
              "S-1-5-32-546:0/0x10/0x00120000\n"
              "S-1-1-0:0/0x10/0x001e01ff\n"
              "S-1-5-32-544:0/0x10/0x001f01ff\n");
    EXPECT_EQ(server.ServedEntries("team/letter"), "S-1-5-32-545:0/0x0/0x00120089\n") << "not selected";
}

}  // namespace
}  // namespace permora::test
