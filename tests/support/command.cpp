#include "tests/support/command.h"

#include <fcntl.h>
#include <grp.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "platform/linux/base/unique_fd.h"
#include "tests/support/patience.h"

namespace permora::test {

namespace {

using host::UniqueFd;

struct Pipe {
    UniqueFd readEnd;
    UniqueFd writeEnd;
};

bool MakePipe(Pipe& made) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return false;
    made = Pipe{UniqueFd(ends[0]), UniqueFd(ends[1])};
    return true;
}

std::vector<char*> ArgumentVector(const std::vector<std::string>& arguments) {
    std::vector<char*> result;
    result.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments)
        result.push_back(const_cast<char*>(argument.c_str()));
    result.push_back(nullptr);
    return result;
}

// In a new process: takes the three standard descriptors and becomes the program.
[[noreturn]] void Become(char* const* arguments, int input, int output) {
    dup2(input, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    execvp(arguments[0], arguments);
    _exit(127);
}

int ExitCodeOf(pid_t process) {
    int status = 0;
    while (waitpid(process, &status, 0) < 0)
        if (errno != EINTR) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string ReadAll(int descriptor) {
    std::string text;
    char buffer[4096];
    for (;;) {
        const ssize_t count = read(descriptor, buffer, sizeof buffer);
        if (count > 0) text.append(buffer, static_cast<std::size_t>(count));
        if (count == 0 || (count < 0 && errno != EINTR)) return text;
    }
}

// Mounting needs more than the user id 0: a container may withhold it.
bool CanUnshareMounts() {
    const pid_t probe = fork();
    if (probe == 0) _exit(unshare(CLONE_NEWNS) == 0 ? 0 : 1);
    return probe > 0 && ExitCodeOf(probe) == 0;
}

}  // namespace

CommandResult RunCommand(const std::vector<std::string>& arguments, std::string_view input) {
    Pipe toProgram;
    Pipe fromProgram;
    if (!MakePipe(toProgram) || !MakePipe(fromProgram)) return {};
    const std::vector<char*> vector = ArgumentVector(arguments);
    const pid_t process = fork();
    if (process == 0) Become(vector.data(), toProgram.readEnd.Get(), fromProgram.writeEnd.Get());
    if (process < 0) return {};
    fromProgram.writeEnd.Reset();
    CommandResult result;
    const bool isInputWritten =
        write(toProgram.writeEnd.Get(), input.data(), input.size()) == static_cast<ssize_t>(input.size());
    toProgram.writeEnd.Reset();
    result.output = ReadAll(fromProgram.readEnd.Get());
    result.exitCode = ExitCodeOf(process);
    if (!isInputWritten) result.exitCode = -1;
    return result;
}

std::optional<std::string> InAnotherProcess(const std::function<std::string()>& work) {
    Pipe answer;
    if (!MakePipe(answer)) return std::nullopt;
    const pid_t process = fork();
    if (process == 0) {
        const std::string text = work();
        const ssize_t written = write(answer.writeEnd.Get(), text.data(), text.size());
        _exit(written == static_cast<ssize_t>(text.size()) ? 0 : 1);
    }
    answer.writeEnd.Reset();
    std::string text = ReadAll(answer.readEnd.Get());
    if (process < 0 || ExitCodeOf(process) != 0) return std::nullopt;
    return text;
}

std::optional<std::string> AsOrdinaryUser(const std::function<std::string()>& work) {
    return InAnotherProcess([&work] {
        constexpr uid_t kNobody = 65534;
        const bool isOrdinary = setgroups(0, nullptr) == 0 && setresgid(kNobody, kNobody, kNobody) == 0 &&
                                setresuid(kNobody, kNobody, kNobody) == 0;
        if (!isOrdinary) _exit(1);
        // A process that changed its user may not look into its own /proc folder otherwise.
        prctl(PR_SET_DUMPABLE, 1);
        return work();
    });
}

int StartService(const std::vector<std::string>& arguments, const std::string& logFile) {
    const UniqueFd input(open("/dev/null", O_RDONLY | O_CLOEXEC));
    const UniqueFd log(open(logFile.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    if (!input || !log) return -1;
    const std::vector<char*> vector = ArgumentVector(arguments);
    const pid_t parent = getpid();
    const pid_t process = fork();
    if (process == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (getppid() != parent) _exit(127);  // it ended before it could be watched
        Become(vector.data(), input.Get(), log.Get());
    }
    return process;
}

void AwaitServiceEnd(int processId) {
    if (Await([processId] { return waitpid(processId, nullptr, WNOHANG) != 0; })) return;
    kill(processId, SIGKILL);
    ExitCodeOf(processId);
}

std::string MissingProgram(const std::string& program) {
    const char* path = getenv("PATH");
    std::istringstream folders(path != nullptr ? path : "/usr/sbin:/usr/bin:/sbin:/bin");
    for (std::string file; std::getline(folders, file, ':');) {
        file.append("/").append(program);
        if (access(file.c_str(), X_OK) == 0) return {};
    }
    return "the program " + program + " is not installed";
}

std::string CannotMountReason() {
    if (geteuid() != 0) return "mounting needs root";
    if (!CanUnshareMounts()) return "this machine does not let its root mount";
    return {};
}

std::string ReadWholeFile(const std::string& path) {
    const std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

}  // namespace permora::test
