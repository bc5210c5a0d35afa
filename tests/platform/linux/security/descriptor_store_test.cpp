// Where descriptors are kept, and what happens where they cannot be: as root, as an ordinary user, on volumes
// that are read-only or have no room for them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <string>

#include "platform/api/errors.h"
#include "tests/support/access_lists.h"
#include "tests/support/command.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::HasSubstr;
using testing::Optional;

constexpr const char* kList = "O:BAG:BUD:P(A;;FA;;;BA)(A;;FR;;;WD)";

std::string Error(DWORD code) {
    return "error " + std::to_string(code);
}

class DescriptorStorage : public testing::Test {
  protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "acting as root and as another user needs root";
        // So that the other user reaches it, and owns what it is to change.
        ASSERT_EQ(chmod(folder.Path().c_str(), 0777), 0);
        ASSERT_EQ(chmod(file.c_str(), 0640), 0);
        ASSERT_EQ(chown(file.c_str(), 65534, 65534), 0);
    }

    void PutAttribute(const char* name, const std::string& value) const {
        ASSERT_EQ(lsetxattr(file.c_str(), name, value.data(), value.size(), 0), 0);
    }
    bool HasAttribute(const char* name) const { return lgetxattr(file.c_str(), name, nullptr, 0) >= 0; }

    const TemporaryFolder folder;
    const std::string file = folder.MakeFile("file");
};

TEST_F(DescriptorStorage, NothingIsStoredUntilSomethingIsSet) {
    EXPECT_THAT(DaclText(file), HasSubstr("D:AI(A;;"));
    EXPECT_FALSE(HasAttribute("security.NTACL"));
    ASSERT_EQ(SetDescriptorText(file, kList), ERROR_SUCCESS);
    EXPECT_TRUE(HasAttribute("security.NTACL"));
    // From now on the mode says nothing any more.
    ASSERT_EQ(chmod(file.c_str(), 0777), 0);
    EXPECT_EQ(DaclText(file), "D:PAI(A;;FA;;;BA)(A;;FR;;;WD)");
}

TEST_F(DescriptorStorage, ModeIsKeptAsOwnEntriesWhereSomethingIsInherited) {
    ASSERT_EQ(SetDescriptorText(folder.Path(), "D:P(A;;FA;;;BA)"), ERROR_SUCCESS);
    EXPECT_FALSE(HasAttribute("security.NTACL")) << "nothing to inherit, nothing to store";
    const std::string fromMode = DaclText(file);
    ASSERT_EQ(SetDescriptorText(folder.Path(), "D:P(A;OI;FA;;;BA)"), ERROR_SUCCESS);
    EXPECT_EQ(DaclText(file), fromMode + "(A;ID;FA;;;BA)");
}

TEST_F(DescriptorStorage, DamagedDescriptorIsAnErrorAndIsNeverOverwritten) {
    const std::string garbage("\1\0\1\0garbage", 11);
    PutAttribute("security.NTACL", garbage);
    EXPECT_EQ(DaclText(file), Error(ERROR_INVALID_SECURITY_DESCR));
    EXPECT_EQ(SetDescriptorText(file, "D:P(A;;FA;;;BA)"), ERROR_INVALID_SECURITY_DESCR);
    EXPECT_EQ(SetDescriptorText(folder.Path(), "D:P(A;OICI;FA;;;BA)"), ERROR_INVALID_SECURITY_DESCR);
    char stored[64] = {};
    ASSERT_EQ(lgetxattr(file.c_str(), "security.NTACL", stored, sizeof stored), ssize_t{11});
    EXPECT_EQ(std::string(stored, 11), garbage);
    EXPECT_EQ(DaclText(folder.Path()), "D:PAI(A;OICI;FA;;;BA)");
}

TEST_F(DescriptorStorage, OrdinaryUsersKeepTheirOwnAndRootDoesNotSeeIt) {
    const auto asUser = AsOrdinaryUser([&] {
        const DWORD error = SetDescriptorText(file, "D:P(A;;FR;;;WD)");
        return error == ERROR_SUCCESS ? DaclText(file) : Error(error);
    });
    EXPECT_THAT(asUser, Optional(std::string("D:PAI(A;;FR;;;WD)")));
    EXPECT_TRUE(HasAttribute("user.permora.sd"));
    EXPECT_EQ(DaclText(file).find("D:PAI"), std::string::npos);
}

TEST_F(DescriptorStorage, OrdinaryUsersSeeWhatRootStoredAndCannotHideIt) {
    ASSERT_EQ(SetDescriptorText(file, kList), ERROR_SUCCESS);
    const auto asUser = AsOrdinaryUser(
        [&] { return DaclText(file) + " " + std::to_string(SetDescriptorText(file, "D:P(A;;FA;;;WD)")); });
    EXPECT_THAT(asUser, Optional("D:PAI(A;;FA;;;BA)(A;;FR;;;WD) " + std::to_string(ERROR_ACCESS_DENIED)));
    EXPECT_FALSE(HasAttribute("user.permora.sd"));
}

TEST_F(DescriptorStorage, LinksOfOrdinaryUsersCannotHoldAListAndAreNoObstacle) {
    const auto asUser = AsOrdinaryUser([&] {
        const std::string own = folder.MakeFolder("own");
        if (symlink(file.c_str(), (own + "/link").c_str()) != 0) return std::string("no link");
        return std::to_string(SetDescriptorText(own + "/link", "D:P(A;;FA;;;WD)")) + " " +
               std::to_string(SetDescriptorText(own, "D:P(A;OICI;FA;;;WD)"));
    });
    EXPECT_THAT(asUser, Optional(std::to_string(ERROR_NOT_SUPPORTED) + " 0"));
}

TEST_F(DescriptorStorage, VolumeWithoutAttributesShowsTheModeAndRefusesChanges) {
    if (const std::string reason = CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    const std::string mounted = folder.MakeFolder("mounted");
    ASSERT_EQ(mount("none", mounted.c_str(), "ramfs", 0, nullptr), 0);
    const std::string list = DaclText(mounted);
    const DWORD error = SetDescriptorText(mounted, "D:P(A;;FA;;;BA)");
    const DWORD errorAbove = SetDescriptorText(folder.Path(), "D:P(A;OICI;FA;;;BA)");
    ASSERT_EQ(umount2(mounted.c_str(), MNT_DETACH), 0);
    EXPECT_THAT(list, HasSubstr("D:AI(A;;FA;;;"));
    EXPECT_EQ(error, ERROR_NOT_SUPPORTED);
    EXPECT_EQ(errorAbove, ERROR_SUCCESS) << "another volume inherits nothing";
}

TEST_F(DescriptorStorage, ReadOnlyNtfsVolumeShowsItsListsAndSaysThatItIsWriteProtected) {
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    ASSERT_EQ(mkdir(volume.Path("folder").c_str(), 0755), 0);
    ASSERT_EQ(SetDescriptorText(volume.Path("folder"), kList), ERROR_SUCCESS);
    volume.Unmount();
    volume.Mount(NtfsMount::kReadOnly);
    ASSERT_EQ(volume.Problem(), "");
    EXPECT_EQ(DaclText(volume.Path("folder")), "D:PAI(A;;FA;;;BA)(A;;FR;;;WD)");
    EXPECT_EQ(SetDescriptorText(volume.Path("folder"), "D:P"), ERROR_WRITE_PROTECT);
}

}  // namespace
}  // namespace permora::test
