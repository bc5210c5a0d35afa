#include "platform/linux/shell/desktop_opener.h"

#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <future>
#include <optional>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/base/host_errors.h"
#include "platform/linux/base/run_tool.h"
#include "platform/linux/base/spawn_plan.h"

namespace permora::host {
namespace {

// The longest time until a refusal arrives.
constexpr std::chrono::seconds kPatience{1};

struct Opener {
    std::string path;
    std::vector<std::string> arguments;
};

std::optional<Opener> FindOpener(const std::string& target) {
    // First the program that reads the desktop's databases itself, then the script that looks for others.
    if (auto path = FindTool("gio")) return Opener{*std::move(path), {"open", target}};
    if (auto path = FindTool("xdg-open")) return Opener{*std::move(path), {target}};
    return std::nullopt;
}

// Only what programs need to find the user's desktop, without search paths for programs and libraries.
std::vector<std::string> DesktopEnvironment() {
    constexpr const char* kVariables[] = {
        "DBUS_SESSION_BUS_ADDRESS",
        "DESKTOP_SESSION",
        "DISPLAY",
        "HOME",
        "KDE_FULL_SESSION",
        "KDE_SESSION_VERSION",
        "LANG",
        "LANGUAGE",
        "LC_ALL",
        "LC_MESSAGES",
        "LOGNAME",
        "USER",
        "WAYLAND_DISPLAY",
        "XAUTHORITY",
        "XDG_CACHE_HOME",
        "XDG_CONFIG_DIRS",
        "XDG_CONFIG_HOME",
        "XDG_CURRENT_DESKTOP",
        "XDG_DATA_DIRS",
        "XDG_DATA_HOME",
        "XDG_RUNTIME_DIR",
        "XDG_SESSION_ID",
        "XDG_SESSION_TYPE",
        "XDG_STATE_HOME",
    };
    std::vector<std::string> environment = {kToolPath};
    for (const char* variable : kVariables) {
        const char* value = std::getenv(variable);
        if (value != nullptr) environment.push_back(std::string(variable) + "=" + value);
    }
    return environment;
}

}  // namespace

DWORD OpenWithDesktop(const std::string& target) {
    const std::optional<Opener> opener = FindOpener(target);
    if (!opener) return ERROR_FILE_NOT_FOUND;
    pid_t child = -1;
    const int problem = SpawnPlan(-1, SpawnPlan::Ties::kOwnSession)
                            .Start(opener->path, opener->arguments, DesktopEnvironment(), child);
    if (problem != 0) return ErrorFromErrno(problem);

    // The ended child must be waited for, however long it lives.
    std::promise<bool> verdict;
    std::future<bool> answer = verdict.get_future();
    try {
        std::thread([child, promise = std::move(verdict)]() mutable {
            promise.set_value(EndsWell(child));
        }).detach();
    } catch (const std::system_error&) {
        return ERROR_SUCCESS;  // it runs; what becomes of it nobody can watch
    }
    if (answer.wait_for(kPatience) != std::future_status::ready) return ERROR_SUCCESS;
    return answer.get() ? ERROR_SUCCESS : ERROR_NO_ASSOCIATION;
}

}  // namespace permora::host
