// Deleting for good, as a user of the terminal sees it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "tests/cli/cli_program.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::HasSubstr;

class ShredTest : public testing::Test {
  protected:
    bool IsWhole() const { return std::filesystem::exists(file) && std::filesystem::exists(second); }

    const TemporaryFolder folder;
    const std::string top = folder.MakeFolder("top");
    const std::string sub = folder.MakeFolder("top/sub");
    const std::string file = folder.MakeFile("top/sub/file");
    const std::string second = folder.MakeFile("top/second");
};

TEST_F(ShredTest, EverythingGoesAndIsCounted) {
    std::filesystem::create_directory_symlink("/etc", top + "/link");
    const CommandResult shredded = RunCli({"shred", top, "--yes"});
    EXPECT_EQ(shredded.exitCode, 0);
    EXPECT_EQ(shredded.output, "deleted: 5, left: 0\n");
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST_F(ShredTest, NothingIsTouchedWithoutConsent) {
    const CommandResult piped = RunCli({"shred", top});
    EXPECT_EQ(piped.exitCode, 2);
    EXPECT_THAT(piped.output, HasSubstr("--yes"));
    if (const std::string reason = MissingProgram("script"); !reason.empty()) GTEST_SKIP() << reason;
    const auto onTerminal = [this](const char* answer) {
        return RunCommand({"script", "-qec", '\'' + CliPath() + "' shred '" + top + "'", "/dev/null"},
                          answer);
    };
    const CommandResult refused = onTerminal("no\n");
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_THAT(refused.output, HasSubstr("  " + top));
    EXPECT_THAT(refused.output, HasSubstr("nothing was deleted"));
    EXPECT_TRUE(IsWhole());
    EXPECT_EQ(onTerminal("yes\n").exitCode, 0);
    EXPECT_FALSE(std::filesystem::exists(top));
}

TEST_F(ShredTest, WhatIsSwappedWhileTheQuestionStandsIsNotReached) {
    if (const std::string reason = MissingProgram("script"); !reason.empty()) GTEST_SKIP() << reason;
    folder.MakeFolder("other");
    const std::string other = folder.MakeFile("other/file");
    const CommandResult result = RunCommand({"sh", "-c",
                                             R"(cd "$1" && (until grep -qs "Go on" "$2"; do sleep 0.01; done
            mv "$1" "$1-moved"; ln -s "$3" "$1"; echo yes) | script -qefc "'$0' shred file" "$2")",
                                             CliPath(), sub, folder.Path("log"), folder.Path("other")});
    EXPECT_EQ(result.exitCode, 0) << result.output;
    EXPECT_TRUE(std::filesystem::exists(other));
    EXPECT_TRUE(std::filesystem::is_empty(sub + "-moved"));
}

TEST_F(ShredTest, WhatStaysIsNamedAsItWasTyped) {
    chmod(file.c_str(), 0444);
    std::filesystem::current_path(folder.Path());
    const CommandResult shredded = RunCli({"shred", "./top/", "missing", "C:\\", "--yes"});
    std::filesystem::current_path("/");
    EXPECT_EQ(shredded.exitCode, 1);
    EXPECT_THAT(shredded.output, HasSubstr("permora-cli: ./top/sub/file: cannot open file: "));
    EXPECT_THAT(shredded.output, HasSubstr("permora-cli: ./top/sub: cannot remove directory: "));
    EXPECT_THAT(shredded.output, HasSubstr("permora-cli: ./top/: cannot remove directory: "));
    EXPECT_THAT(shredded.output, HasSubstr("permora-cli: missing: cannot get attributes: "));
    EXPECT_THAT(shredded.output, HasSubstr("permora-cli: C:\\: not deleted: it is a drive\n"));
    EXPECT_THAT(shredded.output, HasSubstr("deleted: 1, left: 5\n"));
    EXPECT_TRUE(std::filesystem::exists(file));
}

TEST_F(ShredTest, AFileWithFurtherNamesNeedsForce) {
    std::ofstream(file) << "contents";
    std::filesystem::create_hard_link(file, folder.Path("other"));
    const CommandResult refused = RunCli({"shred", file, "--yes"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.output, HasSubstr("hard links"));
    // What is said must not get into the file, which could be open under the number of a stream.
    EXPECT_EQ(RunCommand({"sh", "-c", R"("$0" shred "$1" --yes <&- >&- 2>&-)", CliPath(), file}).exitCode, 1);
    EXPECT_EQ(ReadWholeFile(file), "contents");
    EXPECT_EQ(RunCli({"shred", file, "--yes", "--force"}).exitCode, 0);
    EXPECT_EQ(ReadWholeFile(folder.Path("other")), std::string(512, '\0'));
}

TEST_F(ShredTest, SignalsToEndStopIt) {
    // Far more than can be overwritten in the time.
    std::ofstream(second) << "x";
    std::filesystem::resize_file(second, std::uintmax_t{64} << 30);
    for (const char* signal : {"INT", "TERM", "HUP"}) {
        const CommandResult stopped =
            RunCommand({"sh", "-c", R"(before=$(stat -c %b "$1"); "$0" shred "$1" --yes &
                            until [ $(stat -c %b "$1") -gt $((before + 8)) ]; do sleep 0.01; done
                            kill -$2 $!; wait $!)",
                        CliPath(), second, signal});
        EXPECT_EQ(stopped.exitCode, 1) << signal;
        EXPECT_THAT(stopped.output, HasSubstr("deleted: 0, left: 0\n")) << signal;
        EXPECT_THAT(stopped.output, HasSubstr("permora-cli: interrupted: ")) << signal;
    }
    EXPECT_TRUE(std::filesystem::exists(second));
}

}  // namespace
}  // namespace permora::test
