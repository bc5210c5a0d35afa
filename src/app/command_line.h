// How the windowed program is called.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace CLI {  // NOLINT(readability-identifier-naming): the parser names itself so
class App;
}  // namespace CLI

namespace permora {

// The window that is shown: the main window, or one alone for the objects that are named.
enum class StartWindow : std::uint8_t { kMain, kPermissions, kProperties, kWizard };
enum class StartAs : std::uint8_t { kUser, kAdministrator };

struct CommandLine {
    StartWindow window = StartWindow::kMain;
    StartAs startAs = StartAs::kUser;
    std::vector<std::string> paths;  // as typed; at most one for the main window, at least one for others
    // For the toolkit, which takes its options wherever they stand: so names are never among them.
    std::vector<std::string> toolkitOptions;

    // What the program says to itself when it starts again as administrator: the absolute path of the user's
    // display, which may be empty, and whether somebody waits on standard output until there is a window.
    std::string waylandDisplay;
    bool tellsOfStart = false;
};

// What the program prints instead of starting, and then its exit code: on standard output for 0, else on
// standard error. Fit for a terminal.
struct CommandLineAnswer {
    int exitCode = 0;
    std::string text;
};

// Reads the arguments, without the program's own name. Nothing: the program starts with `commandLine`, which
// otherwise stays as it is.
std::optional<CommandLineAnswer> ReadCommandLine(std::span<const char* const> arguments,
                                                 CommandLine& commandLine);

// The parser of all but the toolkit's options, which fills `commandLine` (borrowed); also the description
// from which the help is made.
std::unique_ptr<CLI::App> DescribeCommandLine(CommandLine& commandLine);

}  // namespace permora
