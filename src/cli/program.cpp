#include "cli/program.h"

#include <CLI/CLI.hpp>
#include <exception>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "cli/argument_shield.h"
#include "cli/messages.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/accounts.h"
#include "platform/server_accounts.h"
#include "security/account_lookup.h"

namespace permora {
namespace {

constexpr const char* kDescription =
    "Shows and changes who may do what with files, folders and shares, and deletes files for good.";

constexpr const char* kFooter = R"(Examples:
  permora-cli show /mnt/data/Projects
  permora-cli show --json 'C:\mnt\data\Projects' /mnt/data/Payroll
  permora-cli grant /mnt/data/Projects --account 'BUILTIN\Users' --rights 'Read attributes,Read permissions'
  permora-cli deny /mnt/data/Projects --account guest --rights 'Full control' --scope 'Files only' --dry-run
  permora-cli revoke /mnt/data/Projects --account S-1-5-32-546
  permora-cli revoke /mnt/data/Projects --tree --unresolved --dry-run
  permora-cli replace /mnt/data --account 'OLD\anna' --by anna --dry-run
  permora-cli clone --from /mnt/data/Projects /mnt/data/Plans
  permora-cli inherit /mnt/data/Payroll --copy
  permora-cli assign /mnt/data/Projects /mnt/data/Plans --account anna --combination Modify --dry-run
  permora-cli reset /mnt/data/Projects --dry-run --verbose
  permora-cli owner /mnt/data/Projects --set 'BUILTIN\Administrators' --tree
  permora-cli history
  permora-cli undo 12 --dry-run
  permora-cli save /mnt/data/Projects --output projects.lists
  permora-cli compare projects.lists /mnt/data/Projects
  permora-cli restore projects.lists --to /mnt/new/Projects --dry-run
  permora-cli effective /mnt/data/Payroll --account anna
  permora-cli report /mnt/data --members --html report.html
  permora-cli find /mnt/data --account anna --allow --explicit
  permora-cli shred /mnt/data/Old /mnt/data/Payroll/2009.ods
  permora-cli accounts --find admin
  permora-cli shares
  permora-cli deny --share Projects --account guest --rights 'Full control'
  permora-cli grant /mnt/data/Projects --account anna --rights 0x1301bf --check --json
  permora-cli policy check /etc/permora/policy.toml

A path is written as C:\folder\file or as this machine writes it; both mean the same object. A link at its end is
not followed, and refused with a separator behind it. What begins with a dash or looks like C:\file while a file
here is called so is refused: ./* in the place of * always means files. Rights, scopes and options are listed by
the help of a command: permora-cli grant --help

Exit code:
  0  done
  1  with --check: something would change. Without it, some object failed: each one is named on standard error with its reason (by reset only with --verbose), and all
     others were done; or a change of a tree, undo or shred was interrupted; or the history of changes could not be
     written: then nothing was changed, or nothing after the object that is named
     (assign gives every object the list that it makes of the first one's: when that fails, nothing was touched)
  2  wrong arguments, an unknown account or change, a file that is not what it should be, or no consent to a reset, clone,
     undo or shred: nothing was touched
  3  with --check: not everything could be looked at)";

// Prints what is wrong with the arguments.
ExitCode Refuse(std::string_view problem) {
    PrintError("permora-cli: " + PrintableText(problem) + '\n');
    return ExitCode::kUsage;
}

// Prints the help or the version, or what the parser found wrong.
ExitCode Answer(const CLI::App& app, const CLI::ParseError& error) {
    if (error.get_exit_code() != 0) {
        Refuse(WithoutShields(error.what()));
        PrintError("Run with --help for more information.\n");
        return ExitCode::kUsage;
    }
    std::ostringstream text;
    app.exit(error, text, text);
    Print(text.str());
    return ExitCode::kDone;
}

// Once for all the names that are missing.
void TellOffline(ConsoleMessages& messages) {
    const std::string text = OfflineText(StateOfDomain());
    if (text.empty()) return;
    messages.SetSubject("");
    messages.Say(text);
}

// `exitCode`, or `failureCode` when the output could not be written completely.
int AfterOutput(ExitCode exitCode, ExitCode failureCode, ConsoleMessages& messages) {
    if (!IsAllPrinted()) {
        messages.SetSubject("standard output");
        messages.Say("not everything could be written");
        exitCode = std::max(exitCode, failureCode);
    }
    return static_cast<int>(exitCode);
}

ExitCode FailureCodeOf(Grammar& grammar) {
    const Command* const chosen = grammar.Chosen();
    return chosen != nullptr ? chosen->FailureCode() : ExitCode::kSomeFailed;
}

int RunArguments(Grammar& grammar, std::span<const char* const> arguments) {
    CLI::App& parser = grammar.Parser();
    ConsoleMessages& messages = grammar.Messages();
    if (arguments.size() < 2) {
        PrintError(parser.help());
        return static_cast<int>(ExitCode::kUsage);
    }
    std::vector<std::string> shielded;
    std::string problem = ShieldArguments(arguments.subspan(1), shielded);
    if (problem.empty()) {
        try {
            parser.parse(std::move(shielded));
        } catch (const CLI::ParseError& error) {
            return AfterOutput(Answer(parser, error), ExitCode::kSomeFailed, messages);
        }
        problem = grammar.Chosen()->Interpret();
    }
    const ExitCode exitCode = problem.empty() ? grammar.Chosen()->Run() : Refuse(problem);
    TellOffline(messages);
    return AfterOutput(exitCode, FailureCodeOf(grammar), messages);
}

}  // namespace

Grammar::Grammar(std::span<MakeCommand* const> makers)
    : parser(std::make_unique<CLI::App>(kDescription, "permora-cli")) {
    parser->require_subcommand(1);
    parser->set_version_flag("--version", "permora-cli " PERMORA_VERSION, "Print the version");
    parser->set_help_flag("--help", "Print this help; behind a command, that command's help");
    parser->get_formatter()->column_width(26);
    for (MakeCommand* const make : makers)
        commands.push_back(make({*parser, chosen, messages}));
    parser->footer(kFooter);  // last, so that the commands' own help stays short
}

Grammar::~Grammar() = default;

int RunProgram(std::span<MakeCommand* const> commands, int argumentCount, const char* const* argumentTexts) {
    std::optional<Grammar> grammar;
    WaitLongerForServers();
    try {
        grammar.emplace(commands);
        return RunArguments(*grammar, {argumentTexts, static_cast<std::size_t>(argumentCount)});
    } catch (const std::exception& error) {  // no memory
        PrintError("permora-cli: broken off: " + PrintableText(error.what()) + '\n');
        return static_cast<int>(grammar ? FailureCodeOf(*grammar) : ExitCode::kSomeFailed);
    }
}

}  // namespace permora
