#include "app/administrator_start.h"

#include <utility>

#include "platform/api/errors.h"
#include "platform/host_path.h"

namespace permora {
namespace {

const char* OptionOf(StartWindow window) {
    switch (window) {
        case StartWindow::kPermissions:
            return "--permissions";
        case StartWindow::kProperties:
            return "--properties";
        case StartWindow::kWizard:
            return "--wizard";
        case StartWindow::kMain:
            break;
    }
    return nullptr;
}

// Empty when there is none: from elsewhere what was typed would lead to something else.
std::string AbsoluteHostPath(const std::string& typed) {
    std::string full;
    const bool isPath = FullPathOf(PathFromArgument(typed.c_str()), full) == ERROR_SUCCESS;
    std::string path = isPath ? HostPathFromPath(full) : std::string();
    if (path.empty()) return {};
    const bool endsWithSeparator = full.ends_with('\\');
    return endsWithSeparator && path != full && !path.ends_with('/') ? path + '/' : path;
}

}  // namespace

bool MakeArgumentsForAdministrator(const CommandLine& commandLine, std::vector<std::string>& arguments) {
    arguments = {"--tell-of-start"};
    if (const std::string display = DisplayForAdministrator(); !display.empty())
        arguments.insert(arguments.end(), {"--wayland-display", display});
    if (const char* option = OptionOf(commandLine.window)) arguments.emplace_back(option);
    arguments.emplace_back("--");
    for (const std::string& typed : commandLine.paths) {
        std::string path = AbsoluteHostPath(typed);
        if (path.empty()) return false;
        arguments.push_back(std::move(path));
    }
    return true;
}

AdministratorStart StartAsAdministrator(const CommandLine& commandLine, AdministratorWait wait,
                                        int& exitCode) {
    std::vector<std::string> arguments;
    if (!MakeArgumentsForAdministrator(commandLine, arguments)) return AdministratorStart::kNoPath;
    return StartAsAdministrator(arguments, wait, exitCode);
}

std::string FailureText(AdministratorStart start) {
    switch (start) {
        case AdministratorStart::kStarted:
            break;
        case AdministratorStart::kNobodyAsks:
            return "Cannot start as administrator: the program pkexec, which asks for the rights, is not "
                   "installed.";
        case AdministratorStart::kDismissed:
            return "Not started as administrator: the question for the rights was dismissed.";
        case AdministratorStart::kRefused:
            return "Cannot start as administrator: the rights were refused, or no program is running that "
                   "asks for the password.";
        case AdministratorStart::kNoPath:
            return "Cannot start as administrator: a path leads nowhere.";
        case AdministratorStart::kReplaced:
            return "Cannot start as administrator: the program was replaced since it was started. Close it "
                   "and "
                   "start it again.";
        case AdministratorStart::kFailed:
            return "Cannot start as administrator: the program has ended before it had a window. Perhaps the "
                   "administrator may not use this screen.";
    }
    return {};
}

}  // namespace permora
