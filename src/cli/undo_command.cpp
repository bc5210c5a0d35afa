// undo: takes a change back.
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/change_number.h"
#include "cli/change_output.h"
#include "cli/commands.h"
#include "cli/consent.h"
#include "cli/history_listing.h"
#include "cli/interrupts.h"
#include "cli/tree_progress.h"
#include "history/undo.h"
#include "platform/api/errors.h"
#include "platform/system_message.h"
#include "platform/volume_loss.h"

namespace permora {
namespace {

// Shows the object that the undo has come to, and names those that it leaves alone.
class TerminalUndo : public UndoObserver {
  public:
    TerminalUndo(Progress mode, ConsoleMessages& console) : messages(console), progress(mode) {}

    bool Begin(const ChangedTop& top, const std::string& path) override {
        if (IsInterrupted()) return false;
        progress.ShowPath(++count, path.empty() ? top.path : path);
        return true;
    }
    void Leave(const ChangedTop& top, const std::string& path, LeftAlone extent, DWORD reason) override {
        progress.Clear();
        messages.SetSubject(RecordedPath(top, path));
        messages.Say((extent == LeftAlone::kAllBelow ? "left alone, with everything of the change below it: "
                                                     : "left alone: ") +
                         LeftAloneText(reason),
                     reason);
        isChangedSince = isChangedSince || reason == ERROR_REVISION_MISMATCH;
        isDamaged = isDamaged || reason == ERROR_INVALID_SECURITY_DESCR;
    }
    bool HasMetChanges() const { return isChangedSince; }
    bool HasMetDamage() const { return isDamaged; }

  private:
    ConsoleMessages& messages;
    ProgressLine progress;
    std::size_t count = 0;
    bool isChangedSince = false;
    bool isDamaged = false;
};

class UndoCommand : public Command {
  public:
    explicit UndoCommand(const CommandParent& parent)
        : Command(parent, "undo",
                  "Put back what was there before a change. What was changed since, moved or\n"
                  "replaced is left alone and named. An undo can itself be undone") {}

    ExitCode Run() override;

  private:
    ExitCode FindAndUndo();
    DWORD FindChange(ChangeFacts& facts);
    ExitCode RefuseRunning(const ChangeFacts& facts);
    bool MayUndo(const ChangeFacts& facts);
    ExitCode Undo(const ChangeFacts& facts);
    ExitCode ReportEnd(DWORD error, const UndoCounts& counts);

    ChangeNumber number{*this, "The number of the change, as history lists it (the last one)"};
    ChangeOutput output{*this, messages, "Count what would be put back and write nothing"};
    YesFlag yes{*this};
    Flag force{*this, "--force",
               "Put back also what was changed since, but never on another object that has\n"
               "the name now; and damaged descriptors, byte for byte, where nothing was changed\n"
               "since"};
    QuietFlag quiet{*this};

    std::unique_ptr<History> history;
};

DWORD UndoCommand::FindChange(ChangeFacts& facts) {
    const DWORD error = History::OpenToRead(History::UsualPath(), history);
    if (error != ERROR_SUCCESS) return error == ERROR_FILE_NOT_FOUND ? ERROR_NOT_FOUND : error;
    return number.Number() ? history->Find(*number.Number(), facts) : history->FindLast(facts);
}

bool UndoCommand::MayUndo(const ChangeFacts& facts) {
    const ConsentTexts texts = {"undo replaces lists and owners",
                                "This change is taken back:", "nothing was changed"};
    return output.IsDryRun() || yes || AskForConsent(texts, {ChangeLine(facts)}, messages);
}

ExitCode UndoCommand::RefuseRunning(const ChangeFacts& facts) {
    messages.Say("not undone: another program is still making this change: " + ChangeLine(facts));
    if (!number.Number()) messages.Say("a change before it is undone by its number: permora-cli undo CHANGE");
    return ExitCode::kSomeFailed;
}

ExitCode UndoCommand::Run() {
    output.Start();
    return output.Finish(FindAndUndo());
}

ExitCode UndoCommand::FindAndUndo() {
    ChangeFacts facts;
    const DWORD error = FindChange(facts);
    messages.SetSubject("");
    if (error == ERROR_NOT_FOUND && number.Number()) {
        messages.Say("the history has no change " + std::to_string(*number.Number()));
        return ExitCode::kUsage;
    }
    if (error == ERROR_NOT_FOUND) {
        messages.PrintForPeople("there is nothing to undo\n");
        return ExitCode::kDone;
    }
    if (error != ERROR_SUCCESS) return SayHistoryFailure(error, messages);
    if (facts.state == ChangeState::kRunning) return RefuseRunning(facts);
    return MayUndo(facts) ? Undo(facts) : ExitCode::kUsage;
}

ExitCode UndoCommand::Undo(const ChangeFacts& facts) {
    if (!output.IsDryRun()) {
        const DWORD error = History::Open(History::UsualPath(), history);
        if (error != ERROR_SUCCESS) return SayHistoryFailure(error, messages);
    }
    WatchForInterrupts();
    TerminalUndo observer(quiet ? Progress::kQuiet : Progress::kShown, messages);
    UndoCounts counts;
    output.BeginObject(facts.firstTop);
    output.AddMember("undoes", facts.number);
    const UndoOptions how = {output.IsDryRun() ? UndoMode::kDryRun : UndoMode::kWrite,
                             force ? ChangedSince::kOverwrite : ChangedSince::kLeaveAlone};
    const DWORD error = UndoChange(*history, facts.number, how, observer, counts);
    output.Count({counts.restored, counts.asBefore, counts.leftAlone});
    output.SetChangeNumber(counts.change);
    output.EndObject(error == ERROR_SUCCESS);
    messages.SetSubject("");
    if (observer.HasMetChanges() && !force) messages.Say("--force takes back also what was changed since");
    if (observer.HasMetDamage() && !force)
        messages.Say("--force brings damaged descriptors back too, where nothing was changed since");
    return ReportEnd(error, counts);
}

ExitCode UndoCommand::ReportEnd(DWORD error, const UndoCounts& counts) {
    if (error == ERROR_BUSY) {
        messages.Say("not undone: another program is still making this change");
        return ExitCode::kSomeFailed;
    }
    messages.PrintForPeople((output.IsDryRun() ? "would put back: " : "put back: ") +
                            std::to_string(counts.restored) +
                            ", already as it was: " + std::to_string(counts.asBefore) +
                            ", left alone: " + std::to_string(counts.leftAlone) + '\n');
    if (error == ERROR_OPERATION_ABORTED) {
        SayInterrupted(messages, "the rest is as it was; undo goes on with it");
        return ExitCode::kSomeFailed;
    }
    if (IsVolumeLost(error)) {
        messages.Say(
            "not taken back to its end: " + SystemMessageLine(error) + "; undo goes on with the rest", error);
        return ExitCode::kSomeFailed;
    }
    if (error != ERROR_SUCCESS) return SayHistoryFailure(error, messages);
    return ExitCodeOf(counts.leftAlone == 0);
}

}  // namespace

std::unique_ptr<Command> MakeUndo(const CommandParent& parent) {
    return std::make_unique<UndoCommand>(parent);
}

}  // namespace permora
