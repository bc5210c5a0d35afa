#include "cli/report_comparing.h"

#include <array>
#include <string>
#include <vector>

#include "cli/interrupts.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"
#include "platform/sequential_file.h"
#include "report/report_comparison.h"
#include "security/descriptor_comparison.h"

namespace permora {
namespace {

// More than a report of ten million objects takes.
constexpr std::size_t kMostBytes = std::size_t{4} << 30;

DWORD ReadWhole(const std::string& path, std::string& text) {
    SequentialFile file;
    DWORD error = SequentialFile::Open(path, file);
    std::vector<char> block(std::size_t{1} << 20);
    while (error == ERROR_SUCCESS) {
        if (IsInterrupted()) return ERROR_OPERATION_ABORTED;
        std::size_t count = 0;
        error = file.Read(block, count);
        if (error != ERROR_SUCCESS || count == 0) break;
        if (text.size() + count > kMostBytes) return ERROR_NOT_ENOUGH_MEMORY;
        text.append(block.data(), count);
    }
    return error;
}

bool ReadReportFile(const Target& target, ReadReport& report, ConsoleMessages& messages) {
    messages.SetSubject(target.argument);
    std::string text;
    if (!messages.Check({ReadWhole(target.folder + target.name, text)})) return false;
    std::string fault = ParseReport(text, report);
    if (fault.empty() && report.extent != ReportExtent::kWhole)
        fault = "it is a report of a part: made with --depth, --account or --only, or a path was not found";
    if (!fault.empty()) messages.Say(fault);
    return fault.empty();
}

// Words that stay, for programs, and what people read.
struct ChangeWords {
    const char* word;
    const char* text;
};

ChangeWords WordsOf(AccessChangeKind kind) {
    switch (kind) {
        case AccessChangeKind::kGained:
            return {"gained", "Gained"};
        case AccessChangeKind::kLost:
            return {"lost", "Lost"};
        case AccessChangeKind::kBoth:
            return {"changed", "Changed"};
        case AccessChangeKind::kAsBefore:
            break;
    }
    return {"asBefore", "As before"};
}

std::string OwnerName(const std::optional<nt::Sid>& sid) {
    if (!sid) return "none";
    AccountRecord account;
    account.sid = sid;
    return AccountDisplayName(account);
}

class ComparisonOutput : public AccessObserver {
  public:
    ComparisonOutput(const ReportComparison& whole, const ReadReport& newer, DifferenceForm outputForm)
        : comparison(whole), report(newer), form(outputForm) {}

    bool Begin() override { return !IsInterrupted(); }
    void Take(const ComparedObjectAccess& object) override {
        isUnknown = isUnknown || object.isUnknown;
        const std::string path = TypedChildPath(report.tops[object.top].typed, object.path);
        if (form == DifferenceForm::kJson)
            PrintJson(object, path);
        else
            PrintObject(object, path);
        for (const AccessChange& change : object.changes) {
            const bool isBoth = change.kind == AccessChangeKind::kBoth;
            gained += change.kind == AccessChangeKind::kGained || isBoth ? 1U : 0U;
            lost += change.kind == AccessChangeKind::kLost || isBoth ? 1U : 0U;
        }
        owners += object.owner ? 1U : 0U;
    }
    bool AreAlike() const { return gained + lost + owners == 0 && !isUnknown; }

    void End(std::size_t objects) {
        if (form == DifferenceForm::kJson)
            array.End();
        else
            Print("compared: " + std::to_string(objects) + " objects, gained: " + std::to_string(gained) +
                  ", lost: " + std::to_string(lost) + ", other owners: " + std::to_string(owners) + '\n');
    }

  private:
    void PrintObject(const ComparedObjectAccess& object, const std::string& path) const {
        std::string text = PrintableText(path) + '\n';
        if (object.owner)
            text += "  Owner: " + PrintableText(OwnerName(object.owner->before)) + ", now " +
                    PrintableText(OwnerName(object.owner->after)) + '\n';
        if (object.isUnknown) text += "  Not compared: one of the reports does not say what it had\n";
        if (!object.changes.empty()) {
            std::vector<std::vector<std::string>> lines = {{"", "Account", "Before", "After", "Applies To"}};
            for (const AccessChange& change : object.changes)
                lines.push_back({WordsOf(change.kind).text, comparison.Accounts()[change.account].name,
                                 RightsText(change.before), RightsText(change.after), change.where});
            text += AlignedTable(lines, "  ");
        }
        Print(text);
    }

    void PrintJson(const ComparedObjectAccess& object, const std::string& path) {
        Json changes = Json::array();
        for (const AccessChange& change : object.changes) {
            const ComparedAccount& account = comparison.Accounts()[change.account];
            changes.push_back({{"change", WordsOf(change.kind).word},
                               {"account", account.name},
                               {"sid", account.sid.ToText()},
                               {"before", "0x" + HexText(change.before)},
                               {"after", "0x" + HexText(change.after)},
                               {"applyTo", change.where}});
        }
        Json json = {{"path", path}, {"compared", !object.isUnknown}, {"changes", std::move(changes)}};
        const auto textOf = [](const std::optional<nt::Sid>& sid) {
            return sid ? Json(sid->ToText()) : Json();
        };
        if (object.owner)
            json["owner"] = {{"before", textOf(object.owner->before)},
                             {"after", textOf(object.owner->after)}};
        array.Add(json);
    }

    const ReportComparison& comparison;
    const ReadReport& report;
    const DifferenceForm form;
    JsonPrinter array{"report"};
    std::size_t gained = 0;
    std::size_t lost = 0;
    std::size_t owners = 0;
    bool isUnknown = false;
};

void SayWithoutGroups(const ReportComparison& comparison, ConsoleMessages& messages) {
    messages.SetSubject("");
    for (const ComparedAccount& account : comparison.Accounts())
        if (account.isWithoutGroups)
            messages.Say(account.name +
                         ": its groups were not known, so only what it has by itself is compared");
}

}  // namespace

std::optional<bool> CompareReports(const Target& older, const Target& newer, DifferenceForm form,
                                   ConsoleMessages& messages) {
    ReadReport was;
    ReadReport is;
    if (!ReadReportFile(older, was, messages) || !ReadReportFile(newer, is, messages)) return std::nullopt;
    ReportComparison comparison(was, is);
    const std::vector<std::string>& unmatched = comparison.UnmatchedTops();
    for (const std::string& top : unmatched) {
        messages.SetSubject(top);
        messages.Say("only one of the reports is about it");
    }
    SayWithoutGroups(comparison, messages);
    ComparisonOutput output(comparison, is, form);
    std::size_t objects = 0;
    const bool isDone = comparison.Run(output, objects);
    output.End(objects);
    if (!isDone) SayInterrupted(messages, "the rest was not compared");
    return isDone && output.AreAlike() && unmatched.empty();
}

}  // namespace permora
