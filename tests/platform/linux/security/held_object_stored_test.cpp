// What is kept about an object, byte for byte, on every kind of volume.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/held_object.h"
#include "platform/nt/sddl.h"
#include "platform/security_change.h"
#include "platform/stored_security.h"
#include "tests/support/access_lists.h"
#include "tests/support/command.h"
#include "tests/support/immutable.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::Optional;

constexpr const char* kStoredList = "O:BUG:BUD:P(D;;FR;;;BG)(A;;FA;;;BA)S:(AU;SA;FA;;;WD)";

std::optional<std::string> Attribute(const std::string& path, const char* name) {
    std::string value(4096, '\0');
    const ssize_t size = lgetxattr(path.c_str(), name, value.data(), value.size());
    if (size < 0) return std::nullopt;
    value.resize(static_cast<std::size_t>(size));
    return value;
}

StoredSecurity Stored(const std::string& path) {
    StoredSecurity stored;
    EXPECT_EQ(Held(path).ReadStored(stored), ERROR_SUCCESS) << path;
    return stored;
}

uid_t HostOwner(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0);
    return status.st_uid;
}

class HeldObjectStored : public testing::Test {
  protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "system attributes and other owners need root";
    }
    const TemporaryFolder folder;
};

TEST_F(HeldObjectStored, OnTheLocalDiskEveryByteComesBackAlsoThatNothingWasKept) {
    for (const char* name : {"file", "folder", "link"}) {
        const std::string path = folder.Path(name);
        if (name == std::string("folder"))
            folder.MakeFolder(name);
        else if (name == std::string("link"))
            ASSERT_EQ(symlink("nowhere", path.c_str()), 0);
        else
            folder.MakeFile(name);
        const StoredSecurity nothing = Stored(path);
        EXPECT_EQ(nothing, (StoredSecurity{SecurityForm::kNone, {}, 0}));
        ASSERT_EQ(SetDescriptorText(path, kStoredList), ERROR_SUCCESS);
        const auto first = Attribute(path, "security.NTACL");
        const StoredSecurity list = Stored(path);
        EXPECT_EQ(list.form, SecurityForm::kSamba);
        EXPECT_EQ(std::string(list.bytes.begin(), list.bytes.end()), first);
        ASSERT_EQ(SetDescriptorText(path, "O:S-1-22-1-1D:P(A;;FX;;;WD)"), ERROR_SUCCESS);
        const StoredSecurity owned = Stored(path);
        EXPECT_EQ(owned.hostOwner, 1U);

        // Back, back once more, and forth again.
        const HeldObject held = Held(path);
        ASSERT_EQ(held.WriteStored(owned, list), ERROR_SUCCESS);
        EXPECT_EQ(Attribute(path, "security.NTACL"), first);
        EXPECT_EQ(HostOwner(path), 0U);
        ASSERT_EQ(held.WriteStored(list, nothing), ERROR_SUCCESS);
        EXPECT_EQ(Attribute(path, "security.NTACL"), std::nullopt);
        EXPECT_EQ(Stored(path), nothing);
        ASSERT_EQ(held.WriteStored(nothing, owned), ERROR_SUCCESS);
        EXPECT_EQ(Stored(path), owned);
    }
}

// Samba writes version 4 with a hash, which another writer could not make again.
TEST_F(HeldObjectStored, AttributesThatOthersMadeComeBackAsTheyWere) {
    const std::string path = folder.MakeFile("file");
    ASSERT_EQ(SetDescriptorText(path, kStoredList), ERROR_SUCCESS);
    const std::string ours = Attribute(path, "security.NTACL").value();
    constexpr std::size_t kHash = 4 + 16;  // of version 2, before the descriptor
    std::string theirs = ours;
    theirs[0] = theirs[2] = 2;
    theirs.insert(8, std::string("\x04\0\2\0", 4) + std::string(16, 'h'));
    for (const std::size_t place : {4U, 8U, 12U, 16U}) {
        char& low = theirs[8 + kHash + place];
        if (low != 0) low = static_cast<char>(low + char{kHash});
    }
    ASSERT_EQ(lsetxattr(path.c_str(), "security.NTACL", theirs.data(), theirs.size(), 0), 0);
    const StoredSecurity before = Stored(path);
    ASSERT_EQ(SetDescriptorText(path, "D:P(A;;FX;;;WD)"), ERROR_SUCCESS);
    ASSERT_EQ(Held(path).WriteStored(Stored(path), before), ERROR_SUCCESS);
    EXPECT_EQ(Attribute(path, "security.NTACL"), theirs);
}

TEST_F(HeldObjectStored, OnNtfsTheVolumesOwnBytesComeBack) {
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    ASSERT_EQ(mkdir(volume.Path("folder").c_str(), 0755), 0);
    const std::string path = volume.Path("folder");
    const auto first = Attribute(path, "system.ntfs_acl");
    const StoredSecurity made = Stored(path);
    EXPECT_EQ(made.form, SecurityForm::kVolume);
    EXPECT_EQ(made.hostOwner, std::nullopt);
    EXPECT_EQ(std::string(made.bytes.begin(), made.bytes.end()), first);
    ASSERT_EQ(SetDescriptorText(path, kStoredList), ERROR_SUCCESS);
    const StoredSecurity list = Stored(path);
    ASSERT_EQ(Held(path).WriteStored(list, made), ERROR_SUCCESS);
    EXPECT_EQ(Attribute(path, "system.ntfs_acl"), first);
    EXPECT_EQ(Held(path).WriteStored(made, {}), ERROR_NOT_SUPPORTED) << "nothing is always something there";
    EXPECT_EQ(Held(path).WriteStored(made, {SecurityForm::kSamba, list.bytes, 0}), ERROR_NOT_SUPPORTED);
    EXPECT_EQ(Attribute(path, "system.ntfs_acl"), first);
}

// Nothing is inherited anew, and no flag is set or cleared.
TEST_F(HeldObjectStored, ADescriptorFromElsewhereIsKeptAsItIs) {
    const std::string path = folder.MakeFile("file");
    ASSERT_EQ(SetDescriptorText(folder.Path(), "D:P(A;OICI;FA;;;BA)"), ERROR_SUCCESS);
    constexpr const char* kTexts[] = {
        "O:BUG:BUD:(A;ID;FR;;;BG)",
        "O:S-1-22-1-7G:S-1-5-21-1-2-3-513D:ARAI(A;OICIIO;GA;;;CO)S:(AU;SA;FA;;;WD)",
        "O:S-1-22-1-7G:BUD:NO_ACCESS_CONTROL",
    };
    for (const char* text : kTexts) {
        const auto descriptor = nt::FromSddl(text);
        ASSERT_TRUE(descriptor) << text;
        const HeldObject held = Held(path);
        StoredSecurity wanted;
        ASSERT_EQ(held.PrepareStored(Stored(path), *descriptor, wanted), ERROR_SUCCESS) << text;
        ASSERT_EQ(held.WriteStored(Stored(path), wanted), ERROR_SUCCESS) << text;
        EXPECT_EQ(Stored(path), wanted);
        EXPECT_EQ(DescriptorText(path, 15), text);
    }
    EXPECT_EQ(HostOwner(path), 7U);
}

// The flag alone says that a server was asked for it.
TEST(StoredSecurityTest, ASystemAccessListThatIsMissingIsNotShown) {
    auto descriptor = nt::FromSddl("O:BAG:BAD:(A;;FA;;;BA)");
    ASSERT_TRUE(descriptor);
    descriptor->control |= nt::kSaclPresent;
    StoredSecurity stored{SecurityForm::kVolume, {}, 0};
    ASSERT_TRUE(descriptor->AppendTo(stored.bytes));
    std::optional<nt::SecurityDescriptor> shown;
    ASSERT_EQ(DescriptorIn(stored, shown), ERROR_SUCCESS);
    EXPECT_EQ(nt::ToSddl(*shown, kDescriptorParts), "O:BAG:BAD:(A;;FA;;;BA)");
    EXPECT_EQ(SystemListIn(stored), SystemList::kIncluded);
}

TEST_F(HeldObjectStored, OrdinaryUsersPutBackTheirOwn) {
    ASSERT_EQ(chmod(folder.Path().c_str(), 0777), 0);
    const std::string file = folder.MakeFile("file");
    const std::string sambas = folder.MakeFile("sambas");
    for (const std::string& path : {file, sambas})
        ASSERT_EQ(chown(path.c_str(), 65534, 65534), 0);
    ASSERT_EQ(SetDescriptorText(sambas, kStoredList), ERROR_SUCCESS);
    EXPECT_THAT(
        AsOrdinaryUser([&]() -> std::string {
            const StoredSecurity nothing = Stored(file);
            if (nothing != StoredSecurity{SecurityForm::kNone, {}, 65534}) return "not nothing";
            if (SetDescriptorText(file, "D:P(A;;FR;;;WD)") != 0) return "not set";
            const StoredSecurity list = Stored(file);
            if (list.form != SecurityForm::kUser) return "elsewhere";
            const HeldObject held = Held(file);
            StoredSecurity ours = list;
            ours.form = SecurityForm::kSamba;
            StoredSecurity given = list;
            given.hostOwner = 1;
            const HeldObject theirs = Held(sambas);
            std::string answers;
            for (const DWORD answer :
                 {held.WriteStored(list, ours), held.WriteStored(list, given),
                  held.WriteStored(list, nothing), held.WriteStored(nothing, list),
                  theirs.WriteStored(Stored(sambas), nothing), theirs.WriteStored(Stored(sambas), list)})
                answers += std::to_string(answer) + ' ';
            return answers;
        }),
        Optional(std::string("50 5 0 0 5 5 ")));
    EXPECT_TRUE(Attribute(file, "user.permora.sd"));
    EXPECT_TRUE(Attribute(sambas, "security.NTACL"));
    EXPECT_EQ(HostOwner(file), 65534U);
    // Root keeps lists elsewhere.
    EXPECT_EQ(Held(file).WriteStored(Stored(file), {SecurityForm::kUser, {}, 65534}), ERROR_NOT_SUPPORTED);
}

TEST_F(HeldObjectStored, WhatWasChangedMeanwhileOrIsDamagedIsNotReplaced) {
    const std::string path = folder.MakeFile("file");
    ASSERT_EQ(SetDescriptorText(path, kStoredList), ERROR_SUCCESS);
    const StoredSecurity list = Stored(path);
    StoredSecurity otherOwner = list;
    otherOwner.hostOwner = 7;
    const StoredSecurity others[] = {{SecurityForm::kNone, {}, 0}, otherOwner};
    for (const StoredSecurity& expected : others)
        EXPECT_EQ(Held(path).WriteStored(expected, list), ERROR_REVISION_MISMATCH);
    const HeldObject held = Held(path);
    ASSERT_EQ(chown(path.c_str(), 7, 7), 0);
    EXPECT_EQ(held.WriteStored(list, list), ERROR_REVISION_MISMATCH) << "the host's owner counts too";
    ASSERT_EQ(chown(path.c_str(), 0, 0), 0);
    StoredSecurity short1 = list;
    short1.bytes.pop_back();
    for (const StoredSecurity& damaged :
         {short1, StoredSecurity{SecurityForm::kSamba, {}, 0}, StoredSecurity{SecurityForm::kNone, {1}, 0}})
        EXPECT_EQ(held.WriteStored(list, damaged), ERROR_INVALID_SECURITY_DESCR);
    EXPECT_EQ(held.WriteStored(list, {SecurityForm::kShare, list.bytes, 0}), ERROR_NOT_SUPPORTED);
    EXPECT_EQ(Stored(path), list);

    ASSERT_EQ(lsetxattr(path.c_str(), "security.NTACL", "\x01\x00garbage", 9, 0), 0);
    StoredSecurity untouched = otherOwner;
    EXPECT_EQ(held.ReadStored(untouched), ERROR_INVALID_SECURITY_DESCR);
    EXPECT_EQ(untouched, otherOwner);
    EXPECT_EQ(held.WriteStored(list, list), ERROR_INVALID_SECURITY_DESCR);
}

// The descriptor cannot be written on a file that must not change; neither can its owner.
TEST_F(HeldObjectStored, AFailedWriteLeavesBothOwnerAndList) {
    const std::string path = folder.MakeFile("file");
    ASSERT_EQ(SetDescriptorText(path, "O:S-1-22-1-1D:P(A;;FR;;;WD)"), ERROR_SUCCESS);
    const StoredSecurity before = Stored(path);
    ASSERT_EQ(SetDescriptorText(path, "O:S-1-22-1-2D:P(A;;FX;;;WD)"), ERROR_SUCCESS);
    const StoredSecurity after = Stored(path);
    const Immutable kept(path);
    if (!kept) GTEST_SKIP() << "the temporary folder is on a file system without immutable files";
    EXPECT_EQ(Held(path).WriteStored(after, before), ERROR_ACCESS_DENIED);
    EXPECT_EQ(Stored(path), after);
}

}  // namespace
}  // namespace permora::test
