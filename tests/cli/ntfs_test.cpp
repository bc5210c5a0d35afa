// The commands on a real NTFS volume. ntfssecaudit judges the result on the disk.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/ntfs_volume.h"

namespace permora::test {
namespace {

using testing::HasSubstr;

TEST(NtfsTest, WhatTheCommandsWriteStandsOnTheDisk) {
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    for (const char* name : {"team", "team/sub"})
        std::filesystem::create_directory(volume.Path(name));
    for (const char* name : {"team/file", "team/sub/deep"})
        EXPECT_EQ(RunCommand({"touch", volume.Path(name)}).exitCode, 0);
    // ntfs-3g gives a new object a list that is not inherited. From here on, everything below "team"
    // inherits.
    ASSERT_EQ(SetDescriptorText(volume.Path("team"), "D:P(A;OICI;FA;;;BA)"), 0U);
    for (const char* name : {"team/file", "team/sub", "team/sub/deep"})
        ASSERT_EQ(SetDescriptorText(volume.Path(name), "D:"), 0U) << name;

    const std::string team = volume.Path("team");
    const std::string sub = volume.Path("team/sub");
    EXPECT_EQ(RunCli({"grant", team, "--account", "Users", "--rights", "Read attributes,Read permissions"})
                  .exitCode,
              0);
    EXPECT_EQ(RunCli({"deny", team, "--account", "Everyone", "--rights", "Delete", "--scope", "Files only"})
                  .exitCode,
              0);
    EXPECT_EQ(RunCli({"inherit", sub, "--copy"}).exitCode, 0);
    EXPECT_EQ(RunCli({"revoke", sub, "--account", "Users"}).exitCode, 0);
    EXPECT_EQ(RunCli({"grant", team, "--account", "Users", "--rights", "Take ownership"}).exitCode, 0);

    EXPECT_THAT(
        RunCli({"show", team}).output,
        HasSubstr("  Kept: in the volume; Windows obeys it, ntfs-3g only when mounted with permissions"));

    // The root's own list is padded, and "team" is protected from its inheritance.
    EXPECT_EQ(RunCli({"grant", volume.Root(), "--account", "Guests", "--rights", "Delete"}).exitCode, 0);
    EXPECT_THAT(volume.AuditedEntries("/"), HasSubstr("0 0x3 0x110000 S-1-5-20-222\n"));
    EXPECT_EQ(volume.AuditedEntries("/team"),
              "1 0x9 0x10000 S-1-1-0\n"
              "0 0x3 0x1a0080 S-1-5-20-221\n"
              "0 0x3 0x1f01ff S-1-5-20-220\n");
    EXPECT_EQ(volume.AuditedEntries("/team/file"),
              "1 0x10 0x10000 S-1-1-0\n"
              "0 0x10 0x1a0080 S-1-5-20-221\n"
              "0 0x10 0x1f01ff S-1-5-20-220\n");
    EXPECT_EQ(volume.AuditedEntries("/team/sub"),
              "1 0x9 0x10000 S-1-1-0\n"
              "0 0x3 0x1f01ff S-1-5-20-220\n");
    EXPECT_EQ(volume.AuditedEntries("/team/sub/deep"),
              "1 0x10 0x10000 S-1-1-0\n"
              "0 0x10 0x1f01ff S-1-5-20-220\n");
    EXPECT_THAT(volume.Audit(), HasSubstr("No errors were found"));
}

}  // namespace
}  // namespace permora::test
