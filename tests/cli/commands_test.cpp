// The commands on a folder of the local disk.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

// Administrators may do everything, and objects below inherit it.
constexpr const char* kPlainList = "O:BAG:BAD:P(A;OICI;FA;;;BA)";

// The thirteen rights by number.
unsigned RightOf(std::size_t index) {
    return index < 9 ? 1U << index : 0x10000U << (index - 9);
}

class CommandsTest : public testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = CannotHoldListsReason(folder.Path()); !reason.empty())
            GTEST_SKIP() << reason;
        ASSERT_EQ(SetDescriptorText(top, kPlainList), 0U);
    }

    const TemporaryFolder folder;
    const std::string top = folder.MakeFolder("top");
};

TEST_F(CommandsTest, RightsComeAndGo) {
    const std::string file = folder.MakeFile("top/file");
    ASSERT_EQ(SetDescriptorText(file, "D:"), 0U);
    EXPECT_EQ(EntriesOf(file), "Allow S-1-5-32-544 0xf01ff 16\n");

    EXPECT_EQ(
        RunCli({"grant", top, "--account", "Everyone", "--rights", "List folder/Read data,0x80"}).output,
        top + ": changed\n");
    EXPECT_EQ(RunCli({"deny", top, "--account", "S-1-5-32-546", "--rights", "full control", "--scope",
                      "Files only", "--children-only"})
                  .exitCode,
              0);
    // Rights of the same account, type and scope join.
    EXPECT_EQ(RunCli({"grant", top, "--account", "Everyone", "--rights", "Delete", "--scope", "1"}).exitCode,
              0);
    EXPECT_EQ(EntriesOf(top),
              "Deny S-1-5-32-546 0xf01ff 13\n"
              "Allow S-1-1-0 0x10081 3\n"
              "Allow S-1-5-32-544 0xf01ff 3\n");
    EXPECT_EQ(EntriesOf(file),
              "Deny S-1-5-32-546 0xf01ff 16\n"
              "Allow S-1-1-0 0x10081 16\n"
              "Allow S-1-5-32-544 0xf01ff 16\n");

    EXPECT_EQ(RunCli({"revoke", top, "--account", "Everyone"}).exitCode, 0);
    EXPECT_EQ(RunCli({"revoke", top, "--account", "BUILTIN\\Guests"}).exitCode, 0);
    EXPECT_EQ(EntriesOf(top), "Allow S-1-5-32-544 0xf01ff 3\n");
    EXPECT_EQ(EntriesOf(file), "Allow S-1-5-32-544 0xf01ff 16\n");
}

TEST_F(CommandsTest, RevokeSaysWhatItLeaves) {
    const std::string file = folder.MakeFile("top/file");
    ASSERT_EQ(SetDescriptorText(file, "D:"), 0U);
    const CommandResult result = RunCli({"revoke", file, "--account", "Administrators"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.output, HasSubstr("nothing to remove"));
    EXPECT_THAT(result.output, HasSubstr("the inherited entries for Administrators stay"));
}

TEST_F(CommandsTest, RevokeTellsEntriesOfOtherTypes) {
    const std::string list =
        "D:PAI(XA;;FR;;;BG;(Exists a))(XD;;FR;;;BG;(Exists b))(XA;;FR;;;BG;(Exists c))"
        "(OA;;CR;4c164200-20c0-11d0-a768-00aa006e0529;;BG)(XA;;FR;;;BU;(Exists a))(A;;FA;;;BA)";
    ASSERT_EQ(SetDescriptorText(top, list), 0U);
    const CommandResult result = RunCli({"revoke", top, "--account", "Guests"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.output, HasSubstr("the explicit entries for Guests are of other types than allow and "
                                         "deny, and stay: Callback allow, Callback deny, Object allow\n"));
    EXPECT_THAT(RunCli({"revoke", top, "--account", "Everyone"}).output,
                HasSubstr("nothing to remove: no explicit entry is for Everyone\n"));
    EXPECT_EQ(DaclText(top), list);
}

TEST_F(CommandsTest, AScopeSuitsTheObject) {
    const std::string file = folder.MakeFile("top/file");
    ASSERT_EQ(SetDescriptorText(file, "D:P"), 0U);
    for (const char* scope : {"1", "This folder and files"}) {
        EXPECT_EQ(
            RunCli({"grant", file, "--account", "Everyone", "--rights", "1", "--scope", scope}).exitCode, 0);
    }
    EXPECT_EQ(EntriesOf(file), "Allow S-1-1-0 0x1 0\n");

    const CommandResult refused = RunCli(
        {"grant", file, "--account", "Guests", "--rights", "1", "--scope", "Subfolders and files only"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.output, HasSubstr("would do nothing"));
    EXPECT_EQ(EntriesOf(file), "Allow S-1-1-0 0x1 0\n");
}

TEST_F(CommandsTest, InheritanceIsCutAndRestored) {
    const std::string child = folder.MakeFolder("top/child");
    ASSERT_EQ(SetDescriptorText(child, "D:(A;;FR;;;WD)"), 0U);
    const std::string inheriting = EntriesOf(child);
    EXPECT_EQ(inheriting, "Allow S-1-1-0 0x20089 0\nAllow S-1-5-32-544 0xf01ff 19\n");

    EXPECT_EQ(RunCli({"inherit", child, "--copy"}).exitCode, 0);
    EXPECT_EQ(EntriesOf(child), "Allow S-1-5-32-544 0xf01ff 3\nAllow S-1-1-0 0x20089 0\n");
    EXPECT_THAT(RunCli({"show", child}).output, HasSubstr("Inherits: no"));

    ASSERT_EQ(SetDescriptorText(child, "D:(A;;FR;;;WD)"), 0U);
    EXPECT_EQ(RunCli({"inherit", child, "--remove"}).exitCode, 0);
    EXPECT_EQ(EntriesOf(child), "Allow S-1-1-0 0x20089 0\n");
    // A change of the entries keeps the choice.
    EXPECT_EQ(RunCli({"deny", child, "--account", "Guests", "--rights", "Delete", "--scope", "0"}).exitCode,
              0);
    EXPECT_EQ(RunCli({"revoke", child, "--account", "Guests"}).exitCode, 0);
    EXPECT_EQ(EntriesOf(child), "Allow S-1-1-0 0x20089 0\n");

    EXPECT_EQ(RunCli({"inherit", child, "--on"}).exitCode, 0);
    EXPECT_EQ(EntriesOf(child), inheriting);
    EXPECT_THAT(RunCli({"show", child}).output, HasSubstr("Inherits: yes"));

    const CommandResult root = RunCli({"inherit", "C:\\", "--on"});
    EXPECT_EQ(root.exitCode, 1);
    EXPECT_THAT(root.output, HasSubstr("C:\\: not changed"));
}

TEST_F(CommandsTest, ADryRunShowsBothStatesAndWritesNothing) {
    const std::string before = SddlOf(top);
    const CommandResult grant =
        RunCli({"grant", top, "--account", "Everyone", "--rights", "Delete", "--dry-run"});
    EXPECT_EQ(grant.exitCode, 0);
    const std::size_t after = grant.output.find(top + " after:\n");
    ASSERT_NE(after, std::string::npos) << grant.output;
    EXPECT_THAT(grant.output.substr(0, after), HasSubstr(top + " before:\n"));
    EXPECT_THAT(grant.output.substr(0, after), Not(HasSubstr("Everyone")));
    EXPECT_THAT(
        grant.output.substr(after),
        HasSubstr(
            "Allow  Everyone                Delete        Not inherited  This folder, subfolders and files"));

    const CommandResult inherit = RunCli({"inherit", top, "--on", "--dry-run"});
    EXPECT_THAT(inherit.output, HasSubstr("the entries that the parent hands down come to these"));
    EXPECT_THAT(
        RunCli({"revoke", top, "--account", "Administrators", "--dry-run"}).output,
        AllOf(HasSubstr("nobody has access"), HasSubstr("Items: would change: 1, already so: 0, failed: 0\n"),
              HasSubstr("Entries of their own that items would lose:\n  " + top + ": Allow BUILTIN"),
              HasSubstr("Locked out would be everyone but the owner, from:\n  " + top + '\n')));
    const std::string child = folder.MakeFolder("top/child");
    for (const auto& [one, other] : {std::pair{top, child}, {child, top}})
        EXPECT_THAT(RunCli({"inherit", one, other, "--on", "--dry-run"}).output,
                    HasSubstr(child + ": is in " + top + ", which is named, too"));
    EXPECT_EQ(SddlOf(top), before);
}

TEST_F(CommandsTest, NoListAnEmptyOneAndForeignEntriesAreToldApart) {
    struct Case {
        const char* sddl;
        const char* shows;
        const char* entries;  // in JSON
        const char* permission;
    };
    const Case cases[] = {
        {"D:NO_ACCESS_CONTROL", "everyone may do everything", "null", "--replace-null-list"},
        {"D:P", "nobody has access", "[]", ""},
        {"D:P(A;;FR;;;WD)(D;;FR;;;BG)", "do not stand in the usual order", "Deny", ""},
        {"D:P(OA;;RP;4c164200-20c0-11d0-a768-00aa006e0529;;BG)(A;;FR;;;WD)", "1 entry of another type",
         "Object allow", "--drop-other-entries"},
        // Flags of entries that audit.
        {"D:P(A;SA;FR;;;BG)(A;;FR;;;WD)", "1 entry is not valid", "S-1-5-32-546", "--drop-other-entries"},
    };
    for (const Case& row : cases) {
        ASSERT_EQ(SetDescriptorText(top, row.sddl), 0U) << row.sddl;
        const std::string before = SddlOf(top);
        EXPECT_THAT(RunCli({"show", top}).output, HasSubstr(row.shows));
        EXPECT_THAT(RunCli({"show", "--json", top}).output, HasSubstr(row.entries));
        std::vector<std::string> grant = {"grant", top, "--account", "Administrators", "--rights", "1"};
        if (row.permission[0] != '\0') {
            const CommandResult refused = RunCli(grant);
            EXPECT_EQ(refused.exitCode, 1) << row.sddl;
            EXPECT_THAT(refused.output, HasSubstr(row.permission));
            EXPECT_EQ(SddlOf(top), before);
            grant.emplace_back(row.permission);
        }
        EXPECT_EQ(RunCli(grant).exitCode, 0) << row.sddl;
        EXPECT_THAT(EntriesOf(top), HasSubstr("Allow S-1-5-32-544 0x1 3\n"));
    }
}

TEST_F(CommandsTest, EveryFailingPathIsNamedAndTheOthersAreDone) {
    const std::string first = folder.MakeFile("top/first");
    const std::string damaged = folder.MakeFile("top/damaged");
    const std::string last = folder.MakeFile("top/last");
    const char* attribute = geteuid() == 0 ? "security.NTACL" : "user.permora.sd";
    ASSERT_EQ(setxattr(damaged.c_str(), attribute, "\x01\x00garbage", 9, 0), 0);
    const std::string missing = folder.Path("missing");

    const CommandResult result =
        RunCli({"grant", first, damaged, missing, last, "--account", "Everyone", "--rights", "Delete"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.output, HasSubstr(first + ": changed\n"));
    EXPECT_THAT(result.output, HasSubstr("permora-cli: " + damaged + ": "));
    EXPECT_THAT(result.output, HasSubstr("permora-cli: " + missing + ": "));
    EXPECT_THAT(result.output, HasSubstr(last + ": changed\n"));
    char kept[16] = {};
    EXPECT_EQ(getxattr(damaged.c_str(), attribute, kept, sizeof kept), 9);

    const CommandResult shown = RunCli({"show", first, missing, last});
    EXPECT_EQ(shown.exitCode, 1);
    EXPECT_LT(shown.output.find(first + "\n"), shown.output.find(last + "\n"));
}

TEST_F(CommandsTest, JsonOfSeveralIsAnArrayInTheirOrderUnderTheTypedPaths) {
    folder.MakeFile("top/file");
    std::filesystem::current_path(folder.Path());
    std::string windowsPath = "C:" + top;
    std::replace(windowsPath.begin(), windowsPath.end(), '/', '\\');
    const CommandResult result = RunCli({"show", "--json", "top/file", "top", windowsPath});
    nlohmann::json objects = ResultsIn(result.output);
    ASSERT_TRUE(objects.is_array()) << result.output;
    ASSERT_EQ(objects.size(), 3U);
    EXPECT_EQ(objects[0]["path"], "top/file");
    EXPECT_TRUE(objects[1].contains("kept"));
    objects[1].erase("kept");  // what else is in it depends on the machine's shares
    EXPECT_EQ(objects[1], (nlohmann::json{{"path", "top"},
                                          {"owner", "BUILTIN\\Administrators"},
                                          {"inherits", false},
                                          {"entries",
                                           {{{"type", "Allow"},
                                             {"aceType", 0},
                                             {"account", "BUILTIN\\Administrators"},
                                             {"sid", "S-1-5-32-544"},
                                             {"mask", "0xf01ff"},
                                             {"synchronize", true},
                                             {"permission", "Full control"},
                                             {"inherited", false},
                                             {"source", "own"},
                                             {"inheritedFrom", nullptr},
                                             {"applyTo", "This folder, subfolders and files"},
                                             {"childrenOnly", false},
                                             {"flags", 3},
                                             {"sddl", "(A;OICI;FA;;;BA)"}}}}}));
    EXPECT_EQ(objects[2]["path"], windowsPath);
    EXPECT_EQ(objects[2]["entries"], objects[1]["entries"]);
}

TEST_F(CommandsTest, JsonIsAsciiAndLosesNoByteOfAName) {
    const std::string name = "\x7f\u009b31m\u202e\xe2\x82x\xff\"\\\n\U0001f600";
    folder.MakeFile("top/" + name);
    std::filesystem::current_path(top);
    const std::string output = RunCli({"show", "--json", name, "."}).output;
    EXPECT_TRUE(std::ranges::all_of(output, [](char c) { return c == '\n' || (c >= ' ' && c <= '~'); }))
        << output;
    const nlohmann::json objects = ResultsIn(output);
    ASSERT_EQ(objects.size(), 2U) << output;
    EXPECT_EQ(objects[0]["path"], "\x7f\u009b31m\u202e\ufffdx\ufffd\"\\\n\U0001f600");
    EXPECT_EQ(objects[0]["pathBytes"], "7fc29b33316de280aee28278ff225c0af09f9880");
    EXPECT_EQ(objects[1]["path"], ".");
    EXPECT_FALSE(objects[1].contains("pathBytes"));
}

TEST_F(CommandsTest, ANameMeansThatOneObject) {
    // Each is beside an object that careless parsing would reach instead, and gets a right of its own.
    const std::vector<std::string> names = {"[a]",  "a",   "./C:",    "./b\\c", "b",     "-x", "{}",
                                            "end.", "end", "\x1b[2J", "\xff",   "grant", "++"};
    for (const std::string& name : names)
        ASSERT_EQ(SetDescriptorText(folder.MakeFile("top/" + name), "D:P"), 0U) << name;
    std::filesystem::current_path(top);
    std::vector<std::string> showAll = {"show", "--json", "--"};
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string right = std::to_string(RightOf(i));
        EXPECT_EQ(RunCli({"grant", "--account", "Everyone", "--rights", right, "--", names[i]}).exitCode, 0)
            << names[i];
        showAll.push_back(names[i]);
    }
    const nlohmann::json objects = ResultsIn(RunCli(showAll).output);
    ASSERT_EQ(objects.size(), names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        ASSERT_EQ(objects[i]["entries"].size(), 1U) << names[i];
        std::ostringstream mask;
        mask << "0x" << std::hex << RightOf(i);
        EXPECT_EQ(objects[i]["entries"][0]["mask"], mask.str()) << names[i];
    }
    EXPECT_THAT(RunCli({"show", "\x1b[2J"}).output, HasSubstr("\\u{1b}[2J"));
    // Without the "./" it could also mean the drive. A shell may produce it from "*".
    const CommandResult ambiguous = RunCli({"show", "C:"});
    EXPECT_EQ(ambiguous.exitCode, 1);
    EXPECT_THAT(ambiguous.output, HasSubstr("permora-cli: C:: a file here is called so: "));
}

TEST_F(CommandsTest, ALinkIsNeverFollowedAtTheEndOfAPath) {
    const std::string file = folder.MakeFile("top/file");
    const std::string link = folder.Path("link");
    const std::string toFile = folder.Path("to-file");
    std::filesystem::create_directory_symlink(top, link);
    std::filesystem::create_symlink(file, toFile);
    const std::string before = SddlOf(top) + SddlOf(file);
    for (const std::string& path : {link, toFile})
        RunCli({"grant", path, "--account", "Everyone", "--rights", "1"});
    // With a separator at the end, it would mean its target.
    const std::string linkBefore = SddlOf(link);
    for (const std::string& path : {link + "/", link + "/.", toFile + "/", file + "/"}) {
        const CommandResult refused = RunCli({"grant", path, "--account", "Guests", "--rights", "2"});
        EXPECT_THAT(refused.output, HasSubstr(path + ": Not a directory")) << refused.exitCode;
    }
    EXPECT_EQ(SddlOf(link), linkBefore);
    EXPECT_EQ(SddlOf(top) + SddlOf(file), before);
    // In the middle it means the folder behind it.
    EXPECT_EQ(RunCli({"grant", link + "/file", "--account", "Guests", "--rights", "1"}).exitCode, 0);
    EXPECT_THAT(EntriesOf(file), HasSubstr("Allow S-1-5-32-546 0x1 0\n"));
}

TEST(AccountsCommand, FindsByNameSidAndTypeAndSaysTheSameInBothForms) {
    const std::string table = RunCli({"accounts"}).output;
    EXPECT_THAT(table, HasSubstr("\nBUILTIN\\Administrators "));
    EXPECT_THAT(table, HasSubstr("\\root "));
    for (const char* text : {"builtin\\ADMIN", "S-1-5-32-544"}) {
        const nlohmann::json found = ResultsIn(RunCli({"accounts", "--json", "--find", text}).output);
        ASSERT_EQ(found.size(), 1U) << text;
        EXPECT_EQ(found[0]["account"], "BUILTIN\\Administrators");
        EXPECT_EQ(found[0]["type"], "Alias");
    }
    EXPECT_EQ(ResultsIn(RunCli({"accounts", "--json", "--search", "[nobody has this"}).output),
              nlohmann::json::array());
}

}  // namespace
}  // namespace permora::test
