// history: what was changed, and how long that is kept.
#include <charconv>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/settings_store.h"
#include "cli/change_number.h"
#include "cli/change_output.h"
#include "cli/commands.h"
#include "cli/history_age.h"
#include "cli/history_listing.h"
#include "cli/interrupts.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"

namespace permora {
namespace {

// --prune.
class AgeOption : public TextOption {
  public:
    explicit AgeOption(OptionPlace place)
        : TextOption(place, "--prune", "OLDER",
                     "Remove changes that ended so long ago (30d, 12h) or before a day (2026-01-31);\n"
                     "they can no longer be undone") {}
    std::string Interpret(const std::string& text) override {
        time = TimeBefore(text, std::time(nullptr));
        return time ? "" : text + ": neither an age (30d, 12h) nor a day (2026-01-31)";
    }
    std::optional<std::int64_t> time;
};

// A whole number; 0: without that limit.
class LimitOption : public TextOption {
  public:
    using TextOption::TextOption;
    std::string Interpret(const std::string& text) override {
        std::uint32_t read = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), read);
        if (error != std::errc() || end != text.data() + text.size()) return text + ": not a whole number";
        limit = read;
        return {};
    }
    std::optional<std::uint32_t> limit;
};

class HistoryCommand : public Command {
  public:
    explicit HistoryCommand(const CommandParent& parent)
        : Command(parent, "history", "List what was changed, or the objects of one change") {}

    std::string Interpret() override;
    ExitCode Run() override;

  private:
    bool Keep();
    bool Prune();
    ExitCode EndList(DWORD error, JsonPrinter& printer, Json rest = Json::object());
    ExitCode ListChanges();
    ExitCode ListObjects(std::int64_t change);

    ChangeNumber number{*this, "Show the objects of this change, with what was there before and after"};
    ChangeOutput output{*this, messages, "With --prune, --keep-days or --keep-size: write nothing"};
    AgeOption prune{*this};
    LimitOption keepDays{*this, "--keep-days", "DAYS",
                         "From now on keep changes so long (90 days if it was never set; 0: for ever)"};
    LimitOption keepSize{*this, "--keep-size", "MIB",
                         "From now on let the history grow so large, then remove the oldest changes\n"
                         "(1024 MiB if it was never set; 0: without limit)"};
    std::unique_ptr<History> history;
};

std::string HistoryCommand::Interpret() {
    if (std::string problem = Command::Interpret(); !problem.empty()) return problem;
    const bool isSetting = keepDays.limit || keepSize.limit;
    const int tasks = (number.Number() ? 1 : 0) + (prune.time ? 1 : 0) + (isSetting ? 1 : 0);
    if (tasks > 1) return "history lists, removes or sets limits, one at a time";
    return output.IsDryRun() && !isSetting && !prune.time
               ? "--dry-run and --check are for --prune, --keep-days and --keep-size"
               : "";
}

ExitCode HistoryCommand::Run() {
    output.Start();
    if (keepDays.limit || keepSize.limit || prune.time) {
        output.BeginObject(History::UsualPath());
        const bool isDone = prune.time ? Prune() : Keep();
        output.EndObject(isDone);
        return output.Finish(ExitCodeOf(isDone));
    }
    const DWORD error = History::OpenToRead(History::UsualPath(), history);
    JsonPrinter printer("history");
    // Nothing has been changed yet.
    if (error != ERROR_SUCCESS && error != ERROR_FILE_NOT_FOUND) return EndList(error, printer);
    return number.Number() ? ListObjects(*number.Number()) : ListChanges();
}

// The document is whole after a failure, too.
ExitCode HistoryCommand::EndList(DWORD error, JsonPrinter& printer, Json rest) {
    const bool isDone = error == ERROR_SUCCESS;
    if (!isDone) SayHistoryFailure(error, messages);
    const Json whole = output.EndDocument();
    if (!isDone) rest["messages"] = whole["messages"];
    if (output.IsJson()) printer.End(rest);
    return ExitCodeOf(isDone);
}

bool HistoryCommand::Keep() {
    messages.SetSubject("settings");
    HistoryLimits before;
    if (!messages.Check({ReadHistoryLimits(before)})) return false;
    const HistoryLimits limits = {keepDays.limit.value_or(before.days),
                                  keepSize.limit.value_or(before.megabytes)};
    const bool isSo = limits.days == before.days && limits.megabytes == before.megabytes;
    if (!isSo) output.SetChanged();
    output.AddMember("days", limits.days);
    output.AddMember("megabytes", limits.megabytes);
    if (!isSo && !output.IsDryRun() && !messages.Check({StoreHistoryLimits(limits)})) return false;
    messages.PrintForPeople(
        (output.IsDryRun() ? "would be kept: " : "kept: ") +
        (limits.days == 0 ? std::string("for ever") : std::to_string(limits.days) + " days") + ", " +
        (limits.megabytes == 0 ? "without limit" : "at most " + std::to_string(limits.megabytes) + " MiB") +
        '\n');
    return true;
}

bool HistoryCommand::Prune() {
    std::vector<ChangeFacts> old;
    std::size_t removed = 0;
    DWORD error = History::OpenToRead(History::UsualPath(), history);
    if (error == ERROR_SUCCESS) error = history->FindOlder(*prune.time, old);
    if (error == ERROR_SUCCESS && output.IsDryRun()) {
        removed = old.size();
    } else if (error == ERROR_SUCCESS && !old.empty()) {
        error = History::Open(History::UsualPath(), history);
        if (error == ERROR_SUCCESS) error = history->PruneOlder(*prune.time, removed);
    }
    if (error != ERROR_SUCCESS && error != ERROR_FILE_NOT_FOUND)
        return SayHistoryFailure(error, messages) == ExitCode::kDone;
    if (removed > 0) output.SetChanged();
    output.AddMember("removed", removed);
    messages.PrintForPeople((output.IsDryRun() ? "would be removed: " : "removed: ") +
                            std::to_string(removed) + (removed == 1 ? " change\n" : " changes\n"));
    return true;
}

ExitCode HistoryCommand::ListChanges() {
    std::vector<ChangeFacts> changes;
    const DWORD error = history ? history->List(changes) : ERROR_SUCCESS;
    JsonPrinter printer("history");
    std::vector<std::vector<std::string>> table = {ChangeTitles()};
    for (const ChangeFacts& facts : changes)
        if (output.IsJson())
            printer.Add(ChangeJson(facts));
        else
            table.push_back(ChangeColumns(facts));
    if (error == ERROR_SUCCESS)
        messages.PrintForPeople(changes.empty() ? "nothing has been changed yet\n" : AlignedTable(table, ""));
    return EndList(error, printer);
}

ExitCode HistoryCommand::ListObjects(std::int64_t change) {
    ChangeFacts facts;
    DWORD error = history ? history->Find(change, facts) : ERROR_NOT_FOUND;
    if (error == ERROR_NOT_FOUND) {
        messages.Say("the history has no change " + std::to_string(change));
        return ExitCode::kUsage;
    }
    JsonPrinter array("history");
    if (error == ERROR_SUCCESS) {
        if (!output.IsJson()) Print(PrintableText(ChangeLine(facts)) + '\n');
        error = history->VisitObjects(change, RecordOrder::kAsMade, [&](const RecordedObject& object) {
            if (output.IsJson())
                array.Add(RecordedJson(object));
            else
                Print('\n' + RecordedText(object));
            return !IsInterrupted();
        });
    }
    return EndList(error, array, {{"change", change}});
}

}  // namespace

std::unique_ptr<Command> MakeHistory(const CommandParent& parent) {
    return std::make_unique<HistoryCommand>(parent);
}

}  // namespace permora
