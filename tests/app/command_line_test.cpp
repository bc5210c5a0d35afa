#include "app/command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::HasSubstr;
using Words = std::vector<std::string>;

std::optional<CommandLineAnswer> Read(const Words& words, CommandLine& commandLine) {
    std::vector<const char*> arguments;
    for (const std::string& word : words)
        arguments.push_back(word.c_str());
    return ReadCommandLine(arguments, commandLine);
}

TEST(CommandLineTest, EveryWayToStartIsRead) {
    using enum StartWindow;
    using enum StartAs;
    struct Case {
        Words words;
        StartWindow window;
        StartAs startAs;
        Words paths;
        Words toolkitOptions;
    };
    const Case cases[] = {
        {{}, kMain, kUser, {}, {}},
        {{"/data"}, kMain, kUser, {"/data"}, {}},
        {{"--", "-reverse"}, kMain, kUser, {"-reverse"}, {}},
        {{"--permissions", "a", "b"}, kPermissions, kUser, {"a", "b"}, {}},
        {{"--properties", "--", "a", "--wizard", "-style", "--"},
         kProperties,
         kUser,
         {"a", "--wizard", "-style", "--"},
         {}},
        {{"--wizard", "[a]", "++", "\x01[x", "{}"}, kWizard, kUser, {"[a]", "++", "\x01[x", "{}"}, {}},
        {{"--administrator", "--permissions", "a"}, kPermissions, kAdministrator, {"a"}, {}},
        {{"-reverse", "/data", "-platform", "offscreen"},
         kMain,
         kUser,
         {"/data"},
         {"-reverse", "-platform", "offscreen"}},
        {{"--style=fusion", "--permissions", "-style", "x", "y"},
         kPermissions,
         kUser,
         {"y"},
         {"-style", "fusion", "-style", "x"}},
    };
    for (const Case& row : cases) {
        CommandLine commandLine;
        const auto answer = Read(row.words, commandLine);
        ASSERT_FALSE(answer) << testing::PrintToString(row.words) << answer->text;
        EXPECT_EQ(commandLine.window, row.window) << testing::PrintToString(row.words);
        EXPECT_EQ(commandLine.startAs, row.startAs) << testing::PrintToString(row.words);
        EXPECT_EQ(commandLine.paths, row.paths);
        EXPECT_EQ(commandLine.toolkitOptions, row.toolkitOptions);
    }
}

TEST(CommandLineTest, WrongUseIsSaidAndStartsNothing) {
    const TemporaryFolder folder;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.Path());
    for (const char* name : {"--wizard", "-reverse", "C:x"})
        folder.MakeFile(name);
    const std::pair<Words, const char*> cases[] = {
        {{"a", "b"}, "only one PATH"},
        {{""}, "a path is empty"},
        {{"--permissions"}, "PATH is required"},
        {{"--permissions", "--properties", "a"}, "--properties"},
        {{"--unknown\x1b[2J"}, "--unknown\\u{1b}[2J"},
        {{"-platform"}, "-platform: a value is missing"},
        {{"--permissions", "--wizard", "a"}, "--wizard: a file here is called so"},
        {{"--permissions", "-reverse", "a"}, "-reverse: a file here is called so"},
        {{"--permissions", "--", "C:x"}, "C:x: a file here is called so"},
    };
    for (const auto& [words, says] : cases) {
        CommandLine commandLine;
        const auto answer = Read(words, commandLine);
        ASSERT_TRUE(answer) << testing::PrintToString(words);
        EXPECT_EQ(answer->exitCode, 2);
        EXPECT_THAT(answer->text, HasSubstr(says));
        EXPECT_TRUE(commandLine.paths.empty());
    }
    std::filesystem::current_path(before);
}

TEST(CommandLineTest, HelpNamesWhatIsForUsersAlone) {
    CommandLine commandLine;
    const auto answer = Read({"--help", "--wizard"}, commandLine);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->exitCode, 0);
    for (const char* option : {"--permissions", "--properties", "--wizard", "--administrator", "--version"})
        EXPECT_THAT(answer->text, HasSubstr(option));
    EXPECT_THAT(answer->text, testing::Not(HasSubstr("--tell-of-start")));
}

}  // namespace
}  // namespace permora::test
