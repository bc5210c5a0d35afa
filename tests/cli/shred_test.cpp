// Deleting for good, as a user of the terminal sees it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <utility>

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
        return RunCommand(
            {"script", "-qec", "stty cols 80; '" + CliPath() + "' shred '" + top + "'", "/dev/null"}, answer);
    };
    const CommandResult refused = onTerminal("no\n");
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_THAT(refused.output, HasSubstr("  " + top));
    EXPECT_THAT(refused.output, HasSubstr("nothing was deleted"));
    EXPECT_TRUE(IsWhole());
    const CommandResult accepted = onTerminal("yes\n");
    EXPECT_EQ(accepted.exitCode, 0);
    EXPECT_THAT(accepted.output, HasSubstr("Counting: "));
    EXPECT_FALSE(std::filesystem::exists(top));
    const CommandResult nothing =
        RunCommand({"script", "-qec", CliPath() + " shred --yes / /gone/x", "/dev/null"});
    EXPECT_EQ(nothing.exitCode, 1) << nothing.output;
    EXPECT_THAT(nothing.output, HasSubstr("it is a drive"));
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

// Before the answer, somebody who may write in the folder above gives the name to another object.
TEST_F(ShredTest, WhatGetsTheNameWhileTheQuestionStandsStays) {
    if (const std::string reason = MissingProgram("script"); !reason.empty()) GTEST_SKIP() << reason;
    const auto shredSwapped = [this](const std::string& from, const std::string& name) {
        const std::string log = folder.Path("log");
        std::filesystem::remove(log);
        return RunCommand({"sh", "-c", R"(cd "$1" && (tries=0
            until grep -qs "Go on" "$2" || [ $tries -gt 6000 ]; do sleep 0.01; tries=$((tries + 1)); done
            mv "$4" "$4-2"; mv "$5" "$4"; echo yes) | script -qefc "'$0' shred '$3'" "$2")",
                           CliPath(), from, log, name, top, folder.Path("important")});
    };
    for (const auto& [from, name] : std::initializer_list<std::pair<std::string, std::string>>{
             {folder.Path(), "top"}, {"/", top}, {top, "."}, {sub, ".."}, {folder.Path(), "./top/."}}) {
        folder.MakeFolder("important");
        folder.MakeFile("important/file");
        const CommandResult result = shredSwapped(from, name);
        EXPECT_EQ(result.exitCode, 1) << name << ": " << result.output;
        EXPECT_THAT(result.output, HasSubstr("its name leads to something else by now")) << name;
        EXPECT_TRUE(std::filesystem::exists(top + "/file")) << name;
        std::filesystem::remove_all(top);
        std::filesystem::rename(top + "-2", top);
        EXPECT_TRUE(IsWhole()) << name;
    }
}

TEST_F(ShredTest, WhatNobodyCanKnowIsSaidAndNeedsForce) {
    if (geteuid() != 0) GTEST_SKIP() << "becoming an ordinary user needs root";
    std::ofstream(second) << "contents";
    chmod(folder.Path().c_str(), 0755);
    chmod(top.c_str(), 0777);
    chmod(second.c_str(), 0666);
    const auto shred = [this](const std::vector<std::string>& options) {
        return AsOrdinaryUser([&] {
            std::vector<std::string> arguments = {"shred", second, "--yes"};
            arguments.insert(arguments.end(), options.begin(), options.end());
            return RunCli(arguments).output;
        });
    };
    EXPECT_THAT(shred({}).value_or(""),
                HasSubstr("not deleted: whether another program has it open cannot be "
                          "known (--force deletes it all the same)\n"));
    EXPECT_EQ(ReadWholeFile(second), "contents");
    EXPECT_EQ(shred({"--force"}), "deleted: 1, left: 0\n");

    // Neither can the names be counted where the user may make no folder.
    std::ofstream(file) << "contents";
    ASSERT_EQ(chown(file.c_str(), 65534, 65534), 0);
    chmod(top.c_str(), 0755);
    const auto refused = AsOrdinaryUser([&] { return RunCli({"shred", file, "--yes"}).output; });
    EXPECT_THAT(refused.value_or(""),
                HasSubstr("not deleted: whether it has further names (hard links) cannot be"));
    EXPECT_EQ(ReadWholeFile(file), "contents");
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
    // Messages must not get into the file, which could have the descriptor of a standard stream.
    EXPECT_EQ(RunCommand({"sh", "-c", R"("$0" shred "$1" --yes <&- >&- 2>&-)", CliPath(), file}).exitCode, 1);
    EXPECT_EQ(ReadWholeFile(file), "contents");
    EXPECT_EQ(RunCli({"shred", file, "--yes", "--force"}).exitCode, 0);
    EXPECT_EQ(ReadWholeFile(folder.Path("other")), std::string(512, '\0'));
}

// The message comes while the file is in the folder where its names are counted.
TEST_F(ShredTest, AFileGoesBackAlsoWhenNobodyReadsAnyMore) {
    std::ofstream(file) << "contents";
    const CommandResult result =
        RunCommand({"sh", "-c", R"({ sleep 0.3; ulimit -f 0; exec "$0" shred "$1" --yes; } 2>&1 | true)",
                    CliPath(), file});
    EXPECT_EQ(result.exitCode, 0) << result.output;
    EXPECT_EQ(ReadWholeFile(file), "contents");
}

TEST_F(ShredTest, SignalsToEndStopIt) {
    // Far more than can be overwritten in the time.
    if (RunCommand({"fallocate", "-l", "8G", second}).exitCode != 0) GTEST_SKIP() << "no room for 8 GiB";
    for (const std::string signal : {"INT", "TERM", "HUP"}) {
        const bool isJson = signal == "HUP";
        // While it is overwritten it is not in its place.
        const CommandResult stopped =
            RunCommand({"sh", "-c", R"(touch -d 2000-01-01 "$1"; "$0" shred "$1" --yes $4 &
                            tries=0 time=0
                            until [ $time -gt 1000000000 ] || [ $tries -gt 6000 ]; do
                                sleep 0.01; tries=$((tries + 1))
                                time=$(stat -c %Y "$3"/.permora-shred-*/second 2>&- || echo 0)
                            done
                            kill -$2 $!; wait $!)",
                        CliPath(), second, signal, top, isJson ? "--json" : ""});
        EXPECT_EQ(stopped.exitCode, 1) << signal;
        EXPECT_THAT(stopped.output, HasSubstr(isJson ? R"("result": "failed")" : "deleted: 0, left: 0\n"))
            << signal;
        EXPECT_THAT(stopped.output, HasSubstr("permora-cli: interrupted: ")) << signal;
    }
    EXPECT_TRUE(std::filesystem::exists(second));
}

}  // namespace
}  // namespace permora::test
