// find: the objects of a tree in whose lists an account has an entry, or which it owns.
#include <chrono>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/account_option.h"
#include "cli/commands.h"
#include "cli/interrupts.h"
#include "cli/json_output.h"
#include "cli/object_command.h"
#include "cli/rights_options.h"
#include "cli/terminal_output.h"
#include "cli/tree_progress.h"
#include "platform/api/errors.h"
#include "platform/host_path.h"
#include "platform/terminal.h"
#include "report/found_objects.h"
#include "saved/tree_source.h"
#include "survey/entry_search.h"

namespace permora {
namespace {

enum class PathForm : std::uint8_t { kLines, kNulSeparated, kJson };

// Prints the paths as they are found.
class FoundOutput {
  public:
    explicit FoundOutput(PathForm wanted) : form(wanted) {}

    void Add(const Target& target, const ReadObject& object, const FoundEntries& found) {
        const std::string below(object.path);
        switch (form) {
            case PathForm::kLines:
                Print(TypedPath(target, below) + '\n');
                break;
            case PathForm::kNulSeparated:
                WriteText(stdout, PathBelowArgument(target.argument, below) + '\0');
                break;
            case PathForm::kJson:
                Print(json->Add({TypedPath(target, below), object.is, &found}));
                break;
        }
        // Whoever reads them wants the first at once; a call for each of a million would take seconds.
        const auto now = std::chrono::steady_clock::now();
        if (now - flushed < std::chrono::milliseconds(50)) return;
        isBroken = !IsAllPrinted();
        flushed = std::chrono::steady_clock::now();
    }
    void End() {
        if (form == PathForm::kJson) Print(json->End());
    }
    // Nobody takes what is printed any more.
    bool IsBroken() const { return isBroken; }

  private:
    const PathForm form;
    const std::unique_ptr<FoundForm> json = MakeFoundJson();
    std::chrono::steady_clock::time_point flushed;
    bool isBroken = false;
};

// Searches one tree.
class FindingVisitor : public TreeVisitor {
  public:
    FindingVisitor(EntrySearch& searching, FoundOutput& printing, ProgressLine& progress,
                   ConsoleMessages& console)
        : search(searching), output(printing), line(progress), messages(console) {}

    void SetTarget(const Target& next) { target = &next; }
    bool HasMissed() const { return hasMissed; }

    bool Visit(const ReadObject& object) override {
        if (IsInterrupted() || output.IsBroken()) return false;
        line.ShowPath(++count, object.path);
        if (object.kind == SavedKind::kUnread || object.kind == SavedKind::kUnlisted) {
            Miss(object);
        } else if (object.kind != SavedKind::kMounted) {
            const FoundEntries& found = search.Find(object.descriptor);
            if (!found.fits) return true;
            line.Clear();
            output.Add(*target, object, found);
        }
        return true;
    }

  private:
    void Miss(const ReadObject& object) {
        hasMissed = true;
        line.Clear();
        messages.SetSubject(TypedPath(*target, std::string(object.path)));
        messages.Say(
            (object.kind == SavedKind::kUnlisted ? "not searched, what is in it: " : "not searched: ") +
            LineText({object.error}));
    }

    EntrySearch& search;
    FoundOutput& output;
    ProgressLine& line;
    ConsoleMessages& messages;
    const Target* target = nullptr;
    std::size_t count = 0;
    bool hasMissed = false;
};

class FindCommand : public ObjectCommand {
  public:
    explicit FindCommand(const CommandParent& parent)
        : ObjectCommand(parent, "find",
                        "Print the paths of all files and folders, from PATH downwards, in whose lists\n"
                        "an account has an entry. Links and what is mounted below are not entered") {
        deny.Excludes(allow);
        inheritedOnly.Excludes(explicitOnly);
        nulSeparated.Excludes(json);
    }

    std::string Interpret() override;

  private:
    ExitCode Begin(const std::vector<Target>& targets) override;
    bool Do(const Target& target) override;
    bool End() override;
    EntryCriteria Criteria();

    AccountOption account{
        *this, "--account",
        R"(The account: a name, DOMAIN\name or a SID like S-1-1-0. Its groups do not count)",
        Presence::kOptional};
    Flag unresolved{*this, "--unresolved",
                    "In place of an account: those that were deleted, that are not known here, and\n"
                    "SIDs that no account can have"};
    RightsOption rights{*this, Presence::kOptional};
    Flag allow{*this, "--allow", "Entries that allow"};
    Flag deny{*this, "--deny", "Entries that deny"};
    Flag explicitOnly{*this, "--explicit", "Entries of the objects' own"};
    Flag inheritedOnly{*this, "--inherited", "Entries that come from the folder above"};
    Flag owner{*this, "--owner", "Objects that the account owns, in place of its entries"};
    JsonFlag json{*this};
    Flag nulSeparated{*this, "-0,--null",
                      "A NUL behind each path in place of a line break, and the path as it is: for\n"
                      "xargs -0"};
    QuietFlag quiet{*this};

    std::optional<EntrySearch> search;
    std::optional<FoundOutput> output;
    std::optional<ProgressLine> line;
    std::optional<FindingVisitor> visitor;
};

std::string FindCommand::Interpret() {
    if (std::string problem = ObjectCommand::Interpret(); !problem.empty()) return problem;
    if (account.IsGiven() == static_cast<bool>(unresolved))
        return "find takes one of --account and --unresolved";
    const bool isAboutEntries = rights.Text() || allow || deny || explicitOnly || inheritedOnly;
    if (owner && isAboutEntries)
        return "--owner is about no entries: it takes no option that chooses among them";
    return {};
}

EntryCriteria FindCommand::Criteria() {
    EntryCriteria criteria;
    if (account.IsGiven()) criteria.account = account.Account().sid;
    criteria.part = owner ? SearchedPart::kOwner : SearchedPart::kEntries;
    criteria.rights = rights.Mask();
    if (allow) criteria.effect = EntryEffect::kAllow;
    if (deny) criteria.effect = EntryEffect::kDeny;
    if (explicitOnly) criteria.origin = EntryOrigin::kExplicit;
    if (inheritedOnly) criteria.origin = EntryOrigin::kInherited;
    return criteria;
}

ExitCode FindCommand::Begin(const std::vector<Target>& /*targets*/) {
    WatchForInterrupts();
    const PathForm form = json ? PathForm::kJson : nulSeparated ? PathForm::kNulSeparated : PathForm::kLines;
    search.emplace(Criteria());
    output.emplace(form);
    line.emplace(quiet ? Progress::kQuiet : Progress::kShown);
    visitor.emplace(*search, *output, *line, messages);
    return ExitCode::kDone;
}

bool FindCommand::Do(const Target& target) {
    HeldObject top;
    if (!FindTarget(target, top, messages)) return false;
    visitor->SetTarget(target);
    const SECURITY_INFORMATION part = owner ? OWNER_SECURITY_INFORMATION : DACL_SECURITY_INFORMATION;
    (void)ReadTree(top, part, *visitor);  // the visitor alone ends it
    return !visitor->HasMissed();
}

bool FindCommand::End() {
    line->Clear();
    output->End();
    messages.SetSubject("");
    if (search->HasMetUnasked())
        messages.Say("accounts that could not be asked about are not among those that were found");
    if (IsInterrupted()) SayInterrupted(messages, "the rest was not searched");
    return !search->HasMetUnasked() && !IsInterrupted();
}

}  // namespace

std::unique_ptr<Command> MakeFind(const CommandParent& parent) {
    return std::make_unique<FindCommand>(parent);
}

}  // namespace permora
