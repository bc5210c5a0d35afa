#include "platform/linux/base/run_tool.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/base/unique_fd.h"
#include "tests/support/command.h"
#include "tests/support/patience.h"
#include "tests/support/scoped_variable.h"
#include "tests/support/temporary_folder.h"

namespace permora::host {
namespace {

using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;

std::string OutputOf(const std::string& tool, const std::vector<std::string>& arguments) {
    std::string output = "nothing stored";
    EXPECT_EQ(RunTool(tool, arguments, {}, output), ERROR_SUCCESS);
    return output;
}

TEST(RunToolTest, HandsArgumentsOverAsTheyAre) {
    EXPECT_EQ(OutputOf("printf", {"%s|%s|%s", "two words", "$HOME; *", ""}), "two words|$HOME; *|");
}

TEST(RunToolTest, GivesTheToolNothingOfThisProcess) {
    // Open across exec, as other libraries open theirs.
    const UniqueFd leaking(fcntl(UniqueFd(open("/dev/null", O_RDONLY)).Get(), F_DUPFD, 500));
    ASSERT_TRUE(leaking);
    const test::ScopedVariable foreign("LD_PRELOAD_OF_SOMEBODY", "x");
    EXPECT_EQ(OutputOf("env", {}), "LC_ALL=C\nPATH=/usr/bin:/usr/sbin:/bin:/sbin\n");
    EXPECT_EQ(OutputOf("cat", {}), "");
    const std::string open = OutputOf("sh", {"-c", "echo /proc/$$/fd/*; echo hidden >&2"});
    EXPECT_THAT(open, HasSubstr("/fd/1 "));
    EXPECT_THAT(open, Not(AnyOf(HasSubstr("/fd/" + std::to_string(leaking.Get())), HasSubstr("hidden"))));
}

TEST(RunToolTest, FindsToolsInTheSystemsFoldersOnly) {
    const test::ScopedVariable path("PATH", "/tmp");
    EXPECT_THAT(FindTool("sh").value_or(""), testing::EndsWith("bin/sh"));
    for (const char* name : {"", ".", "/bin/sh", "../bin/sh", "no-such-tool"})
        EXPECT_FALSE(FindTool(name)) << name;
}

TEST(RunToolTest, ReportsEveryWayToFailAndStoresNothing) {
    using std::chrono::milliseconds;
    constexpr std::size_t kRoom = 1 << 20;
    const struct {
        const char* what;
        std::string tool;
        std::vector<std::string> arguments;
        ToolLimits limits;
        DWORD error;
    } cases[] = {
        {"no such tool", "no-such-tool", {}, {}, ERROR_FILE_NOT_FOUND},
        {"exit code", "sh", {"-c", "echo text; exit 3"}, {}, ERROR_OPERATION_ABORTED},
        {"signal", "sh", {"-c", "echo text; kill -9 $$"}, {}, ERROR_OPERATION_ABORTED},
        {"silent for too long", "sleep", {"100"}, {milliseconds(50), kRoom}, ERROR_TIMEOUT},
        {"output closed, still running",
         "sh",
         {"-c", "exec >&-; sleep 100"},
         {milliseconds(50), kRoom},
         ERROR_TIMEOUT},
        {"output kept open by a child",
         "sh",
         {"-c", "sleep 100 & echo text"},
         {milliseconds(50), kRoom},
         ERROR_TIMEOUT},
        {"writes for ever", "yes", {}, {milliseconds(20'000), kRoom}, ERROR_FILE_TOO_LARGE},
        {"a byte too many", "printf", {"12345"}, {milliseconds(20'000), 4}, ERROR_FILE_TOO_LARGE},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.what);
        std::string output = "as before";
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(RunTool(entry.tool, entry.arguments, entry.limits, output), entry.error);
        EXPECT_EQ(output, "as before");
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(50));
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
        EXPECT_EQ(errno, ECHILD);
    }
}

TEST(RunToolTest, EndsWhatTheToolHasStarted) {
    const test::TemporaryFolder folder;
    const std::string file = folder.Path("id");
    std::string output;
    // It is ended for what it writes, which it does when the other one has begun.
    EXPECT_EQ(RunTool("sh", {"-c", "sleep 100 & echo $! > " + file + "; echo too much; wait"},
                      {std::chrono::seconds(20), 4}, output),
              ERROR_FILE_TOO_LARGE);
    const std::string started = "/proc/" + std::to_string(std::stoi(test::ReadWholeFile(file))) + "/cmdline";
    EXPECT_TRUE(test::Await([&started] { return test::ReadWholeFile(started).empty(); }));
}

TEST(RunToolTest, KeepsWhatAFailedToolWroteWhereItIsWanted) {
    std::string output;
    EXPECT_EQ(RunTool("sh", {"-c", "printf some; exit 1"}, {}, output, FailedOutput::kKept),
              ERROR_OPERATION_ABORTED);
    EXPECT_EQ(output, "some");
}

}  // namespace
}  // namespace permora::host
