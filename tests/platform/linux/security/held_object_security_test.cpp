// Reading and setting access lists of real objects, on every kind of volume that keeps them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/linux/security/samba_attribute.h"
#include "platform/nt/sddl.h"
#include "platform/resources.h"
#include "tests/support/access_lists.h"
#include "tests/support/command.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/temporary_folder.h"

namespace {

// The call of setxattr that fails, counted from now; 0: none does.
int failingWrite = 0;

bool isReadingRefused = false;

}  // namespace

extern "C" {
int __real_setxattr(const char* path, const char* name, const void* value, size_t size, int flags);
int __wrap_setxattr(const char* path, const char* name, const void* value, size_t size, int flags) {
    if (failingWrite > 0 && --failingWrite == 0) {
        errno = EIO;
        return -1;
    }
    return __real_setxattr(path, name, value, size, flags);
}

int __real_fsetxattr(int file, const char* name, const void* value, size_t size, int flags);
int __wrap_fsetxattr(int file, const char* name, const void* value, size_t size, int flags) {
    if (failingWrite > 0 && --failingWrite == 0) {
        errno = EIO;
        return -1;
    }
    return __real_fsetxattr(file, name, value, size, flags);
}

ssize_t __real_getxattr(const char* path, const char* name, void* value, size_t size);
ssize_t __wrap_getxattr(const char* path, const char* name, void* value, size_t size) {
    if (!isReadingRefused || size == 0) return __real_getxattr(path, name, value, size);
    errno = EIO;
    return -1;
}
}  // extern "C"

namespace permora::test {
namespace {

enum class Place { kLocalDisk, kNtfs };

std::string PlaceName(const testing::TestParamInfo<Place>& place) {
    return place.param == Place::kNtfs ? "Ntfs" : "LocalDisk";
}

// A folder "top" that inherits nothing, with a file and a folder with a file and further folders, all of
// which inherit from it. Everything is asked of and told to the system's services.
class HeldObjectSecurity : public testing::TestWithParam<Place> {
  protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "writing system attributes needs root";
        if (GetParam() == Place::kNtfs) {
            if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
            volume = std::make_unique<NtfsVolume>();
            ASSERT_EQ(volume->Problem(), "");
        }
        ASSERT_EQ(mkdir(Path("top").c_str(), 0755), 0);
        ASSERT_EQ(SetDescriptorText(Path("top"), "O:BAG:BUD:P(A;OICI;FA;;;BA)"), ERROR_SUCCESS);
        Make("top/folder/", "O:BAG:BUD:");
        Make("top/folder/file", "O:BAG:BUD:");
        Make("top/folder/sub/", "O:BAG:BUD:");
        Make("top/folder/sub/deep/", "O:BAG:BUD:");
        Make("top/file", "O:BAG:BUD:");
    }

    std::string Path(const std::string& name) const { return volume ? volume->Path(name) : local.Path(name); }

    void Make(const std::string& name, const std::string& sddl) const {
        const bool isFolder = name.back() == '/';
        const std::string path = Path(isFolder ? name.substr(0, name.size() - 1) : name);
        ASSERT_EQ(RunCommand({isFolder ? "mkdir" : "touch", path}).exitCode, 0) << path;
        ASSERT_EQ(SetDescriptorText(path, sddl), ERROR_SUCCESS) << path;
    }

    std::string Dacl(const std::string& name) const { return DaclText(Path(name)); }
    DWORD SetDacl(const std::string& name, const std::string& sddl) const {
        return SetDescriptorText(Path(name), sddl);
    }

    const TemporaryFolder local;
    std::unique_ptr<NtfsVolume> volume;
};

INSTANTIATE_TEST_SUITE_P(Volumes, HeldObjectSecurity, testing::Values(Place::kLocalDisk, Place::kNtfs),
                         PlaceName);

TEST_P(HeldObjectSecurity, ChangeOfAFolderReachesAllBelowAndKeepsTheirOwnEntries) {
    ASSERT_EQ(SetDacl("top/folder", "D:(D;CI;WD;;;BG)"), ERROR_SUCCESS);
    ASSERT_EQ(SetDacl("top/folder/file", "D:(A;;FR;;;BU)"), ERROR_SUCCESS);
    ASSERT_EQ(SetDacl("top", "D:P(A;OI;FR;;;WD)(A;OICI;FA;;;SY)"), ERROR_SUCCESS);
    EXPECT_EQ(Dacl("top/file"), "D:AI(A;ID;FR;;;WD)(A;ID;FA;;;SY)");
    EXPECT_EQ(Dacl("top/folder"), "D:AI(D;CI;WD;;;BG)(A;OIIOID;FR;;;WD)(A;OICIID;FA;;;SY)");
    EXPECT_EQ(Dacl("top/folder/file"), "D:AI(A;;FR;;;BU)(A;ID;FR;;;WD)(A;ID;FA;;;SY)");
    EXPECT_EQ(Dacl("top/folder/sub/deep"), "D:AI(D;CIID;WD;;;BG)(A;OIIOID;FR;;;WD)(A;OICIID;FA;;;SY)");
}

TEST_P(HeldObjectSecurity, ProtectedObjectsAndAllBelowThemKeepTheirLists) {
    ASSERT_EQ(SetDacl("top/folder", "D:P(A;OICI;FR;;;BU)"), ERROR_SUCCESS);
    ASSERT_EQ(SetDacl("top", "D:P(A;OICI;FA;;;SY)"), ERROR_SUCCESS);
    EXPECT_EQ(Dacl("top/folder"), "D:PAI(A;OICI;FR;;;BU)");
    EXPECT_EQ(Dacl("top/folder/file"), "D:AI(A;ID;FR;;;BU)");
    EXPECT_EQ(Dacl("top/file"), "D:AI(A;ID;FA;;;SY)");
    // Unprotecting it lets everything through again.
    ASSERT_EQ(SetDacl("top/folder", "D:"), ERROR_SUCCESS);
    EXPECT_EQ(Dacl("top/folder/file"), "D:AI(A;ID;FA;;;SY)");
}

TEST_P(HeldObjectSecurity, WhatIsStoredOfAListThatIsSet) {
    const struct {
        const char* set;
        const char* stored;
    } cases[] = {
        // Inherited entries that are given are kept only where nothing is inherited.
        {"D:(A;;FR;;;BU)(A;ID;FX;;;WD)", "D:AI(A;;FR;;;BU)(A;ID;FA;;;BA)"},
        {"D:P(A;;FR;;;BU)(A;ID;FX;;;WD)", "D:PAI(A;;FR;;;BU)(A;ID;FX;;;WD)"},
        // Generic rights become their file rights.
        {"D:P(A;;GR;;;BU)(A;;GA;;;BA)", "D:PAI(A;;FR;;;BU)(A;;FA;;;BA)"},
    };
    for (const auto& each : cases) {
        ASSERT_EQ(SetDacl("top/file", each.set), ERROR_SUCCESS) << each.set;
        EXPECT_EQ(Dacl("top/file"), each.stored) << each.set;
    }
    // Without a word on protection the object's state stays.
    ACL list{2, 0, sizeof(ACL), 0, 0};
    const HeldObject file = Held(Path("top/file"));
    for (const char* before : {"D:P(A;;FR;;;BU)", "D:(A;;FR;;;BU)"}) {
        ASSERT_EQ(SetDacl("top/file", before), ERROR_SUCCESS);
        FailuresBelow below;
        ASSERT_EQ(
            file.WriteSecurity(DACL_SECURITY_INFORMATION, {.dacl = &list}, nullptr, Unrecorded(), below),
            ERROR_SUCCESS);
        EXPECT_EQ(Dacl("top/file"), before[2] == 'P' ? "D:PAI" : "D:AI(A;ID;FA;;;BA)");
    }
}

TEST_P(HeldObjectSecurity, NullEmptyAndFilledListsStayThreeDifferentThings) {
    ASSERT_EQ(SetDacl("top/file", "D:NO_ACCESS_CONTROL"), ERROR_SUCCESS);
    ASSERT_EQ(SetDacl("top/folder", "D:P"), ERROR_SUCCESS);
    struct {
        const char* name;
        bool isNull;
        unsigned entries;
    } const states[] = {{"top/file", true, 0}, {"top/folder", false, 0}, {"top", false, 1}};
    for (const auto& state : states) {
        ReadParts parts;
        ASSERT_EQ(Held(Path(state.name)).ReadSecurity(DACL_SECURITY_INFORMATION, parts), ERROR_SUCCESS);
        SECURITY_DESCRIPTOR_CONTROL control = 0;
        DWORD revision = 0;
        ASSERT_TRUE(GetSecurityDescriptorControl(parts.descriptor.get(), &control, &revision));
        EXPECT_NE(control & SE_DACL_PRESENT, 0) << state.name;
        ASSERT_EQ(parts.dacl == nullptr, state.isNull) << state.name;
        EXPECT_EQ(parts.dacl != nullptr ? parts.dacl->AceCount : 0U, state.entries) << state.name;
    }
    // A folder without list has nothing to hand down, and a child without list nothing to gain.
    ASSERT_EQ(SetDacl("top", "D:NO_ACCESS_CONTROL"), ERROR_SUCCESS);
    EXPECT_EQ(Dacl("top/folder/file"), "D:AI");
    EXPECT_EQ(Dacl("top/file"), Dacl("top"));
}

TEST_P(HeldObjectSecurity, SettingTheListKeepsOwnerGroupAndSystemList) {
    constexpr SECURITY_INFORMATION kOthers =
        OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | SACL_SECURITY_INFORMATION;
    const std::string others = "O:BGG:BUS:(AU;SAFA;FA;;;WD)";
    ASSERT_EQ(SetDacl("top/folder", others), ERROR_SUCCESS);
    ASSERT_EQ(SetDacl("top/folder", "D:(A;;FR;;;WD)"), ERROR_SUCCESS);
    ASSERT_EQ(SetDacl("top", "D:P(A;OICI;FA;;;SY)"), ERROR_SUCCESS);
    EXPECT_EQ(DescriptorText(Path("top/folder"), kOthers), others);
    EXPECT_EQ(Dacl("top/folder"), "D:AI(A;;FR;;;WD)(A;OICIID;FA;;;SY)");
}

// The host's users 1 and 2 by the SIDs that they have on every host.
TEST_P(HeldObjectSecurity, AnOwnerIsSetInTheDescriptorAndOnTheHostOrNowhere) {
    const auto hostOwner = [this](const char* name) {
        struct stat status {};
        EXPECT_EQ(lstat(Path(name).c_str(), &status), 0);
        return status.st_uid;
    };
    const bool hasHostOwners = GetParam() == Place::kLocalDisk;
    for (const char* name : {"top/file", "top/folder"}) {
        const std::string list = Dacl(name);
        ASSERT_EQ(SetDescriptorText(Path(name), "O:S-1-22-1-1"), ERROR_SUCCESS);
        EXPECT_EQ(hostOwner(name), hasHostOwners ? 1U : 0U);
        failingWrite = 1;
        EXPECT_EQ(SetDescriptorText(Path(name), "O:S-1-22-1-2"), ERROR_IO_DEVICE);
        EXPECT_EQ(hostOwner(name), hasHostOwners ? 1U : 0U);
        EXPECT_EQ(DescriptorText(Path(name), OWNER_SECURITY_INFORMATION), "O:S-1-22-1-1");
        // A group is no user of the host.
        ASSERT_EQ(SetDescriptorText(Path(name), "O:BA"), ERROR_SUCCESS);
        EXPECT_EQ(hostOwner(name), hasHostOwners ? 1U : 0U);
        EXPECT_EQ(DescriptorText(Path(name), OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION),
                  "O:BA" + list);
    }
}

TEST(HeldObjectSecurityOfUsers, WhoMayWriteAnObjectMayStillNotTakeIt) {
    if (geteuid() != 0) GTEST_SKIP() << "becoming another user needs root";
    const TemporaryFolder folder;
    const std::string others = folder.MakeFile("others");
    const std::string own = folder.MakeFile("own");
    ASSERT_EQ(chmod(folder.Path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(others.c_str(), 0666), 0);
    ASSERT_EQ(chown(own.c_str(), 65534, 65534), 0);
    const auto set = [](const std::string& path, const char* sddl) {
        return std::to_string(SetDescriptorText(path, sddl)) + " ";
    };
    const auto answers = AsOrdinaryUser([&] {
        std::string text;
        text += set(others, "O:S-1-22-1-65534");
        text += set(others, "O:BA");
        text += set(own, "O:S-1-22-1-0");
        for (const char* owner : {"O:BA", "O:S-1-22-1-65534"}) {
            text += DescriptorText(own, OWNER_SECURITY_INFORMATION) + ' ';
            text += set(own, owner);
        }
        return text + DescriptorText(own, OWNER_SECURITY_INFORMATION);
    });
    EXPECT_THAT(answers.value_or(""), testing::MatchesRegex("5 5 5 O:S-1-[-0-9]+ 0 O:BA 0 O:S-1-22-1-65534"));
    for (const std::string& path : {others, own}) {
        EXPECT_EQ(getxattr(path.c_str(), "user.permora.sd", nullptr, 0) > 0, path == own) << path;
        struct stat status {};
        ASSERT_EQ(stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_uid, path == own ? 65534U : 0U) << path;
    }
}

TEST_P(HeldObjectSecurity, LinkIsTheObjectAndNeverItsTarget) {
    const TemporaryFolder outside;
    ASSERT_EQ(SetDescriptorText(outside.MakeFile("target"), "O:BAG:BUD:P(A;;FR;;;BU)"), ERROR_SUCCESS);
    ASSERT_EQ(symlink(outside.Path("target").c_str(), Path("top/link").c_str()), 0);
    ASSERT_EQ(SetDacl("top", "D:P(A;OICI;FA;;;SY)"), ERROR_SUCCESS);
    ASSERT_EQ(SetDacl("top/link", "D:P(A;;FX;;;WD)"), ERROR_SUCCESS);
    EXPECT_EQ(Dacl("top/link"), "D:PAI(A;;FX;;;WD)");
    EXPECT_EQ(DaclText(outside.Path("target")), "D:PAI(A;;FR;;;BU)");
}

TEST_P(HeldObjectSecurity, FailureInTheMiddleLeavesThatObjectAndReachesTheOthers) {
    for (const char* name : {"top/a", "top/b", "top/c"})
        Make(name, "O:BAG:BUD:");
    failingWrite = 3;  // the folder itself is the first write
    EXPECT_EQ(SetDacl("top", "D:P(A;OICI;FA;;;SY)"), ERROR_IO_DEVICE);
    int unchanged = 0;
    for (const char* name : {"top/a", "top/b", "top/c", "top/file", "top/folder"}) {
        const std::string list = Dacl(name);
        if (list.find("BA)") != std::string::npos)
            ++unchanged;
        else
            EXPECT_NE(list.find("ID;FA;;;SY)"), std::string::npos) << name << ": " << list;
    }
    EXPECT_EQ(unchanged, 1);
}

TEST_P(HeldObjectSecurity, WhatIsSetIsNoDefaultAnyMoreAndWhatIsTakenAwayIsGone) {
    constexpr WORD kDefaults =
        SE_OWNER_DEFAULTED | SE_GROUP_DEFAULTED | SE_DACL_DEFAULTED | SE_SACL_DEFAULTED;
    auto descriptor = nt::FromSddl("O:BAG:BUD:P(A;;FA;;;BA)S:(AU;SA;FA;;;WD)");
    ASSERT_TRUE(descriptor);
    descriptor->control |= kDefaults;
    std::vector<std::uint8_t> bytes;
    ASSERT_TRUE(descriptor->AppendTo(bytes));
    std::vector<std::uint8_t> stored = bytes;
    if (!volume) host::MakeSambaAttribute(bytes, stored);
    const std::string file = Path("top/file");
    ASSERT_EQ(setxattr(file.c_str(), volume ? "system.ntfs_acl" : "security.NTACL", stored.data(),
                       stored.size(), 0),
              0);
    const auto control = [&] {
        ReadParts parts;
        EXPECT_EQ(Held(file).ReadSecurity(15, parts), ERROR_SUCCESS);
        SECURITY_DESCRIPTOR_CONTROL bits = 0;
        DWORD revision = 0;
        EXPECT_TRUE(GetSecurityDescriptorControl(parts.descriptor.get(), &bits, &revision));
        return bits & (kDefaults | SE_SACL_PRESENT);
    };
    EXPECT_EQ(control(), kDefaults | SE_SACL_PRESENT);
    ASSERT_EQ(SetDacl("top/file", "O:BAG:BUD:P(A;;FA;;;BA)"), ERROR_SUCCESS);
    EXPECT_EQ(control(), SE_SACL_DEFAULTED | SE_SACL_PRESENT);
    ASSERT_EQ(SetDacl("top/file", "S:NO_ACCESS_CONTROL"), ERROR_SUCCESS);
    EXPECT_EQ(control(), 0);
}

// First in the order of their paths, in whatever order the volume lists them.
TEST(PropagatedList, ReportsTheFirstOfSeveralFailures) {
    if (geteuid() != 0) GTEST_SKIP() << "writing system attributes needs root";
    for (const auto& [damaged, first] :
         {std::pair("a", ERROR_INVALID_SECURITY_DESCR), std::pair("b", ERROR_IO_DEVICE)}) {
        const TemporaryFolder folder;
        for (const char* name : {"a", "b"})
            folder.MakeFile(name);
        ASSERT_EQ(setxattr(folder.Path(damaged).c_str(), "security.NTACL", "\x01\x00garbage", 9, 0), 0);
        failingWrite = 2;  // after the folder's own, that of the other file
        EXPECT_EQ(SetDescriptorText(folder.Path(), "D:P(A;OICI;FA;;;SY)"), static_cast<DWORD>(first));
        EXPECT_EQ(failingWrite, 0);
    }
}

// One attribute of the kernel holds 64 KiB, ext4 keeps less beside an object.
TEST_P(HeldObjectSecurity, LargeListIsKeptWholeOrRefusedWhole) {
    const auto listOf = [](int entries) {
        std::string sddl = "D:P";
        for (int i = 0; i < entries; ++i)
            sddl.append("(A;;FR;;;S-1-5-21-1-2-3-").append(std::to_string(i)).append(")");
        return sddl;
    };
    const DWORD error = SetDacl("top/file", listOf(1800));
    if (error == ERROR_SUCCESS) {
        EXPECT_EQ(Dacl("top/file").size(), listOf(1800).size() + 2);  // "AI"
        ASSERT_EQ(SetDacl("top/file", "D:"), ERROR_SUCCESS);
    } else {
        EXPECT_EQ(GetParam(), Place::kLocalDisk);
        EXPECT_EQ(error, ERROR_ALLOTTED_SPACE_EXCEEDED);
    }
    EXPECT_EQ(SetDacl("top/file", listOf(1819)), ERROR_ALLOTTED_SPACE_EXCEEDED);
    EXPECT_EQ(Dacl("top/file"), "D:AI(A;ID;FA;;;BA)");
}

TEST_P(HeldObjectSecurity, FailuresLeaveTheListAsItWas) {
    failingWrite = 1;
    EXPECT_EQ(SetDacl("top", "D:P(A;OICI;FA;;;SY)"), ERROR_IO_DEVICE);
    EXPECT_EQ(Dacl("top"), "D:PAI(A;OICI;FA;;;BA)");
    isReadingRefused = true;
    EXPECT_EQ(Dacl("top/file"), "error " + std::to_string(ERROR_IO_DEVICE));
    EXPECT_EQ(SetDacl("top/file", "D:P"), ERROR_IO_DEVICE);
    isReadingRefused = false;
    EXPECT_EQ(Dacl("top/file"), "D:AI(A;ID;FA;;;BA)");
    const HeldObject file = Held(Path("top/file"));
    ACL tooLong{2, 0, sizeof(ACL), 1, 0};  // counts an entry that is not there
    const auto set = [&](SECURITY_INFORMATION information, PSID owner, PACL dacl) {
        FailuresBelow below;
        return file.WriteSecurity(information, {.owner = owner, .dacl = dacl}, nullptr, Unrecorded(), below);
    };
    BYTE badSid[8] = {2, 0, 0, 0, 0, 0, 0, 5};
    EXPECT_EQ(set(0, nullptr, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(set(DACL_SECURITY_INFORMATION, nullptr, &tooLong), ERROR_INVALID_ACL);
    EXPECT_EQ(set(OWNER_SECURITY_INFORMATION, nullptr, nullptr), ERROR_INVALID_SID);
    EXPECT_EQ(set(OWNER_SECURITY_INFORMATION, badSid, nullptr), ERROR_INVALID_SID);
    EXPECT_EQ(set(DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION |
                      UNPROTECTED_DACL_SECURITY_INFORMATION,
                  nullptr, nullptr),
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Dacl("top/file"), "D:AI(A;ID;FA;;;BA)");
    EXPECT_EQ(Dacl("top/missing"), "error " + std::to_string(ERROR_FILE_NOT_FOUND));
}

}  // namespace
}  // namespace permora::test
