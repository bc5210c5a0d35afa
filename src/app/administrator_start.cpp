#include "app/administrator_start.h"

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

// A path that leads nowhere stays as it was typed: the new process says what is wrong with it.
std::string AbsoluteHostPath(const std::string& typed) {
    std::string full;
    const bool isPath = FullPathOf(PathFromArgument(typed.c_str()), full) == ERROR_SUCCESS;
    std::string path = isPath ? HostPathFromPath(full) : std::string();
    if (path.empty()) return typed;
    const bool endsWithSeparator = full.ends_with('\\');
    return endsWithSeparator && !path.ends_with('/') ? path + '/' : path;
}

}  // namespace

std::vector<std::string> ArgumentsForAdministrator(const CommandLine& commandLine) {
    std::vector<std::string> arguments = {"--tell-of-start"};
    if (const std::string display = DisplayForAdministrator(); !display.empty())
        arguments.insert(arguments.end(), {"--wayland-display", display});
    if (const char* option = OptionOf(commandLine.window)) arguments.emplace_back(option);
    arguments.emplace_back("--");
    for (const std::string& path : commandLine.paths)
        arguments.push_back(AbsoluteHostPath(path));
    return arguments;
}

std::string FailureText(AdministratorStart start) {
    switch (start) {
        case AdministratorStart::kStarted:
            break;
        case AdministratorStart::kNobodyAsks:
            return "Cannot start as administrator: the program pkexec, which asks for the rights, is not "
                   "installed.";
        case AdministratorStart::kDismissed:
            return "Not started as administrator: the question for the password was dismissed.";
        case AdministratorStart::kRefused:
            return "Cannot start as administrator: the rights were refused, or no program is running that "
                   "asks for "
                   "the password.";
        case AdministratorStart::kFailed:
            return "Cannot start as administrator: the program has ended before it had a window. Perhaps the "
                   "administrator may not use this screen.";
    }
    return {};
}

}  // namespace permora
