// Files on a local volume and on an NTFS one, worked as a user works them (files_test.sh); the volume's own
// tools judge what then stands there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/support/command.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/own_mounts.h"
#include "tests/support/project_folders.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

TEST(Files, GoBetweenFoldersAndVolumes) {
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    ASSERT_EQ(EnterOwnMounts(), "");
    const TemporaryFolder local;
    NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    const CommandResult run =
        RunCommand({"bash", InProject("tests/end_to_end/files_test.sh"), ProgramFolder(),
                    PictureFolder("files"), local.Path(), volume.Root()});
    ASSERT_EQ(run.exitCode, 0) << run.output;
    EXPECT_THAT(volume.Audit(), testing::HasSubstr("No errors were found"));
}

}  // namespace
}  // namespace permora::test
