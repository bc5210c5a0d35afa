// The security wizard on several items of a real volume, worked as a user works it (wizard_test.sh); what
// then stands there is judged by the volume's own tool and by the terminal program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/own_mounts.h"
#include "tests/support/project_folders.h"

namespace permora::test {
namespace {

void MakeItems(const std::string& root) {
    for (const char* name : {"team", "team/Alpha", "team/Alpha/Inner", "team/Beta", "team/Old"})
        std::filesystem::create_directory(root + "/" + name);
    for (const char* name : {"team/letter", "team/Old/draft", "team/Old/kept"})
        ASSERT_EQ(RunCommand({"sh", "-c", "echo text >'" + root + "/" + name + "'"}).exitCode, 0) << name;
    ASSERT_EQ(SetDescriptorText(root + "/team", "D:P(D;OICI;SD;;;BG)(A;OICI;FA;;;BA)"), 0U);
    ASSERT_EQ(SetDescriptorText(root + "/team/Alpha", "D:(A;OICI;FR;;;BU)"), 0U);
    ASSERT_EQ(SetDescriptorText(root + "/team/Alpha/Inner", "D:"), 0U);
    ASSERT_EQ(SetDescriptorText(root + "/team/Beta", "D:P(A;;FA;;;WD)"), 0U);
    ASSERT_EQ(SetDescriptorText(root + "/team/letter", "D:(D;;FR;;;BG)"), 0U);
    // Read-only, as Windows has it.
    ASSERT_EQ(
        RunCommand({"setfattr", "-n", "system.ntfs_attrib_be", "-v", "0x00000001", root + "/team/Old/kept"})
            .exitCode,
        0);
}

TEST(Wizard, OnAnNtfsVolume) {
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    ASSERT_EQ(EnterOwnMounts(), "");
    NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    ASSERT_NO_FATAL_FAILURE(MakeItems(volume.Root()));
    const CommandResult run =
        RunCommand({"bash", InProject("tests/end_to_end/wizard_test.sh"), ProgramFolder(),
                    PictureFolder("wizard-ntfs"), volume.Path("team")});
    ASSERT_EQ(run.exitCode, 0) << run.output;

    EXPECT_FALSE(std::filesystem::exists(volume.Path("team/Old/draft")));
    EXPECT_EQ(ReadWholeFile(volume.Path("team/Old/kept")), "text\n");
    EXPECT_EQ(EntriesOf(volume.Path("team/Beta")),
              "Allow S-1-5-32-546 0x301bf 3\n"
              "Allow S-1-1-0 0x20089 3\n"
              "Allow S-1-5-11 0x200a9 3\n"
              "Allow S-1-5-18 0xf01ff 3\n"  // SYNCHRONIZE is not shown
              "Allow S-1-5-32-551 0x200a9 3\n");
    const auto own = [](const std::string& flags) {
        std::string entries;
        for (const char* entry : {"0x1301bf S-1-5-20-222", "0x120089 S-1-1-0", "0x1200a9 S-1-5-b",
                                  "0x1f01ff S-1-5-12", "0x1200a9 S-1-5-20-227"})
            entries += "0 " + flags + ' ' + entry + '\n';
        return entries;
    };
    EXPECT_EQ(volume.AuditedEntries("/team/Alpha"),
              own("0x3") + "1 0x13 0x10000 S-1-5-20-222\n" + "0 0x13 0x1f01ff S-1-5-20-220\n");
    EXPECT_EQ(volume.AuditedEntries("/team/Beta"), own("0x3"));
    EXPECT_EQ(volume.AuditedEntries("/team/letter"),
              own("0x0") + "1 0x10 0x10000 S-1-5-20-222\n" + "0 0x10 0x1f01ff S-1-5-20-220\n");
    EXPECT_THAT(volume.AuditedEntries("/team/Alpha/Inner"),
                ::testing::StartsWith("0 0x13 0x1301bf S-1-5-20-222\n"));
    EXPECT_THAT(volume.Audit(), ::testing::HasSubstr("No errors were found"));
}

}  // namespace
}  // namespace permora::test
