// Changes that other programs make to an object while one of ours is at work on it.
#include "cli/change_command.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <functional>
#include <string>

#include "platform/api/errors.h"
#include "platform/resources.h"
#include "tests/support/access_lists.h"
#include "tests/support/command.h"
#include "tests/support/temporary_folder.h"

namespace permora {
namespace {

// Adds an entry for Guests.
class AddGuestsCommand : public ChangeCommand {
  public:
    AddGuestsCommand(const CommandParent& parent, const std::function<void()>& others)
        : ChangeCommand(parent, "add", ""), meanwhile(others) {}

  private:
    EditResult Edit(EditedList& list) override {
        SayOnce("a note");
        meanwhile();
        AccountRecord guests;
        PSID sid = nullptr;
        EXPECT_TRUE(ConvertStringSidToSidA("S-1-5-32-546", &sid));
        EXPECT_TRUE(guests.SetSid(UniqueLocal<void>(sid).get()));
        list.entries.AddEntry(guests, FILE_GENERIC_READ, 0, ACCESS_ALLOWED_ACE_TYPE);
        return EditResult::kChanged;
    }

    const std::function<void()>& meanwhile;
};

class ChangeCommandTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = test::MissingProgram("setfattr"); !reason.empty())
            GTEST_SKIP() << reason;
        const DWORD error = test::SetDescriptorText(file, "D:P(A;;FA;;;BA)");
        if (error == ERROR_NOT_SUPPORTED) GTEST_SKIP() << "the temporary folder holds no access lists";
        ASSERT_EQ(error, ERROR_SUCCESS);
    }

    // As another program does it that knows nothing of ours.
    void CopyListFrom(const std::string& other) const {
        const std::string copy = "setfattr -n " + std::string(kAttribute) + " -v $(getfattr -e hex -n " +
                                 kAttribute + " --absolute-names '" + other + "' | sed -n 's/.*=//p') '" +
                                 file + "'";
        ASSERT_EQ(test::RunCommand({"sh", "-c", copy}).exitCode, 0);
    }

    // Changes the file by the command below, and does `meanwhile` between the reading and the write.
    ExitCode AddGuests(const std::function<void()>& meanwhile) {
        CLI::App parser;
        Command* chosen = nullptr;
        ConsoleMessages messages;
        AddGuestsCommand command({parser, chosen, messages}, meanwhile);
        parser.parse("add " + file);
        EXPECT_EQ(chosen->Interpret(), "");
        return chosen->Run();
    }

    const char* kAttribute = geteuid() == 0 ? "security.NTACL" : "user.permora.sd";
    const test::TemporaryFolder folder;
    const std::string file = folder.MakeFile("file");
};

TEST_F(ChangeCommandTest, WhatAnotherProgramWritesInBetweenIsKept) {
    const std::string other = folder.MakeFile("other");
    ASSERT_EQ(test::SetDescriptorText(other, "D:P(D;;FA;;;BU)(A;;FA;;;BA)"), ERROR_SUCCESS);
    int attempts = 0;
    testing::internal::CaptureStderr();
    EXPECT_EQ(AddGuests([&] {
                  if (++attempts == 1) CopyListFrom(other);
              }),
              ExitCode::kDone);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "permora-cli: " + file + ": a note\n");
    EXPECT_EQ(attempts, 2);
    EXPECT_EQ(test::DaclText(file), "D:PAI(D;;FA;;;BU)(A;;FR;;;BG)(A;;FA;;;BA)");
}

TEST_F(ChangeCommandTest, OneThatChangesItAllTheTimeWins) {
    const std::string lists[] = {folder.MakeFile("odd"), folder.MakeFile("even")};
    ASSERT_EQ(test::SetDescriptorText(lists[0], "D:P(D;;FA;;;BU)"), ERROR_SUCCESS);
    ASSERT_EQ(test::SetDescriptorText(lists[1], "D:P(D;;FX;;;BU)"), ERROR_SUCCESS);
    std::size_t attempts = 0;
    EXPECT_EQ(AddGuests([&] { CopyListFrom(lists[++attempts % 2]); }), ExitCode::kSomeFailed);
    EXPECT_GT(attempts, 1U);
    EXPECT_LT(attempts, 20U);
    EXPECT_EQ(test::DaclText(file), test::DaclText(lists[attempts % 2]));
}

}  // namespace
}  // namespace permora
