#include "app/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <sstream>
#include <string_view>
#include <utility>

#include "cli/argument_shield.h"
#include "platform/host_path.h"
#include "platform/visible_text.h"

namespace permora {
namespace {

constexpr int kUsage = 2;

constexpr const char* kDescription = "Shows and changes who may do what with files, folders and shares.";

constexpr const char* kFooter = R"(Examples:
  permora /mnt/data
  permora --permissions /mnt/data/Projects /mnt/data/Payroll
  permora --administrator --permissions -- /srv/share

A path is written as C:\folder\file or as this machine writes it; both mean the same object. A link at its end is
not followed. What begins with a dash or looks like C:\file while a file here is called so is refused: ./* in the
place of * always means files, and so does what stands behind --. Options of the window toolkit (-platform NAME,
-style NAME, -reverse, -display NAME and its others) are passed on to it.

Exit code:
  0  the window was closed
  1  an object could not be opened (a message named it), or the program could not start, or not as administrator
  2  wrong arguments: no window was shown)";

enum class Value : std::uint8_t { kNone, kNext };
struct ToolkitOption {
    std::string_view name;
    Value value;
};
constexpr std::array<ToolkitOption, 22> kToolkitOptions = {{
    {"-display", Value::kNext},       {"-dograb", Value::kNone},
    {"-geometry", Value::kNext},      {"-icon", Value::kNext},
    {"-name", Value::kNext},          {"-nograb", Value::kNone},
    {"-platform", Value::kNext},      {"-platformpluginpath", Value::kNext},
    {"-platformtheme", Value::kNext}, {"-plugin", Value::kNext},
    {"-qdebug", Value::kNone},        {"-qwindowgeometry", Value::kNext},
    {"-qwindowicon", Value::kNext},   {"-qwindowtitle", Value::kNext},
    {"-reverse", Value::kNone},       {"-session", Value::kNext},
    {"-style", Value::kNext},         {"-stylesheet", Value::kNext},
    {"-sync", Value::kNone},          {"-testability", Value::kNone},
    {"-title", Value::kNext},         {"-widgetcount", Value::kNone},
}};

// The option of that name, which may also be written with two dashes; null: none is called so.
const ToolkitOption* FindToolkitOption(std::string_view name) {
    if (name.starts_with("--")) name.remove_prefix(1);
    const auto* const found = std::ranges::find(kToolkitOptions, name, &ToolkitOption::name);
    return found != kToolkitOptions.end() ? found : nullptr;
}

// Moves the toolkit's options from the arguments to `options`, each value behind its name. Returns what is
// wrong with them, or an empty text.
std::string TakeToolkitOptions(std::vector<const char*>& arguments, std::vector<std::string>& options) {
    std::vector<const char*> others;
    auto argument = arguments.begin();
    for (; argument != arguments.end() && *argument != std::string_view("--"); ++argument) {
        const std::string_view text = *argument;
        const std::size_t sign = text.find('=');
        const ToolkitOption* const option = FindToolkitOption(text.substr(0, sign));
        if (option == nullptr || (sign != text.npos && option->value == Value::kNone) ||
            IsNameHere(*argument)) {
            others.push_back(*argument);
            continue;
        }
        options.emplace_back(option->name);
        if (option->value == Value::kNone) continue;
        if (sign != text.npos) {
            options.emplace_back(text.substr(sign + 1));
        } else {
            if (++argument == arguments.end()) return std::string(text) + ": a value is missing";
            options.emplace_back(*argument);
        }
    }
    others.insert(others.end(), argument, arguments.end());
    arguments = std::move(others);
    return {};
}

CommandLineAnswer Refusal(std::string_view problem) {
    return {kUsage, "permora: " + VisibleText(problem) + "\nRun with --help for more information.\n"};
}

// The option that names the window to show; a second one is refused.
void AddWindow(CLI::App& app, CommandLine& commandLine, StartWindow window, const char* name,
               const char* text) {
    const auto choose = [&commandLine, window, name] {
        if (commandLine.window != StartWindow::kMain) throw CLI::ExcludesError(name, "the other windows");
        commandLine.window = window;
    };
    app.add_flag_callback(name, choose, text);
}

// What is wrong with the paths, or an empty text.
std::string CheckPaths(const CommandLine& commandLine) {
    const std::vector<std::string>& paths = commandLine.paths;
    if (std::ranges::any_of(paths, &std::string::empty)) return "a path is empty";
    const bool isMain = commandLine.window == StartWindow::kMain;
    if (isMain && paths.size() > 1) return "the main window shows one folder: only one PATH can be given";
    if (!isMain && paths.empty()) return "PATH is required";
    const auto ambiguous = std::ranges::find_if(
        paths, [](const std::string& path) { return IsAmbiguousArgument(path.c_str()); });
    if (ambiguous != paths.end())
        return *ambiguous +
               ": a file here is called so: write ./ before its name, or the path as /folder/file";
    return {};
}

}  // namespace

std::unique_ptr<CLI::App> DescribeCommandLine(CommandLine& commandLine) {
    auto app = std::make_unique<CLI::App>(kDescription, "permora");
    app->set_version_flag("--version", "permora " PERMORA_VERSION, "Print the version");
    app->set_help_flag("--help", "Print this help");
    app->add_option("PATH", commandLine.paths,
                    "Without an option the folder that the main window shows; else files, folders and drives")
        ->type_name("");
    AddWindow(*app, commandLine, StartWindow::kPermissions, "--permissions",
              "Show the security editor alone, for the objects");
    AddWindow(*app, commandLine, StartWindow::kProperties, "--properties",
              "Show the properties alone, of one object after the other");
    AddWindow(*app, commandLine, StartWindow::kWizard, "--wizard",
              "Show the security wizard alone, for the objects");
    app->add_flag_callback(
        "--administrator", [&commandLine] { commandLine.startAs = StartAs::kAdministrator; },
        "Ask for the rights of the administrator and start with them");
    constexpr const char* kHidden = "";
    app->add_option("--wayland-display", commandLine.waylandDisplay)->group(kHidden);
    app->add_flag("--tell-of-start", commandLine.tellsOfStart)->group(kHidden);
    app->get_formatter()->column_width(26);
    app->footer(kFooter);
    return app;
}

std::optional<CommandLineAnswer> ReadCommandLine(std::span<const char* const> arguments,
                                                 CommandLine& commandLine) {
    CommandLine read;
    std::vector<const char*> rest(arguments.begin(), arguments.end());
    std::vector<std::string> shielded;
    std::string problem = TakeToolkitOptions(rest, read.toolkitOptions);
    if (problem.empty()) problem = ShieldArguments(rest, shielded);
    if (!problem.empty()) return Refusal(problem);
    const std::unique_ptr<CLI::App> app = DescribeCommandLine(read);
    try {
        app->parse(std::move(shielded));
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0) return Refusal(WithoutShields(error.what()));
        std::ostringstream text;
        app->exit(error, text, text);
        return CommandLineAnswer{0, text.str()};
    }
    for (std::string& path : read.paths)
        path = Unshielded(path);
    problem = CheckPaths(read);
    if (!problem.empty()) return Refusal(problem);
    commandLine = std::move(read);
    return std::nullopt;
}

}  // namespace permora
