// Wrong arguments, which are reported before anything is touched.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/cli/cli_program.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::HasSubstr;

TEST(ArgumentsTest, WrongArgumentsAreSaidAndTouchNothing) {
    struct Case {
        std::vector<std::string> arguments;
        const char* says;
    };
    const TemporaryFolder folder;
    const std::string path = folder.Path();
    const Case cases[] = {
        {{}, "Examples:"},
        {{"fly", path}, "subcommand"},
        {{"show"}, "PATH"},
        {{"show", ""}, "a path is empty"},
        {{"show", path, "--json", "--sddl"}, "--json"},
        {{"show", path, "--unknown"}, "--unknown"},
        {{"grant", path, "--rights", "Delete"}, "--account"},
        {{"grant", path, "--account", "Everyone"}, "--rights"},
        {{"grant", path, "--account", "", "--rights", "Delete"}, "--account: the name is empty"},
        {{"grant", path, "--account", "Everyone", "--rights", "Delete,Fly"}, "no right is called \"Fly\""},
        {{"deny", path, "--account", "Everyone", "--rights", "1", "--scope", "7"},
         "no scope is called \"7\""},
        {{"deny", path, "--account", "Everyone", "--rights", "1", "--scope", ""}, "no scope is called \"\""},
        {{"grant", path, "--account", "nobody-of-that-name", "--rights", "1"}, "nobody-of-that-name: "},
        {{"revoke", path, "--account", "S-1-"}, "S-1-: "},
        {{"grant", "--account", "Everyone", "--rights", "1"}, "PATH or --share"},
        {{"show", path, "--share", "x"}, "--share"},
        {{"revoke", "--share", "", "--account", "Everyone"}, "the name of a share is empty"},
        {{"shares", "show"}, "NAME"},
        {{"owner", path, "--tree"}, "--set"},
        {{"owner", path, "--set", ""}, "--set: the name is empty"},
        {{"effective", path}, "--account"},
        {{"inherit", path}, "--on"},
        {{"inherit", path, "--on", "--copy"}, "--on"},
    };
    const std::string before = SddlOf(path);
    for (const Case& row : cases) {
        const CommandResult result = RunCli(row.arguments);
        EXPECT_EQ(result.exitCode, 2) << testing::PrintToString(row.arguments);
        EXPECT_THAT(result.output, HasSubstr(row.says)) << testing::PrintToString(row.arguments);
    }
    EXPECT_EQ(SddlOf(path), before);
}

TEST(ArgumentsTest, WhatIsSaidOfAnArgumentNeitherSteersTheTerminalNorForgesLines) {
    const TemporaryFolder folder;
    const std::string hostile = "\x1b[2J\x7f\u009b31m\u202e\nroot: changed\n";
    const std::string printable = "\\u{1b}[2J\\u{7f}\\u{9b}31m\\u{202e}\\u{a}root: changed\\u{a}";
    const std::vector<std::string> commands[] = {
        {"show", folder.Path(), "--" + hostile},
        {"show", folder.Path(), "--json=" + hostile},
        {"accounts", "--find", "x", hostile},
        {"accounts", "[" + hostile},
        {"show", hostile},
        {"show", "--share", hostile},
        {"show", "--", "--" + hostile},
        {"owner", folder.Path(), "--set", hostile},
        {"grant", folder.Path(), "--account", "Everyone", "--rights", hostile},
        {"grant", folder.Path(), "--account", "Everyone", "--rights", "1", "--scope", hostile},
        {"assign", folder.Path(), "--account", "Everyone", "--combination", hostile},
        {"setup", hostile},
        {"shred", "--yes", hostile},
        {"reset", "--yes", hostile},
    };
    for (const std::vector<std::string>& command : commands) {
        const CommandResult result = RunCli(command);
        EXPECT_NE(result.exitCode, 0) << testing::PrintToString(command);
        EXPECT_THAT(result.output, HasSubstr(printable));
        EXPECT_EQ(result.output.find_first_of("\x1b\x7f\x01\xc2\xe2"), result.output.npos) << result.output;
        EXPECT_THAT(result.output, testing::Not(HasSubstr("\nroot: changed"))) << result.output;
    }
}

// Everyone who can write in a folder decides how a shell expands "*".
TEST(ArgumentsTest, AFileIsNeverTakenForAnOption) {
    const std::vector<std::string> commands[] = {
        {"owner", "--set=S-1-5-32-546", "--tree", "file"},
        {"owner", "--tree", "--set", "S-1-5-32-546", "file"},
        {"shred", "--force", "--yes", "file"},
        {"reset", "-x", "file"},
        {"reset", "--yes", ".", "--", "--dry-run"},
        {"--help", "show"},
    };
    for (const std::vector<std::string>& command : commands) {
        for (const std::string& name : command) {
            if (!name.starts_with('-') || name == "--dry-run") continue;
            const TemporaryFolder folder;
            const std::string file = folder.MakeFile("file");
            folder.MakeFile(name);
            std::filesystem::current_path(folder.Path());
            const std::string before = SddlOf(file);
            const CommandResult result = RunCli(command);
            EXPECT_EQ(result.exitCode, 2) << name;
            EXPECT_THAT(result.output, HasSubstr("permora-cli: " + name + ": a file here is called so: "))
                << name;
            EXPECT_EQ(SddlOf(file), before) << name;
            EXPECT_EQ(SddlOf("./" + name), before) << name;
        }
    }
}

TEST(ArgumentsTest, WhatTheParserWouldReadAsItsOwnIsAName) {
    const TemporaryFolder folder;
    std::filesystem::current_path(folder.Path());
    for (const char* name : {"[a]", "++", "{}", "\x01[x", "show"})
        folder.MakeFile(name);
    EXPECT_EQ(RunCli({"shred", "--yes", "[a]", "++", "{}", "\x01[x", "show"}).output,
              "deleted: 5, left: 0\n");
    // Behind a "--" everything is one.
    for (const char* name : {"-x", "--yes"})
        folder.MakeFile(name);
    const CommandResult refused = RunCli({"shred", "--", "--yes", "-x"});
    EXPECT_THAT(refused.output, HasSubstr("it needs --yes where nobody can be asked"));
    EXPECT_EQ(RunCli({"show", "--sddl", "--", "-x", "--yes"}).exitCode, 0);
    EXPECT_TRUE(std::filesystem::exists("--yes"));
}

TEST(ArgumentsTest, HelpAndVersionAreNoFailure) {
    const CommandResult version = RunCli({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_THAT(version.output, testing::MatchesRegex("permora-cli [0-9]+\\.[0-9]+\\.[0-9]+\n"));
    const CommandResult help = RunCli({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    for (const char* word : {"show", "grant", "deny", "revoke", "inherit", "Exit code"})
        EXPECT_THAT(help.output, HasSubstr(word));
    EXPECT_THAT(RunCli({"grant", "--help"}).output, HasSubstr("Take ownership"));
}

}  // namespace
}  // namespace permora::test
