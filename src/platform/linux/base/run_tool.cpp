#include "platform/linux/base/run_tool.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

// Debian 12's version of this header lacks it.
extern "C" {
#include <sys/pidfd.h>
}

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <utility>

#include "platform/linux/base/host_errors.h"
#include "platform/linux/base/spawn_plan.h"
#include "platform/linux/base/unique_fd.h"

namespace permora::host {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::array kToolFolders = {"/usr/bin/", "/usr/sbin/", "/bin/", "/sbin/"};

// ERROR_SUCCESS when there is output to read, or the output has ended, before the deadline.
DWORD AwaitReadable(int descriptor, Clock::time_point deadline) {
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0) return ERROR_TIMEOUT;
        constexpr decltype(left) kLongestPoll = 60'000;
        pollfd waited{descriptor, POLLIN, 0};
        const int ready = poll(&waited, 1, static_cast<int>(std::min(left, kLongestPoll)));
        if (ready > 0) return ERROR_SUCCESS;
        if (ready < 0 && errno != EINTR) return ErrorFromErrno(errno);
    }
}

DWORD ReadToEnd(int source, std::size_t limit, Clock::time_point deadline, std::string& text) {
    std::array<char, 16384> block;
    for (;;) {
        if (const DWORD error = AwaitReadable(source, deadline); error != ERROR_SUCCESS) return error;
        const ssize_t count = read(source, block.data(), block.size());
        if (count == 0) return ERROR_SUCCESS;
        if (count < 0) {
            if (errno == EINTR) continue;
            return ErrorFromErrno(errno);
        }
        const auto bytes = static_cast<std::size_t>(count);
        if (bytes > limit - text.size()) return ERROR_FILE_TOO_LARGE;
        text.append(block.data(), bytes);
    }
}

DWORD AwaitExit(pid_t child, Clock::time_point deadline) {
    const UniqueFd process(pidfd_open(child, 0));
    if (!process) return ErrorFromErrno(errno);
    return AwaitReadable(process.Get(), deadline);
}

// A descriptor from which the text can be read to its end, and which is no standard stream.
DWORD MakeSource(const std::string& text, UniqueFd& source) {
    if (text.size() > kLongestInput) return ERROR_INVALID_PARAMETER;
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return ErrorFromErrno(errno);
    const UniqueFd readEnd(ends[0]);
    const UniqueFd writeEnd(ends[1]);
    const ssize_t written = write(writeEnd.Get(), text.data(), text.size());
    if (written != static_cast<ssize_t>(text.size())) return ErrorFromErrno(written < 0 ? errno : EIO);
    source.Reset(fcntl(readEnd.Get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    return source ? ERROR_SUCCESS : ErrorFromErrno(errno);
}

}  // namespace

std::optional<std::string> FindTool(const std::string& name) {
    if (name.empty() || name.find('/') != std::string::npos) return std::nullopt;
    for (const char* folder : kToolFolders) {
        std::string path = folder + name;
        struct stat status {};
        if (stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && access(path.c_str(), X_OK) == 0)
            return path;
    }
    return std::nullopt;
}

DWORD RunTool(const std::string& name, const std::vector<std::string>& arguments, const ToolLimits& limits,
              std::string& output, FailedOutput failedOutput, const ToolInput& input) {
    const Clock::time_point deadline = Clock::now() + limits.time;
    const std::optional<std::string> path = FindTool(name);
    if (!path) return ERROR_FILE_NOT_FOUND;

    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return ErrorFromErrno(errno);
    const UniqueFd source(ends[0]);
    UniqueFd target(ends[1]);
    UniqueFd toRead;
    if (!input.text.empty())
        if (const DWORD error = MakeSource(input.text, toRead); error != ERROR_SUCCESS) return error;
    pid_t child = -1;
    // The parsers know one language.
    std::vector<std::string> environment = {"LC_ALL=C", kToolPath};
    environment.insert(environment.end(), input.environment.begin(), input.environment.end());
    const int problem = SpawnPlan(target.Get(), SpawnPlan::Ties::kOwnGroup, toRead.Get())
                            .Start(*path, arguments, environment, child);
    if (problem != 0) return ErrorFromErrno(problem);
    target.Reset();  // so that the child's end of output is the end of the pipe

    std::string text;
    DWORD error = ReadToEnd(source.Get(), limits.outputBytes, deadline, text);
    if (error == ERROR_SUCCESS) error = AwaitExit(child, deadline);
    if (error != ERROR_SUCCESS) kill(-child, SIGKILL);
    const bool succeeded = EndsWell(child);
    if (error != ERROR_SUCCESS) return error;
    if (succeeded || failedOutput == FailedOutput::kKept) output = std::move(text);
    return succeeded ? ERROR_SUCCESS : ERROR_OPERATION_ABORTED;
}

}  // namespace permora::host
