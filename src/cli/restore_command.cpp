// restore: gives the objects of a tree the owners and lists that were saved of them.
#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/argument_shield.h"
#include "cli/change_output.h"
#include "cli/commands.h"
#include "cli/consent.h"
#include "cli/interrupts.h"
#include "cli/map_options.h"
#include "cli/recording.h"
#include "cli/saved_parts.h"
#include "cli/terminal_text.h"
#include "cli/tree_progress.h"
#include "cli/word_option.h"
#include "history/history_texts.h"
#include "platform/api/errors.h"
#include "platform/host_path.h"
#include "platform/system_message.h"
#include "platform/volume_loss.h"
#include "saved/restore.h"
#include "saved/saved_list_reader.h"
#include "security/object_security.h"

namespace permora {
namespace {

// The same folder as the remembered one, to be listed.
DWORD OpenFolder(const RememberedObject& remembered, FolderHandle& folder) {
    FolderHandle found;
    DWORD error = remembered.Start() ? remembered.Start()->OpenPath(remembered.Path(), found)
                                     : FolderHandle::Open(remembered.Path(), found);
    if (error == ERROR_SUCCESS) error = remembered.Verify(found);
    if (error == ERROR_SUCCESS) folder = std::move(found);
    return error;
}

class RestoreCommand : public Command, private RestoreHost {
  public:
    explicit RestoreCommand(const CommandParent& parent);

    std::string Interpret() override;
    std::string Server() const override;
    ExitCode Run() override;

  private:
    bool OpenFile();
    bool FindTargets();
    bool AddTarget(const std::string& argument);
    bool MayWrite();
    ExitCode FindAndRestore();
    ExitCode Restore();
    void EndTop();
    std::string Contents() const;

    bool FindTop(const SavedTop& saved, RestoredTop& top) override;
    void LeaveSystemLists() override;
    bool Begin(const std::string& path) override;
    void Change(const std::string& path) override;
    void Fail(const std::string& path, RestoreFault fault, DWORD error) override;
    void Miss(const std::string& path) override;
    void FindExtra(const std::string& path) override;
    void FailExtra(const std::string& path, DWORD error) override;
    void Say(const std::string& path, const std::string& text, DWORD code = ERROR_SUCCESS);

    std::string file;
    TextOption to{*this, "--to", "PATH",
                  "What the file's objects are put back on: the place of the one that was\n"
                  "saved; for a file of icacls the folder that its paths start from"};
    MapOptions map{*this};
    WordOption words{*this};
    ChangeOutput output{*this, messages, "Name what would change and write nothing"};
    YesFlag yes{*this};
    QuietFlag quiet{*this};
    Recording recording{*this};

    std::unique_ptr<CheckedList> list;
    std::vector<Target> targets;  // of the saved tops, in their order
    std::size_t topsBegun = 0;
    std::optional<ProgressLine> progress;
    std::size_t begun = 0;
    RestoreCounts counts;
    ObjectCounts ended;  // of the tops before this one
};

RestoreCommand::RestoreCommand(const CommandParent& parent)
    : Command(parent, "restore",
              "Give the objects of a tree the owners and access lists that were saved of them,\n"
              "by permora-cli save or by icacls /save (lists only). Nothing is inherited anew,\n"
              "links and what is mounted below are not entered") {
    Parser().add_option("FILE", file, "The file with the saved lists")->required()->type_name("");
}

std::string RestoreCommand::Interpret() {
    file = Unshielded(file);
    if (file.empty()) return "the name of the file is empty";
    if (to.Text() && to.Text()->empty()) return "--to: the path is empty";
    std::string problem = Command::Interpret();
    if (problem.empty()) problem = map.Interpret();
    return problem.empty() ? words.Interpret() : problem;
}

// That of the places where the objects are put back. The file is not checked yet.
std::string RestoreCommand::Server() const {
    if (to.Text()) return ServerOfArguments({*to.Text()});
    SavedFileInput input;
    SavedFault fault;
    const bool isFile = SavedFileInput::Open(PathFromArgument(file.c_str()), input) == ERROR_SUCCESS &&
                        input.Rewind() == ERROR_SUCCESS;
    const auto reader = isFile ? SavedListReader::Open(input, fault) : nullptr;
    SavedObject object;
    std::vector<std::string> tops;
    while (reader && reader->Next(object, fault))
        if (reader->TopCount() > tops.size()) tops.push_back(reader->Top().path);
    return ServerOfArguments(tops);
}

// Whether the file is whole. It stays open.
bool RestoreCommand::OpenFile() {
    messages.SetSubject(file);
    if (IsAmbiguousArgument(file.c_str())) {
        messages.Say("a file here is called so: write ./ before its name, or the path as /folder/file");
        return false;
    }
    SavedFault fault;
    list = CheckedList::Open(
        PathFromArgument(file.c_str()), [this](const SavedObject& object) { map.LookFor(object); }, fault,
        words.Accounts());
    if (list) return true;
    if (fault.line != 0) messages.SetSubject(file + ", line " + std::to_string(fault.line));
    messages.Say(fault.reason);
    return false;
}

bool RestoreCommand::AddTarget(const std::string& argument) {
    Target target;
    if (!MakeNamedTarget(argument, target, messages)) return false;
    targets.push_back(std::move(target));
    return true;
}

// Where the saved objects are to be put back. On false, the reason was printed.
bool RestoreCommand::FindTargets() {
    if (const std::optional<std::string> place = to.Text()) {
        if (list->Tops().size() == 1) return AddTarget(*place);
        messages.SetSubject("--to");
        messages.Say("the file holds what was saved of " + std::to_string(list->Tops().size()) +
                     " objects, and not of one");
        return false;
    }
    for (const SavedTop& top : list->Tops()) {
        if (!top.path.empty()) {
            if (!AddTarget(top.path)) return false;
            continue;
        }
        messages.SetSubject(file);
        messages.Say("it does not say where its paths start: --to must name the folder");
        return false;
    }
    return true;
}

// What the file holds, in words.
std::string RestoreCommand::Contents() const {
    const bool isListsOnly = list->Head().parts == DACL_SECURITY_INFORMATION;
    return (isListsOnly ? "Lists" : "Owners and lists") + std::string(" of ") +
           ObjectsText(list->ObjectCount()) +
           (list->Head().time.empty() ? "" : ", saved " + list->Head().time);
}

bool RestoreCommand::MayWrite() {
    const std::string heading = Contents() + ", would be put back here:";
    const ConsentTexts texts = {
        "restore replaces the owners and lists of everything that is named in the file", heading.c_str(),
        "nothing was changed"};
    return yes || AskForConsent(texts, targets, messages);
}

ExitCode RestoreCommand::Run() {
    output.Start();
    return output.Finish(FindAndRestore());
}

ExitCode RestoreCommand::FindAndRestore() {
    if (!OpenFile() || !FindTargets()) return ExitCode::kUsage;
    map.TellChains(messages);
    map.TellUnused("the file", messages);
    if (output.IsDryRun()) return Restore();
    if (!recording.Begin(ChangeKind::kRestore, messages)) return ExitCode::kSomeFailed;
    const ExitCode code = MayWrite() ? Restore() : ExitCode::kUsage;
    output.SetChangeNumber(recording.Number());
    recording.End(messages);
    return code;
}

ExitCode RestoreCommand::Restore() {
    const RestoreOptions how = {output.IsDryRun() ? RestoreMode::kDryRun : RestoreMode::kWrite,
                                &map.Exchange()};
    SavedFault fault;
    WatchForInterrupts();
    progress.emplace(quiet ? Progress::kQuiet : Progress::kShown);
    const DWORD result = RestoreLists(*list, how, *this, recording.Recorder(), counts, fault);
    progress->Clear();
    if (result != ERROR_SUCCESS) output.SetFailed();
    if (result == ERROR_INVALID_DATA && !fault.reason.empty()) {
        messages.SetSubject(file);
        messages.Say("broken off: " + fault.reason);
    } else if (IsVolumeLost(result)) {
        Say("", "not put back to its end: " + SystemMessageLine(result), result);
    } else if (result != ERROR_SUCCESS && result != ERROR_OPERATION_ABORTED) {
        messages.Check({result, Step::kRecord});
    }
    EndTop();
    output.AddToSummary("extra", counts.extra);
    messages.PrintForPeople(
        (output.IsDryRun() ? "would change: " : "changed: ") + std::to_string(counts.changed) +
        ", already so: " + std::to_string(counts.unchanged) + ", failed: " + std::to_string(counts.failed) +
        ", missing: " + std::to_string(counts.missing) +
        ", not in the file: " + std::to_string(counts.extra) + '\n');
    if (IsInterrupted()) SayInterrupted(messages);
    return ExitCodeOf(result == ERROR_SUCCESS && counts.failed == 0 && counts.missing == 0);
}

void RestoreCommand::Say(const std::string& path, const std::string& text, DWORD code) {
    progress->Clear();
    messages.SetSubject(TypedPath(targets[topsBegun - 1], path));
    messages.Say(text, code);
}

// What is missing could not be restored.
void RestoreCommand::EndTop() {
    const ObjectCounts now = {counts.changed, counts.unchanged, counts.failed + counts.missing};
    if (topsBegun > 0) {
        output.Count(now - ended);
        output.EndObject(true);
    }
    ended = now;
}

bool RestoreCommand::FindTop(const SavedTop& /*saved*/, RestoredTop& top) {
    EndTop();
    const Target& target = targets[topsBegun++];
    progress->Clear();
    messages.SetSubject(target.argument);
    output.BeginObject(target.argument);
    RestoredTop found;
    if (!FindTarget(target, found.object, messages)) return false;
    if (found.object.IsFolder() && !messages.Check({OpenFolder(target.object, found.folder)})) return false;
    top = std::move(found);
    return true;
}

void RestoreCommand::LeaveSystemLists() {
    SaySystemListsHidden(
        "objects that had one when they were saved fail, others keep those that they may have", messages);
}

bool RestoreCommand::Begin(const std::string& path) {
    if (IsInterrupted()) return false;
    const std::string& argument = targets[topsBegun - 1].argument;
    progress->Show(++begun, path.empty() ? argument.c_str() : path.c_str());
    return true;
}

void RestoreCommand::Change(const std::string& path) {
    if (!output.IsDryRun()) return;
    progress->Clear();
    output.AddDifference(TypedPath(targets[topsBegun - 1], path), {});
    messages.PrintForPeople("would change: " + PrintableText(TypedPath(targets[topsBegun - 1], path)) + '\n');
}

void RestoreCommand::Miss(const std::string& path) {
    Say(path, "missing: it was saved and is not there");
}

void RestoreCommand::FindExtra(const std::string& path) {
    if (output.IsJson()) return Say(path, "not in the file");
    progress->Clear();
    messages.PrintForPeople("not in the file: " + PrintableText(TypedPath(targets[topsBegun - 1], path)) +
                            '\n');
}

void RestoreCommand::FailExtra(const std::string& path, DWORD error) {
    Say(path, "what is in it and not in the file is not known: " + SystemMessageLine(error));
}

void RestoreCommand::Fail(const std::string& path, RestoreFault fault, DWORD error) {
    switch (fault) {
        case RestoreFault::kError:
            return Say(path,
                       error == ERROR_REVISION_MISMATCH ? "not changed: another program keeps changing it"
                                                        : LineText({error}),
                       error);
        case RestoreFault::kOtherKind:
            return Say(path, "not changed: it is another kind of object than the one that was saved");
        case RestoreFault::kNotSaved:
            return Say(path, "not in the file: it could not be read when the others were saved: " +
                                 SystemMessageLine(error));
        case RestoreFault::kNotListed:
            return Say(path,
                       "what is in it may not be in the file: it could not be listed to its end when it "
                       "was saved: " +
                           SystemMessageLine(error));
        case RestoreFault::kHiddenAccount:
            return Say(path,
                       "not changed: an account to be exchanged stands in an entry in which it cannot be "
                       "exchanged");
        case RestoreFault::kAlikeNames:
            return Say(path,
                       "not changed: there are names that differ from it in the case of letters alone, and "
                       "it is not certain which of them was saved");
    }
}

}  // namespace

std::unique_ptr<Command> MakeRestore(const CommandParent& parent) {
    return std::make_unique<RestoreCommand>(parent);
}

}  // namespace permora
