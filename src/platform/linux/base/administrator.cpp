#include "platform/administrator.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "platform/ascii.h"
#include "platform/linux/base/spawn_plan.h"
#include "platform/linux/base/unique_fd.h"

namespace permora {
namespace {

constexpr std::string_view kStartWord = "started\n";

// Of pkexec itself; this program has none of them.
constexpr int kDismissedCode = 126;
constexpr int kRefusedCode = 127;

constexpr auto kNobody = static_cast<uid_t>(-1);

bool IsSet(const char* variable) {
    return variable != nullptr && *variable != '\0';
}

// On the user's own PATH: this process has no other rights than the user's. Root starts nothing that way.
std::optional<std::string> FindAsker() {
    const char* const folders = std::getenv("PATH");
    std::string_view rest = IsSet(folders) ? folders : "/usr/bin:/bin";
    while (!rest.empty()) {
        const std::string path = std::string(TakeUntil(':', rest)) + "/pkexec";
        struct stat status {};
        if (path.front() == '/' && stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
            access(path.c_str(), X_OK) == 0)
            return path;
    }
    return std::nullopt;
}

std::string OwnPath() {
    std::array<char, PATH_MAX> path{};
    return readlink("/proc/self/exe", path.data(), path.size() - 1) > 0 ? path.data() : "";
}

// All of it: pkexec hands on what leads to an X server and forgets the rest.
std::vector<std::string> OwnEnvironment() {
    std::vector<std::string> environment;
    for (char** entry = environ; *entry != nullptr; ++entry)
        environment.emplace_back(*entry);
    return environment;
}

// Whether the new process has said that it has started before it closed its output.
bool AwaitStart(int source) {
    std::string said;
    std::array<char, kStartWord.size()> block{};
    while (said.size() < kStartWord.size()) {
        const ssize_t count = read(source, block.data(), kStartWord.size() - said.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        said.append(block.data(), static_cast<std::size_t>(count));
    }
    return said == kStartWord;
}

// The exit code of a process; that of no program when a signal has ended it.
int AwaitEnd(pid_t child) {
    constexpr int kKilled = -1;
    int status = 0;
    pid_t reaped = -1;
    do {
        reaped = waitpid(child, &status, 0);
    } while (reaped < 0 && errno == EINTR);
    return reaped == child && WIFEXITED(status) ? WEXITSTATUS(status) : kKilled;
}

AdministratorStart MeaningOf(int exitCode) {
    if (exitCode == kDismissedCode) return AdministratorStart::kDismissed;
    return exitCode == kRefusedCode ? AdministratorStart::kRefused : AdministratorStart::kFailed;
}

std::optional<uid_t> UserOfStart() {
    const char* const text = std::getenv("PKEXEC_UID");
    if (geteuid() != 0 || !IsSet(text)) return std::nullopt;
    const std::string_view digits = text;
    uid_t user = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), user);
    if (error != std::errc() || end != digits.data() + digits.size()) return kNobody;
    return user;
}

// None, if nobody listens there.
host::UniqueFd Connect(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) return {};
    path.copy(address.sun_path, path.size());
    host::UniqueFd connection(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!connection ||
        connect(connection.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return {};
    return connection;
}

// Who began to listen at the other end.
uid_t UserAtOtherEnd(const host::UniqueFd& connection) {
    ucred credentials{};
    socklen_t size = sizeof credentials;
    const bool isKnown = getsockopt(connection.Get(), SOL_SOCKET, SO_PEERCRED, &credentials, &size) == 0;
    return isKnown ? credentials.uid : kNobody;
}

}  // namespace

bool IsAdministrator() {
    return geteuid() == 0;
}

bool CanAskForAdministrator() {
    return !IsAdministrator() && FindAsker().has_value();
}

AdministratorStart StartAsAdministrator(const std::vector<std::string>& arguments, AdministratorWait wait,
                                        int& exitCode) {
    const std::optional<std::string> asker = IsAdministrator() ? std::nullopt : FindAsker();
    if (!asker) return AdministratorStart::kNobodyAsks;
    // The kernel adds a remark to the path of a program whose file was removed.
    const std::string program = OwnPath();
    if (access(program.c_str(), X_OK) != 0) return AdministratorStart::kReplaced;
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return AdministratorStart::kFailed;
    const host::UniqueFd source(ends[0]);
    host::UniqueFd target(ends[1]);
    std::vector<std::string> command = {"--disable-internal-agent", program};
    command.insert(command.end(), arguments.begin(), arguments.end());
    pid_t child = -1;
    const int problem = host::SpawnPlan(target.Get(), host::SpawnPlan::Ties::kOwnSession)
                            .Start(*asker, command, OwnEnvironment(), child);
    if (problem != 0) return AdministratorStart::kFailed;
    target.Reset();  // so that the new process's end is the end of the pipe
    if (!AwaitStart(source.Get())) return MeaningOf(AwaitEnd(child));
    if (wait == AdministratorWait::kForEnd) exitCode = AwaitEnd(child);
    return AdministratorStart::kStarted;
}

std::string DisplayForAdministrator() {
    const char* const display = std::getenv("WAYLAND_DISPLAY");
    const char* const folder = std::getenv("XDG_RUNTIME_DIR");
    if (!IsSet(display)) return {};
    if (*display == '/') return display;
    return IsSet(folder) ? std::string(folder) + '/' + display : std::string();
}

bool IsStartedForUser() {
    return UserOfStart().has_value();
}

// The toolkit goes on with the connection that was checked here, since the path may lead elsewhere a moment
// later. By the path the toolkit sees which kind of screen there is, and programs that are started from here
// find it.
bool UseDisplayOfUser(const std::string& path) {
    const std::optional<uid_t> user = UserOfStart();
    if (!user || *user == kNobody || !path.starts_with('/')) return false;
    const host::UniqueFd connection = Connect(path);
    if (!connection || UserAtOtherEnd(connection) != *user) return false;
    const int kept = fcntl(connection.Get(), F_DUPFD_CLOEXEC, 0);  // the toolkit closes it
    return kept >= 0 && setenv("WAYLAND_SOCKET", std::to_string(kept).c_str(), 1) == 0 &&
           setenv("WAYLAND_DISPLAY", path.c_str(), 1) == 0;
}

void TellOfStart() {
    // Who waits may have gone.
    static_cast<void>(!write(STDOUT_FILENO, kStartWord.data(), kStartWord.size()));
    const host::UniqueFd nowhere(open("/dev/null", O_WRONLY | O_CLOEXEC));
    if (nowhere) dup2(nowhere.Get(), STDOUT_FILENO);
}

}  // namespace permora
