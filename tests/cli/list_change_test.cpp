// Changes that other programs make to an object while one of ours is at work on it.
#include "cli/list_change.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "cli/entry_edits.h"
#include "platform/api/errors.h"
#include "tests/support/access_lists.h"
#include "tests/support/command.h"
#include "tests/support/temporary_folder.h"

namespace permora {
namespace {

class ListChange : public ::testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = test::MissingProgram("setfattr"); !reason.empty())
            GTEST_SKIP() << reason;
        const DWORD error = test::SetDescriptorText(file, "D:P(A;;FA;;;BA)");
        if (error == ERROR_NOT_SUPPORTED) GTEST_SKIP() << "the temporary folder holds no access lists";
        ASSERT_EQ(error, ERROR_SUCCESS);
        ASSERT_EQ(MakeTarget(file, nullptr, target), ERROR_SUCCESS);
        RememberTarget(target);
    }

    // As another program does it that knows nothing of ours.
    void CopyListFrom(const std::string& other) const {
        const std::string copy = "setfattr -n " + std::string(kAttribute) + " -v $(getfattr -e hex -n " +
                                 kAttribute + " --absolute-names '" + other + "' | sed -n 's/.*=//p') '" +
                                 file + "'";
        ASSERT_EQ(test::RunCommand({"sh", "-c", copy}).exitCode, 0);
    }

    // Adds an entry for Guests to what the object has.
    ChangeResult AddGuests(const HeldObject& object, const std::function<void()>& meanwhile) {
        ObjectSecurity security;
        if (!ReadForChange(object, security, messages)) return ChangeResult::kFailed;
        AccountRecord guests;
        PSID sid = nullptr;
        EXPECT_TRUE(ConvertStringSidToSidA("S-1-5-32-546", &sid));
        EXPECT_TRUE(guests.SetSid(UniqueLocal<void>(sid).get()));
        security.entries.AddEntry(guests, FILE_GENERIC_READ, 0, ACCESS_ALLOWED_ACE_TYPE);
        const UniqueLocal<ACL> dacl = BuildWholeDacl(library.get(), security.entries.Entries(), messages);
        meanwhile();
        return WriteDacl(target, object, security, security.inheritance, dacl.get(), messages);
    }

    const char* kAttribute = geteuid() == 0 ? "security.NTACL" : "user.permora.sd";
    const test::TemporaryFolder folder;
    const std::string file = folder.MakeFile("file");
    Target target;
    ConsoleMessages messages;
    UniqueLibrary library = LoadAccessListLibrary();
};

TEST_F(ListChange, WhatAnotherProgramWritesInBetweenIsKept) {
    const std::string other = folder.MakeFile("other");
    ASSERT_EQ(test::SetDescriptorText(other, "D:P(D;;FA;;;BU)(A;;FA;;;BA)"), ERROR_SUCCESS);
    int attempts = 0;
    EXPECT_TRUE(ChangeInTurn(
        Arguments{}, target,
        [&](const HeldObject& object) {
            return AddGuests(object, [&] {
                if (++attempts == 1) CopyListFrom(other);
            });
        },
        messages));
    EXPECT_EQ(attempts, 2);
    EXPECT_EQ(test::DaclText(file), "D:PAI(D;;FA;;;BU)(A;;FR;;;BG)(A;;FA;;;BA)");
}

TEST_F(ListChange, OneThatChangesItAllTheTimeWins) {
    const std::string lists[] = {folder.MakeFile("odd"), folder.MakeFile("even")};
    ASSERT_EQ(test::SetDescriptorText(lists[0], "D:P(D;;FA;;;BU)"), ERROR_SUCCESS);
    ASSERT_EQ(test::SetDescriptorText(lists[1], "D:P(D;;FX;;;BU)"), ERROR_SUCCESS);
    std::size_t attempts = 0;
    EXPECT_FALSE(ChangeInTurn(
        Arguments{}, target,
        [&](const HeldObject& object) {
            return AddGuests(object, [&] { CopyListFrom(lists[++attempts % 2]); });
        },
        messages));
    EXPECT_GT(attempts, 1U);
    EXPECT_LT(attempts, 20U);
    EXPECT_EQ(test::DaclText(file), test::DaclText(lists[attempts % 2]));
}

TEST_F(ListChange, WhatARevokeLeavesIsSaidOnce) {
    ASSERT_EQ(test::SetDescriptorText(folder.Path(), "D:P(A;OICI;FA;;;BG)"), ERROR_SUCCESS);
    ASSERT_EQ(test::SetDescriptorText(file, "D:(A;;FR;;;BG)"), ERROR_SUCCESS);
    Arguments arguments;
    arguments.command = Command::kRevoke;
    arguments.account = "Guests";
    AccountRecord guests;
    PSID sid = nullptr;
    ASSERT_TRUE(ConvertStringSidToSidA("S-1-5-32-546", &sid));
    ASSERT_TRUE(guests.SetSid(UniqueLocal<void>(sid).get()));
    messages.SetSubject("file");
    testing::internal::CaptureStderr();
    int attempts = 0;
    EXPECT_TRUE(ChangeInTurn(
        arguments, target,
        [&](const HeldObject& object) {
            ObjectSecurity security;
            EXPECT_TRUE(ReadForChange(object, security, messages));
            EXPECT_EQ(
                EditEntries(arguments, guests, EntryPlace::kFile, security.dacl, security.entries, messages),
                EditResult::kChanged);
            return ++attempts < 3 ? ChangeResult::kOutOfDate : ChangeResult::kDone;
        },
        messages));
    EXPECT_EQ(attempts, 3);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "permora-cli: file: the inherited entries for Guests stay\n");
}

}  // namespace
}  // namespace permora
