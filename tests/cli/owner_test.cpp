// Owners, and what accounts may do: the commands owner and effective.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;

// The owner of an object as ntfssecaudit reads it from the unmounted image.
std::string AuditedOwner(const NtfsVolume& volume, const std::string& path) {
    std::istringstream text(RunCommand({"ntfssecaudit", "-vv", volume.Image(), path}).output);
    for (std::string line; std::getline(text, line);) {
        const std::size_t place = line.find("O:dec ");
        if (place != std::string::npos) return line.substr(place + 6);
    }
    return "none";
}

TEST(OwnerTest, OwnersOfItemsAndTreesStandOnTheDisk) {
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    const TemporaryFolder outside;
    outside.MakeFile("file");
    for (const char* name : {"one", "team", "team/sub", "other"})
        std::filesystem::create_directory(volume.Path(name));
    for (const char* name : {"single", "team/file", "team/sub/deep", "other/file"})
        ASSERT_EQ(RunCommand({"touch", volume.Path(name)}).exitCode, 0);
    std::filesystem::create_directory_symlink(outside.Path(), volume.Path("team/link"));
    std::filesystem::create_directory_symlink(volume.Path("other"), volume.Path("team/sub/link"));
    const std::string ownerOutside = RunCli({"owner", outside.Path("file")}).output;
    const std::string ownerBefore = RunCli({"show", "--sddl", volume.Path("one")}).output.substr(0, 4);

    EXPECT_EQ(RunCli({"owner", volume.Path("single"), "--set", "Guests"}).output,
              volume.Path("single") + ": BUILTIN\\Guests\n");
    EXPECT_THAT(RunCli({"owner", volume.Path("team"), "--set", "Guests", "--tree", "--dry-run"}).output,
                AllOf(HasSubstr("Items: would change: 1, already so: 0, failed: 0\n"),
                      HasSubstr("Below them: would change: 5, already so: 0, passed over: 0\n")));
    const CommandResult several = RunCli({"owner", volume.Path("one"), volume.Path("gone"),
                                          volume.Path("team"), "--set", "S-1-5-21-7-8-9-1001", "--tree"});
    EXPECT_EQ(several.exitCode, 1);
    EXPECT_THAT(several.output, HasSubstr("permora-cli: " + volume.Path("gone") + ": "));
    EXPECT_THAT(several.output, HasSubstr("changed: 5, already so: 0, passed over: 0\n"));
    EXPECT_EQ(RunCli({"owner", outside.Path("file")}).output, ownerOutside);
    volume.Unmount();
    EXPECT_EQ(AuditedOwner(volume, "/single"), "S-1-5-32-546");
    for (const char* path : {"/one", "/team", "/team/file", "/team/sub", "/team/sub/deep", "/team/link"})
        EXPECT_EQ(AuditedOwner(volume, path), "S-1-5-21-7-8-9-1001") << path;
    EXPECT_EQ(ownerBefore, "O:BA");
    for (const char* path : {"/other", "/other/file"})
        EXPECT_EQ(AuditedOwner(volume, path), "S-1-5-32-544") << path;
    EXPECT_THAT(volume.Audit(), HasSubstr("No errors were found"));
}

// Everyone who may write to a file can mostly give it a name in a folder of their own.
TEST(OwnerTest, ALinkedFileChangesHandsOnlyWhenThatIsAsked) {
    const TemporaryFolder folder;
    const std::string top = folder.MakeFolder("top");
    const std::string outside = folder.MakeFile("outside");
    ASSERT_EQ(SetDescriptorText(folder.MakeFile("top/plain"), "O:BA"), 0U);
    if (const std::string reason = CannotHoldListsReason(top); !reason.empty()) GTEST_SKIP() << reason;
    ASSERT_EQ(SetDescriptorText(outside, "O:BA"), 0U);
    std::filesystem::create_hard_link(outside, top + "/linked");
    const CommandResult given = RunCli({"owner", top, "--tree", "--set", "Guests"});
    EXPECT_EQ(given.exitCode, 1);
    EXPECT_THAT(given.output,
                HasSubstr("permora-cli: " + top + "/linked: not changed: it has further names"));
    EXPECT_THAT(given.output, HasSubstr("changed: 1, already so: 0, passed over: 1\n"));
    EXPECT_EQ(RunCli({"owner", outside}).output, outside + ": BUILTIN\\Administrators\n");

    const CommandResult asked = RunCli({"owner", top, "--tree", "--linked", "--set", "Guests"});
    EXPECT_EQ(asked.exitCode, 0);
    EXPECT_EQ(RunCli({"owner", outside}).output, outside + ": BUILTIN\\Guests\n");
    EXPECT_EQ(RunCli({"owner", top, "--linked", "--set", "Guests"}).exitCode, 2);
}

TEST(EffectiveTest, SaysWhatTheListLeavesAndWhatItDoesNotTell) {
    const TemporaryFolder folder;
    if (const std::string reason = CannotHoldListsReason(folder.Path()); !reason.empty())
        GTEST_SKIP() << reason;
    const std::string open = folder.MakeFile("open");
    const std::string full = folder.MakeFile("full");
    ASSERT_EQ(SetDescriptorText(open, "D:NO_ACCESS_CONTROL"), 0U);
    ASSERT_EQ(SetDescriptorText(full, "D:P(D;;WP;;;WD)(A;;FA;;;WD)(A;;FR;;;BG)"), 0U);
    const CommandResult shown = RunCli({"effective", full, "--account", "Guests"});
    EXPECT_EQ(shown.exitCode, 0);
    EXPECT_THAT(shown.output, HasSubstr("  Permission: Special\n"));
    EXPECT_THAT(shown.output, HasSubstr("  Traverse folder / Execute file  no\n"
                                        "  List folder / Read data         yes\n"));
    EXPECT_THAT(shown.output, testing::EndsWith("what an owner may do anyway\n"));

    const CommandResult listed =
        RunCli({"effective", open, folder.Path("gone"), full, "--account", "S-1-1-0", "--json"});
    EXPECT_EQ(listed.exitCode, 1);
    const auto array = ResultsIn(listed.output);
    ASSERT_EQ(array.size(), 2U) << listed.output;
    EXPECT_TRUE(array[0]["rights"].is_null() && array[0]["mask"].is_null());
    EXPECT_EQ(array[1]["mask"], "0xf01df");
    EXPECT_EQ(array[1]["synchronize"], true);
    EXPECT_EQ(array[1]["rights"].size(), 12U);

    // A smaller number would be a wrong answer.
    const CommandResult unknown = RunCli({"effective", full, open, "--account", "S-1-5-21-7-8-9-1001"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_THAT(unknown.output, HasSubstr(full + ": the groups of S-1-5-21-7-8-9-1001 are not known here\n"));
    EXPECT_THAT(unknown.output, testing::Not(HasSubstr("Permission:")));
    EXPECT_THAT(unknown.output, HasSubstr("everyone may do everything"));

    ASSERT_EQ(SetDescriptorText(full, "D:P(A;;0x89;;;BG)"), 0U);
    EXPECT_THAT(RunCli({"effective", full, "--account", "Guests"}).output,
                testing::AllOf(HasSubstr("members of BUILTIN\\Guests may have more or less"),
                               HasSubstr("the right to synchronize is not among them")));
}

TEST(EffectiveTest, ExplainsEachRightByItsEntryItsGroupAndItsFolder) {
    const TemporaryFolder folder;
    const std::string top = folder.MakeFolder("top");
    const std::string file = folder.MakeFile("top/file");
    if (const std::string reason = CannotHoldListsReason(top); !reason.empty()) GTEST_SKIP() << reason;
    ASSERT_EQ(SetDescriptorText(top, "D:P(A;OICI;FR;;;WD)"), 0U);
    ASSERT_EQ(SetDescriptorText(file, "O:BGD:(D;;0x2;;;BG)"), 0U);
    const CommandResult shown = RunCli({"effective", file, "--account", "Guests", "--explain"});
    EXPECT_EQ(shown.exitCode, 0);
    EXPECT_THAT(
        shown.output,
        testing::ContainsRegex("List folder / Read data +yes +entry 2: Allow Special +Everyone +C:.*top\n"));
    EXPECT_THAT(shown.output,
                testing::ContainsRegex("Create files / Write data +no +entry 1: Deny Write "
                                       "file/Create file +the account itself +not inherited\n"));
    EXPECT_THAT(shown.output, HasSubstr("Guests is the owner: it has these rights as well"));

    const CommandResult printed = RunCli({"effective", file, "--account", "Guests", "--explain", "--json"});
    const auto results = ResultsIn(printed.output);
    ASSERT_EQ(results.size(), 1U) << printed.output;
    const auto& json = results[0];
    ASSERT_EQ(json["explanation"].size(), 13U);
    const auto& read = json["explanation"][1];
    EXPECT_EQ(read["answer"], "granted");
    EXPECT_EQ(read["entry"], 2);
    EXPECT_EQ(read["sid"], "S-1-1-0");
    EXPECT_EQ(read["source"], "folder");
    EXPECT_THAT(read["inheritedFrom"].get<std::string>(), testing::EndsWith("\\top"));
    EXPECT_EQ(json["explanation"][4]["answer"], "denied");
    EXPECT_EQ(json["explanation"][9], nlohmann::json({{"right", "Delete"}, {"answer", "notMentioned"}}));
    EXPECT_EQ(json["owner"]["standing"], "always");
}

TEST(EffectiveTest, ComparesSeveralAccountsOverSeveralObjects) {
    const TemporaryFolder folder;
    if (const std::string reason = CannotHoldListsReason(folder.Path()); !reason.empty())
        GTEST_SKIP() << reason;
    const std::string one = folder.MakeFile("one");
    const std::string other = folder.MakeFile("other");
    ASSERT_EQ(SetDescriptorText(one, "D:P(A;;FR;;;BG)"), 0U);
    ASSERT_EQ(SetDescriptorText(other, "D:P(A;;0x1;;;WD)(A;;0x2;;;BG)"), 0U);
    std::vector<std::string> arguments = {"effective", one,       other,       "--account",          "Guests",
                                          "--account", "S-1-1-0", "--account", "S-1-5-21-7-8-9-1001"};
    const CommandResult shown = RunCli(arguments);
    EXPECT_EQ(shown.exitCode, 1) << "one is not known";
    EXPECT_THAT(shown.output, HasSubstr("BUILTIN\\Guests  Everyone  S-1-5-21-7-8-9-1001\n"));
    EXPECT_THAT(shown.output, testing::ContainsRegex("List folder / Read data +yes +no +\\?"));
    const std::string all = shown.output.substr(shown.output.find("All 2 objects together"));
    EXPECT_THAT(all, testing::ContainsRegex("List folder / Read data +all +some +\\?"));
    EXPECT_THAT(all, testing::ContainsRegex("Create files / Write data +some +none +\\?"));
    arguments.emplace_back("--json");
    const CommandResult printed = RunCli(arguments);
    const auto json = ResultsIn(printed.output);
    ASSERT_EQ(json.size(), 6U) << printed.output;
    EXPECT_EQ(json[4]["rights"], nlohmann::json({"List folder / Read data"}));
    EXPECT_TRUE(json[5].contains("unknown") && !json[5].contains("rights"));
}

}  // namespace
}  // namespace permora::test
