// report: where whole trees depart from what their folders hand down, and who may do what in them.
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/account_option.h"
#include "cli/commands.h"
#include "cli/interrupts.h"
#include "cli/object_command.h"
#include "cli/report_comparing.h"
#include "cli/report_text.h"
#include "cli/terminal_output.h"
#include "cli/text_target.h"
#include "cli/tree_progress.h"
#include "platform/api/errors.h"
#include "report/report_json.h"
#include "report/report_making.h"
#include "report/report_page.h"
#include "report/report_table.h"
#include "report/unasked.h"
#include "security/object_server.h"

namespace permora {
namespace {

// --only, once or several times by commas.
class RemarkOption : public TextOption {
  public:
    explicit RemarkOption(OptionPlace place)
        : TextOption(place, "--only", "CODES",
                     "List only objects with one of these remarks, by their codes, separated by commas:\n" +
                         AllCodes()) {
        ValueDescription values{.kind = ValueKind::kKnownList};
        for (std::size_t i = 0; i < kSurveyRemarkCount; ++i)
            values.known.push_back({std::string(CodeOf(static_cast<Remark>(i))), ""});
        Describe(values);
    }

    std::string Interpret(const std::string& text) override {
        std::string_view rest = text;
        for (;;) {
            const std::string_view code = rest.substr(0, rest.find(','));
            const std::optional<Remark> remark = RemarkOf(code);
            const bool isOfSurveys = remark && static_cast<std::size_t>(*remark) < kSurveyRemarkCount;
            if (!isOfSurveys) return "--only: there is no remark \"" + std::string(code) + '"';
            remarks.Add(*remark);
            if (code.size() == rest.size()) return {};
            rest.remove_prefix(code.size() + 1);
        }
    }

    RemarkSet remarks;

  private:
    static std::string AllCodes() {
        std::string codes;
        for (std::size_t i = 0; i < kSurveyRemarkCount; ++i)
            codes += (i == 0 ? "" : i % 5 == 0 ? ",\n" : ", ") + std::string(CodeOf(static_cast<Remark>(i)));
        return codes;
    }
};

// --depth.
class DepthOption : public TextOption {
  public:
    explicit DepthOption(OptionPlace place)
        : TextOption(place, "--depth", "N",
                     "List only objects at most N levels below the paths; the summary counts all") {}

    std::string Interpret(const std::string& text) override {
        depth = LevelsOf(text);
        return depth ? "" : "--depth: not a number: " + text;
    }

    std::optional<std::size_t> depth;
};

// Keeps the rows, shows how far the work is, and names what could not be read.
class ReportProgress : public SurveyObserver {
  public:
    ReportProgress(Progress mode, SurveyRows& kept, ConsoleMessages& console)
        : line(mode), rows(kept), messages(console) {}

    void SetTarget(const Target& next) { target = &next; }
    bool IsAnythingMissing() const { return isAnythingMissing; }
    void End() { line.Clear(); }

    bool Begin(std::string_view path) override {
        if (IsInterrupted()) return false;
        line.ShowPath(++count, path);
        return true;
    }
    void Take(const SurveyRow& row) override {
        rows.Add(row);
        if (row.error == ERROR_SUCCESS) return;
        isAnythingMissing = true;
        line.Clear();
        messages.SetSubject(TypedPath(*target, std::string(row.path)));
        messages.Say((row.remarks.Has(Remark::kUnlisted) ? "not read, what is in it: " : "not read: ") +
                     LineText({row.error}));
    }

  private:
    ProgressLine line;
    SurveyRows& rows;
    ConsoleMessages& messages;
    const Target* target = nullptr;
    std::size_t count = 0;
    bool isAnythingMissing = false;
};

class ReportCommand : public ObjectCommand {
  public:
    explicit ReportCommand(const CommandParent& parent)
        : ObjectCommand(parent, "report",
                        "Show where trees depart from what their folders hand down, what is odd in their\n"
                        "lists, and how much each account can read, write and owns. Nothing is changed") {
        json.Excludes(csv);
        compare.Excludes(csv);
        compare.Excludes(members);
    }

    std::string Interpret() override;

  private:
    ExitCode Begin(const std::vector<Target>& targets) override;
    bool Do(const Target& target) override;
    bool End() override;
    ExitCode Compare(const std::vector<Target>& targets);
    bool SayUnasked(const Report& report);
    bool WriteForm(const Report& report);

    Flag json{*this, "--json", "As JSON for programs; --compare reads it again"};
    Flag csv{*this, "--csv", "As a table with commas for spreadsheets, a line for each entry"};
    TextOption html{*this, "--html", "FILE",
                    "As a page for browsers, which needs nothing else; the file appears when it is\n"
                    "complete, and replaces an older one. - is standard output"};
    DepthOption depth{*this};
    AccountOption account{*this, "--account",
                          "List only what this account owns, is named in, or may read or write by itself or\n"
                          "its groups",
                          Presence::kOptional};
    RemarkOption only{*this};
    Flag members{*this, "--members",
                 "Say who is in each group, also through groups in it, and count what these people\n"
                 "can read and write"};
    Flag compare{*this, "--compare",
                 "PATH is two files of report --json, the older one first: show who has gained and\n"
                 "who has lost access. Ends with 1 when anybody has"};
    QuietFlag quiet{*this};

    std::optional<ReportMaking> making;
    std::unique_ptr<TextTarget> text;
    std::optional<ReportProgress> progress;
    bool isAnyFound = false;
    bool isTargetMissing = false;
    bool areGroupsKnown = true;
    bool isCompared = false;
    bool areAlike = false;
};

std::string ReportCommand::Interpret() {
    if (std::string problem = ObjectCommand::Interpret(); !problem.empty()) return problem;
    const bool isSelected = depth.depth || account.IsGiven() || !only.remarks.IsEmpty();
    if (html.Text() && (json || csv || compare))
        return "--html is a form of its own: without --json, --csv and --compare";
    if (!compare) return {};
    if (isSelected) return "--compare takes whole reports: without --depth, --account and --only";
    return ObjectCount() == 2 ? "" : "--compare takes two reports: the older one, then the newer one";
}

ExitCode ReportCommand::Begin(const std::vector<Target>& targets) {
    WatchForInterrupts();
    OutliveReaders();
    if (compare) return Compare(targets);
    if (html.Text() || json || csv) {
        text = TextTarget::Open(html.Text().value_or(kStandardOutput), messages);
        if (!text) return ExitCode::kUsage;
    }
    making.emplace(ReportRequest{depth.depth, only.remarks, account.Account(),
                                 members ? ReportMembers::kFound : ReportMembers::kLeftOut});
    CommonServer server;
    for (const Target& target : targets)
        if (HeldObject top; target.object.Find(top) == ERROR_SUCCESS) server.Add(top);
    const std::string problem = making->Begin(server.Name());
    areGroupsKnown = problem.empty();
    if (!areGroupsKnown) {
        messages.SetSubject("");
        messages.Say(problem);
    }
    isTargetMissing = targets.size() != ObjectCount();
    progress.emplace(quiet ? Progress::kQuiet : Progress::kShown, making->Rows(), messages);
    return ExitCode::kDone;
}

ExitCode ReportCommand::Compare(const std::vector<Target>& targets) {
    if (targets.size() != 2) return ExitCode::kUsage;
    isCompared = true;
    const DifferenceForm form = json ? DifferenceForm::kJson : DifferenceForm::kText;
    const std::optional<bool> result = CompareReports(targets[0], targets[1], form, messages);
    areAlike = result.value_or(false);
    return result ? ExitCode::kDone : ExitCode::kUsage;
}

bool ReportCommand::Do(const Target& target) {
    if (isCompared) return true;
    HeldObject top;
    if (!FindTarget(target, top, messages)) {
        isTargetMissing = true;
        return false;
    }
    isAnyFound = true;
    progress->SetTarget(target);
    return making->Walk({target.argument, target.folder + target.name}, top, *progress) == ERROR_SUCCESS;
}

bool ReportCommand::End() {
    if (isCompared) return areAlike;
    if (!progress) return false;
    progress->End();
    if (isTargetMissing) making->MissTop();
    if (!IsInterrupted() && isAnyFound && making->Finish(IsInterrupted()) == ERROR_SUCCESS &&
        WriteForm(making->Result()) && !IsInterrupted())
        return SayUnasked(making->Result()) && areGroupsKnown && !isTargetMissing &&
               !progress->IsAnythingMissing();
    if (IsInterrupted()) SayInterrupted(messages, "the report is not complete");
    return false;
}

// False, and a line for each, when figures or members are missing.
bool ReportCommand::SayUnasked(const Report& report) {
    const std::vector<std::string> lines = UnaskedLines(report);
    messages.SetSubject("");
    for (const std::string& line : lines)
        messages.Say(line);
    return lines.empty();
}

bool ReportCommand::WriteForm(const Report& report) {
    if (!text) {
        PrintReport(report);
        return true;
    }
    DWORD error = json  ? WriteReportJson(report, *text)
                  : csv ? WriteReportTable(report, *text)
                        : WriteReportPage(report, *text);
    if (error == ERROR_SUCCESS) error = text->Complete();
    if (error == ERROR_SUCCESS) return true;
    messages.SetSubject(html.Text().value_or("standard output"));
    if (error != ERROR_OPERATION_ABORTED) messages.Check({error});
    messages.Say(html.Text() && html.Text() != kStandardOutput ? "not written"
                                                               : "the report is not complete");
    return false;
}

}  // namespace

std::unique_ptr<Command> MakeReport(const CommandParent& parent) {
    return std::make_unique<ReportCommand>(parent);
}

}  // namespace permora
