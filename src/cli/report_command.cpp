// report: where whole trees depart from what their folders hand down, and who may do what in them.
#include <charconv>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/account_option.h"
#include "cli/commands.h"
#include "cli/interrupts.h"
#include "cli/json_output.h"
#include "cli/object_command.h"
#include "cli/report_comparing.h"
#include "cli/report_text.h"
#include "cli/terminal_output.h"
#include "cli/text_target.h"
#include "cli/tree_progress.h"
#include "platform/api/errors.h"
#include "report/report_json.h"
#include "report/report_page.h"
#include "report/report_table.h"
#include "security/effective_rights.h"

namespace permora {
namespace {

// --only, once or several times by commas.
class RemarkOption : public TextOption {
  public:
    explicit RemarkOption(OptionPlace place)
        : TextOption(place, "--only", "CODES",
                     "List only objects with one of these remarks, by their codes, separated by commas:\n" +
                         AllCodes()) {}

    std::string Interpret(const std::string& text) override {
        std::string_view rest = text;
        for (;;) {
            const std::string_view code = rest.substr(0, rest.find(','));
            const std::optional<Remark> remark = RemarkOf(code);
            if (!remark) return "--only: there is no remark \"" + std::string(code) + '"';
            remarks.Add(*remark);
            if (code.size() == rest.size()) return {};
            rest.remove_prefix(code.size() + 1);
        }
    }

    RemarkSet remarks;

  private:
    static std::string AllCodes() {
        std::string codes;
        for (std::size_t i = 0; i < kRemarkCount; ++i)
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
        std::size_t number = 0;
        const char* const end = text.data() + text.size();
        const auto [place, error] = std::from_chars(text.data(), end, number);
        if (error != std::errc() || place != end) return "--depth: not a number: " + text;
        depth = number;
        return {};
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
    bool MakeReport();
    bool FindGroups(ReportSelection& selection);
    bool WriteForm(const Report& report);

    JsonFlag json{*this, JsonShape::kObjects};
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

    Survey survey;
    SurveyRows rows;
    std::vector<ReportTop> tops;
    std::string time;
    std::unique_ptr<TextTarget> text;
    std::optional<ReportProgress> progress;
    bool isTargetMissing = false;
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
    time = UtcTimeText();
    isTargetMissing = targets.size() != ObjectCount();
    progress.emplace(quiet ? Progress::kQuiet : Progress::kShown, rows, messages);
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
    tops.push_back({target.argument, target.folder + target.name});
    progress->SetTarget(target);
    return survey.Walk(top, *progress) == ERROR_SUCCESS;
}

bool ReportCommand::End() {
    if (isCompared) return areAlike;
    if (!progress) return false;
    progress->End();
    if (!IsInterrupted() && !tops.empty() && MakeReport() && !IsInterrupted())
        return !isTargetMissing && !progress->IsAnythingMissing();
    if (IsInterrupted()) SayInterrupted(messages, "the report is not complete");
    return false;
}

bool ReportCommand::FindGroups(ReportSelection& selection) {
    if (!account.IsGiven()) return true;
    const nt::Sid sid = *account.Account().sid;
    AccountGroups groups;
    const DWORD error = FindAccountGroups(sid, GroupsRequest::kUsual, groups);
    if (error != ERROR_SUCCESS) {
        messages.SetSubject("");
        messages.Say(NoRightsText(error, GroupsRequest::kUsual, account.Account()) +
                     "; only what it owns or is named in is listed");
        groups.sids = {sid};
    }
    selection.account = std::move(groups);
    return error == ERROR_SUCCESS;
}

// Looks for the members before the figures are made, which then count them as well.
bool ReportCommand::MakeReport() {
    GroupDirectory directory;
    std::vector<std::pair<nt::Sid, GroupPeople>> groups;
    const auto findPeople = [&](std::span<const AccountSummary> found) {
        std::vector<nt::Sid> people;
        for (const AccountSummary& each : found) {
            const SID_NAME_USE use = each.account.name.use;
            if (use != SidTypeGroup && use != SidTypeAlias && use != SidTypeWellKnownGroup) continue;
            GroupPeople inGroup = directory.PeopleOf(each.sid);
            for (const GroupPerson& person : inGroup.people)
                people.push_back(person.sid);
            groups.emplace_back(each.sid, std::move(inGroup));
        }
        return people;
    };
    SurveySummary summary;
    const DWORD error = members ? survey.Summarise(IsInterrupted(), summary, findPeople)
                                : survey.Summarise(IsInterrupted(), summary);
    if (error != ERROR_SUCCESS) return false;
    Report report(survey, rows, summary);
    report.tops = tops;
    report.time = time;
    for (auto& [group, people] : groups)
        if (const auto place = report.PlaceOf(group)) report.accounts[*place].people = std::move(people);
    ReportSelection selection{.depth = depth.depth, .only = only.remarks, .account = std::nullopt};
    const bool areGroupsKnown = FindGroups(selection);
    if (!selection.IsAll() || isTargetMissing) report.extent = ReportExtent::kPart;
    report.Select(selection);
    return WriteForm(report) && areGroupsKnown;
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
