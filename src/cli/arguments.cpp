#include "cli/arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

#include "cli/exit_codes.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "cli/vocabulary.h"
#include "platform/host_path.h"
#include "security/access_rights.h"
#include "wizard/account_rights.h"

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
  permora-cli inherit /mnt/data/Payroll --copy
  permora-cli assign /mnt/data/Projects /mnt/data/Plans --account anna --combination Modify --dry-run
  permora-cli reset /mnt/data/Projects --dry-run --verbose
  permora-cli owner /mnt/data/Projects --set 'BUILTIN\Administrators' --tree
  permora-cli effective /mnt/data/Payroll --account anna
  permora-cli shred /mnt/data/Old /mnt/data/Payroll/2009.ods
  permora-cli accounts --find admin
  permora-cli shares
  permora-cli deny --share Projects --account guest --rights 'Full control'

A path is written as C:\folder\file or as this machine writes it; both mean the same object. A link at its end is
not followed, and refused with a separator behind it. What begins with a dash or looks like C:\file while a file
here is called so is refused: ./* in the place of * always means files. Rights, scopes and options are listed by
the help of a command: permora-cli grant --help

Exit code:
  0  done
  1  some object failed: each one is named on standard error with its reason (by reset only with --verbose), and all
     others were done; or reset, owner or shred was interrupted
     (assign gives every object the list that it makes of the first one's: when that fails, nothing was touched)
  2  wrong arguments, an unknown account, or no consent to a reset or shred: nothing was touched)";

// A path such as "[x]" would be taken for a list of values, with its brackets stripped: another object. And
// "++" would be taken for the end of a command and left out. So every argument that begins like the one or is
// the other goes through the parser behind this character, which no argument needs.
constexpr char kShield = '\x01';

// Where the value starts that an option has in the same argument ("--option=value"); 0 in any other argument.
std::size_t ValueStart(const std::string& argument) {
    return argument.starts_with("--") ? argument.find('=') + 1 : 0;
}

// `start` is where the text starts that the parser takes for a value.
std::string Shielded(std::string argument, std::size_t start) {
    const bool needsShield = argument == "++" || (start < argument.size() &&
                                                  (argument[start] == '[' || argument[start] == kShield));
    if (needsShield) argument.insert(start, 1, kShield);
    return argument;
}

std::string Unshielded(const std::string& argument) {
    return !argument.empty() && argument.front() == kShield ? argument.substr(1) : argument;
}

std::string RightsHelp() {
    std::string help = "Rights, separated by commas, as masks like 0x1200a9 or as names:";
    for (const AccessRight& right : kAccessRights)
        help += std::string("\n  ") + right.listName;
    return help;
}

std::string CombinationHelp() {
    std::string help = "The rights of a ready-made combination and no others:";
    for (const UsableCombination& combination : kUsableCombinations)
        help += std::string("\n  ") + combination.text;
    return help;
}

std::string ScopeHelp() {
    std::string help = "Where the entry applies, as number or text; without it 1 on folders, 0 on files:";
    for (std::size_t i = 0; i < kInheritanceScopes.size(); ++i)
        help += "\n  " + std::to_string(i) + " " + kInheritanceScopes.at(i).text;
    return help;
}

// The parser with the places that it fills.
struct Parser {
    CLI::App app{kDescription, "permora-cli"};
    Arguments arguments;
    std::optional<std::string> account;
    std::string rights;
    std::optional<std::string> combination;
    std::optional<std::string> scope;
    bool json = false;
    bool sddl = false;
    bool on = false;
    bool copy = false;
    bool remove = false;

    Parser();
    CLI::App* AddCommand(Command command, const char* name, const char* description);
    CLI::App* AddChange(Command command, const char* name, const char* description);
    // Makes the command one that takes shares as well as paths.
    CLI::App* WithShares(CLI::App* command);
    void AddAccount(CLI::App* command);
    void AddEntryOptions(CLI::App* command);
    void AddAssign();
    void AddReset();
    void AddOwner();
    void AddEffective();
    void AddShred();
    void AddAccounts();
    void AddShares();
    void AddSetup();
    // Each turns what was typed into what is meant; a text that says what is wrong, or an empty one.
    std::string Interpret();
    std::string InterpretRights();
    std::string InterpretCombination();
};

CLI::App* Parser::AddCommand(Command command, const char* name, const char* description) {
    CLI::App* added = app.add_subcommand(name, description);
    added
        ->add_option("PATH", arguments.paths,
                     "Files, folders or drives; behind -- also names that begin with a dash")
        ->required()
        ->type_name("");
    added->callback([this, command] { arguments.command = command; });
    return added;
}

CLI::App* Parser::AddChange(Command command, const char* name, const char* description) {
    CLI::App* added = AddCommand(command, name, description);
    added->add_flag("--dry-run", arguments.dryRun,
                    "Show the entries before and after the change and write nothing");
    added->add_flag("--drop-other-entries", arguments.dropOtherEntries,
                    "Change even a list with entries of other types than allow and deny, or with such\n"
                    "that are not valid; they are lost");
    added->add_flag("--replace-null-list", arguments.replaceNullList,
                    "Change even an object without any access list, which allows everyone everything;\n"
                    "afterwards only the accounts in the new list have access");
    return added;
}

CLI::App* Parser::WithShares(CLI::App* command) {
    CLI::Option* paths = command->get_option("PATH");
    paths->required(false);
    command
        ->add_option("--share", arguments.shares,
                     "Shares in the place of paths: the lists that the server keeps for them,\n"
                     "which apply to whoever comes over the network")
        ->type_name("NAME")
        ->excludes(paths);
    return command;
}

void Parser::AddAccount(CLI::App* command) {
    command->add_option("--account", account, R"(The account: a name, DOMAIN\name or a SID like S-1-1-0)")
        ->required()
        ->type_name("NAME");
}

void Parser::AddEntryOptions(CLI::App* command) {
    AddAccount(command);
    command->add_option("--rights", rights, RightsHelp())->required()->type_name("LIST");
    command->add_option("--scope", scope, ScopeHelp())->type_name("N|TEXT");
    command->add_flag("--children-only", arguments.childrenOnly,
                      "Hand the entry down to direct children only, not to what is below them");
}

void Parser::AddAssign() {
    CLI::App* assign =
        AddChange(Command::kAssign, "assign",
                  "Give an account these rights and no others, as the security wizard does: the\n"
                  "first object's own entries, with this change, replace those of every object.\n"
                  "What an object inherits stays; a right that comes from above is taken away by\n"
                  "denying it. Only entries that name the account itself are changed; what it has\n"
                  "then, and through which entries, is told of each object.\n"
                  "\"Full control\" and \"Allow all\" add nothing to rights that come from above; where\n"
                  "some would be missing, nothing is changed: 0xf01ff gives each right by itself");
    assign->get_option("--replace-null-list")
        ->description(
            "Change even an object without any access list, which allows everyone everything;\n"
            "the first one must have a list, since all get what is made of it");
    AddAccount(assign);
    CLI::Option_group* choice = assign->add_option_group("choice", "One of:");
    choice->add_option("--combination", combination, CombinationHelp())->type_name("NAME");
    choice->add_option("--rights", rights, RightsHelp())->type_name("LIST");
    choice->require_option(1);
}

void Parser::AddReset() {
    CLI::App* reset = AddCommand(Command::kReset, "reset",
                                 "Give everything below a folder what it inherits and nothing else: entries\n"
                                 "of its own go, and protection from inheritance ends. The folder itself\n"
                                 "keeps its list. Links and what is mounted below are not entered");
    reset->add_flag("--dry-run", arguments.dryRun, "Count what would change and write nothing");
    reset->add_flag("--yes", arguments.yes, "Do not ask; needed where nobody can be asked");
    reset->add_flag("--empty-lists", arguments.emptyLists,
                    "Go on even below a folder that hands nothing down;\n"
                    "afterwards nobody has access to what is below it");
    reset->add_flag("--quiet", arguments.quiet, "No progress line on a terminal");
    reset->add_flag("--verbose", arguments.verbose, "Name each object that is passed over, with the reason");
}

void Parser::AddOwner() {
    CLI::App* owner = AddCommand(Command::kOwner, "owner", "Show or change who owns objects");
    CLI::Option* set =
        owner->add_option("--set", account, R"(The new owner: a name, DOMAIN\name or a SID like S-1-1-0)");
    set->type_name("NAME");
    CLI::Option* tree =
        owner->add_flag("--tree", arguments.tree,
                        "Make NAME the owner of everything below the folders too. Links and what\n"
                        "is mounted below are not entered, and files with further names (hard\n"
                        "links), which may be others' files, are passed over");
    tree->needs(set);
    owner
        ->add_flag("--linked", arguments.linked,
                   "With --tree, give also files with further names to NAME, under all of them")
        ->needs(tree);
}

void Parser::AddEffective() {
    CLI::App* effective = AddCommand(Command::kEffective, "effective",
                                     "Show what an access list leaves to an account and its groups");
    AddAccount(effective);
    effective->add_flag("--json", json, "As JSON: one object, or an array of several");
}

void Parser::AddShred() {
    CLI::App* shred =
        AddCommand(Command::kShred, "shred",
                   "Overwrite files with zeros on the disk, then delete them; folders with all\n"
                   "that is in them. Links are removed, never followed, and what is mounted\n"
                   "below stays. What the disk itself keeps (spare sectors, flash memory,\n"
                   "journals, snapshots) and copies elsewhere are not reached");
    shred->add_flag("--yes", arguments.yes, "Do not ask; needed where nobody can be asked");
    shred->add_flag("--force", arguments.force,
                    "Delete also files whose contents are known to stay on the disk or under\n"
                    "another name: on copy-on-write file systems, compressed, encrypted or sparse\n"
                    "ones on NTFS, ones with hard links, ones with named streams that move, ones\n"
                    "that are written by way of a journal; and those of which it cannot be known\n"
                    "whether they have further names or another program has them open");
    shred->add_flag("--quiet", arguments.quiet, "No progress line on a terminal");
}

void Parser::AddAccounts() {
    CLI::App* accounts = app.add_subcommand("accounts", "List the accounts that this machine knows");
    accounts->add_option("--find", arguments.find, "Only those in whose name, SID or type this text stands")
        ->type_name("TEXT");
    accounts->add_flag("--json", json, "As JSON: an array of objects");
    accounts->callback([this] { arguments.command = Command::kAccounts; });
}

void Parser::AddShares() {
    CLI::App* shares = app.add_subcommand("shares", "List the shares of this machine");
    shares->add_flag("--json", json, "As JSON: an array of objects");
    CLI::App* show =
        shares->add_subcommand("show", "Show shares with their access lists, as show --share does");
    show->add_option("NAME", arguments.shares, "Names of shares; behind -- also those that begin with a dash")
        ->required()
        ->type_name("");
    show->add_flag("--json", json, "As JSON: one object, or an array of several");
    shares->callback(
        [this, show] { arguments.command = show->parsed() ? Command::kShow : Command::kShares; });
}

void Parser::AddSetup() {
    CLI::App* setup = AddCommand(Command::kSetup, "setup",
                                 "Tell the windowed program the folder that it is installed in, where its\n"
                                 "help is; the installation does this");
    setup->get_option("PATH")->description("The folder that holds permora");
    setup->add_flag("--all-users", arguments.allUsers, "For every user who was not told another folder");
}

Parser::Parser() {
    app.require_subcommand(1);
    app.set_version_flag("--version", "permora-cli " PERMORA_VERSION, "Print the version");
    app.set_help_flag("--help", "Print this help; behind a command, that command's help");
    app.get_formatter()->column_width(26);

    CLI::App* show = WithShares(AddCommand(Command::kShow, "show", "Show access lists"));
    CLI::Option* jsonFlag = show->add_flag("--json", json, "As JSON: one object, or an array of several");
    CLI::Option* sddlFlag =
        show->add_flag("--sddl", sddl,
                       "As security descriptor text, O:...G:...D:...; of several objects two lines\n"
                       "for each, its path and the text");
    sddlFlag->excludes(jsonFlag);
    show->add_flag("--audit", arguments.audit,
                   "With --sddl: the system access list too (audits, labels, attributes), S:...")
        ->needs(sddlFlag);

    AddEntryOptions(WithShares(AddChange(Command::kGrant, "grant", "Allow an account rights")));
    AddEntryOptions(WithShares(AddChange(Command::kDeny, "deny", "Deny an account rights")));
    AddAccount(WithShares(AddChange(Command::kRevoke, "revoke",
                                    "Remove the entries made for an account on the object itself;\n"
                                    "when there are none, that is said and is no failure")));

    CLI::App* inherit =
        AddChange(Command::kInherit, "inherit", "Switch on or off that an object inherits from its parent");
    CLI::Option_group* choice = inherit->add_option_group("choice", "One of:");
    choice->add_flag("--on", on, "Inherit from the parent, beside the object's own entries");
    choice->add_flag("--copy", copy, "Stop inheriting and keep copies of the inherited entries");
    choice->add_flag("--remove", remove, "Stop inheriting and remove the inherited entries");
    choice->require_option(1);
    AddAssign();
    AddReset();
    AddShred();
    AddOwner();
    AddEffective();
    AddAccounts();
    AddShares();
    AddSetup();
    // Last, so that the commands' own help stays short.
    app.footer(kFooter);
}

std::string Parser::Interpret() {
    for (std::string& path : arguments.paths) {
        path = Unshielded(path);
        if (path.empty()) return "a path is empty";
    }
    for (std::string& share : arguments.shares) {
        share = Unshielded(share);
        if (share.empty()) return "the name of a share is empty";
    }
    const bool needsObject = arguments.command != Command::kAccounts && arguments.command != Command::kShares;
    if (needsObject && arguments.paths.empty() && arguments.shares.empty())
        return "PATH or --share is required";
    if (arguments.command == Command::kSetup && arguments.paths.size() > 1) return "setup takes one folder";
    const bool isOwner = arguments.command == Command::kOwner;
    if (account && Unshielded(*account).empty())
        return std::string(isOwner ? "--set" : "--account") + ": the name is empty";
    if (isOwner) arguments.verbose = true;
    arguments.find = Unshielded(arguments.find);
    arguments.account = Unshielded(account.value_or(""));
    if (json) arguments.format = ShowFormat::kJson;
    if (sddl) arguments.format = ShowFormat::kSddl;
    if (copy) arguments.inheritance = InheritanceChange::kCopy;
    if (remove) arguments.inheritance = InheritanceChange::kRemove;
    if (arguments.command == Command::kAssign)
        return combination ? InterpretCombination() : InterpretRights();
    if (arguments.command != Command::kGrant && arguments.command != Command::kDeny) return "";
    if (std::string problem = InterpretRights(); !problem.empty()) return problem;
    if (!scope) return "";
    arguments.scopeIndex = ParseScope(Unshielded(*scope));
    return arguments.scopeIndex ? "" : "--scope: no scope is called \"" + Unshielded(*scope) + "\"";
}

std::string Parser::InterpretRights() {
    std::string problem;
    const std::optional<DWORD> mask = ParseRights(Unshielded(rights), problem);
    if (!mask) return "--rights: " + problem;
    arguments.rights = *mask;
    if (arguments.command != Command::kAssign) return "";
    if ((*mask & ~FULL_CONTROL_RIGHTS) != 0)
        return "--rights: assign knows single rights only, no generic ones";
    if (NamesFullControl(Unshielded(rights))) arguments.rights = kFullControlAsOne;
    return "";
}

std::string Parser::InterpretCombination() {
    const std::optional<DWORD> mask = ParseCombination(Unshielded(*combination));
    if (!mask) return "--combination: no combination is called \"" + Unshielded(*combination) + "\"";
    arguments.rights = *mask;
    return "";
}

// Says what is wrong with the arguments; the exit code for that.
int Refuse(std::string_view problem) {
    PrintError("permora-cli: " + PrintableText(problem) + '\n');
    return kExitUsage;
}

// What the parser says, in which the arguments stand as it got them, with the arguments as they were typed.
std::string WithoutShields(std::string_view text) {
    std::string typed;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == kShield && i + 1 < text.size()) ++i;
        typed += text[i];
    }
    return typed;
}

// Prints the help or the version, or says what the parser found wrong; the exit code for that.
int Answer(const CLI::App& app, const CLI::ParseError& error) {
    if (error.get_exit_code() != 0) {
        Refuse(WithoutShields(error.what()));
        PrintError("Run with --help for more information.\n");
        return kExitUsage;
    }
    std::ostringstream text;
    app.exit(error, text, text);
    Print(text.str());
    return kExitDone;
}

}  // namespace

std::optional<Arguments> ParseArguments(int argumentCount, const char* const* argumentTexts, int& exitCode) {
    Parser parser;
    if (argumentCount < 2) {
        PrintError(parser.app.help());
        exitCode = kExitUsage;
        return std::nullopt;
    }
    std::vector<std::string> texts;
    bool isBehindDashes = false;
    for (int i = 1; i < argumentCount; ++i) {
        const std::string argument = argumentTexts[i];
        if (!isBehindDashes && argument.starts_with('-') && IsNameHere(argument.c_str())) {
            exitCode = Refuse(argument +
                              ": a file here is called so: write ./ before the name for the file; as an "
                              "option it can be given in another folder");
            return std::nullopt;
        }
        texts.push_back(Shielded(argument, isBehindDashes ? 0 : ValueStart(argument)));
        if (argument == "--") isBehindDashes = true;
    }
    std::ranges::reverse(texts);  // the parser takes its arguments from the end
    try {
        parser.app.parse(std::move(texts));
    } catch (const CLI::ParseError& error) {
        exitCode = Answer(parser.app, error);
        return std::nullopt;
    }
    const std::string problem = parser.Interpret();
    if (!problem.empty()) {
        exitCode = Refuse(problem);
        return std::nullopt;
    }
    return std::move(parser.arguments);
}

}  // namespace permora
