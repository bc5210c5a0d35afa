#include "results/report_source.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "platform/api/errors.h"
#include "platform/grouped_number.h"
#include "report/report_json.h"
#include "report/report_page.h"
#include "report/report_table.h"
#include "results/departure_texts.h"
#include "security/object_security.h"
#include "security/object_server.h"

namespace permora {
namespace {

constexpr std::array<SaveFormat, 3> kReportFormats = {{
    {"Web page", "html"},
    {"Table for spreadsheets", "csv"},
    {"JSON for programs", "json"},
}};

using WriteReport = DWORD(const Report& report, SavedOutput& output);
constexpr std::array<WriteReport*, kReportFormats.size()> kReportWriters = {WriteReportPage, WriteReportTable,
                                                                            WriteReportJson};

// "2 could not be read"; empty without any.
std::string CountText(std::size_t count, const char* what) {
    return count == 0 ? std::string() : GroupedNumber(count) + what;
}

std::size_t RowsWith(const SurveySummary& summary, Remark remark) {
    return summary.rows.at(static_cast<std::size_t>(remark));
}

// The summary in one line.
std::string SummaryLine(const Report& report, std::size_t rows) {
    const SurveySummary& summary = report.Summary();
    std::string line = GroupedNumber(summary.objects) + (summary.objects == 1 ? " object, " : " objects, ") +
                       GroupedNumber(summary.folders) + (summary.folders == 1 ? " folder, " : " folders, ") +
                       GroupedNumber(summary.distinctLists) +
                       (summary.distinctLists == 1 ? " distinct list, " : " distinct lists, ") +
                       GroupedNumber(rows) + " listed";
    AddPart(line, CountText(summary.unread, " could not be read"));
    AddPart(line, CountText(summary.unlisted, " could not be listed"));
    AddPart(line, CountText(summary.mounted, " not entered (other volumes)"));
    AddPart(line, CountText(RowsWith(summary, Remark::kNameUnasked),
                            " with accounts that could not be asked about"));
    const auto unknown =
        static_cast<std::size_t>(std::ranges::count_if(report.accounts, [](const ReportAccount& each) {
            return each.summary.groupsError != ERROR_SUCCESS;
        }));
    AddPart(line, CountText(unknown, unknown == 1 ? " account whose groups are not known"
                                                  : " accounts whose groups are not known"));
    return line;
}

}  // namespace

// Takes what the walk below one top comes to.
class ReportSource::Walk : public SurveyObserver {
  public:
    Walk(ReportSource& whole, const std::atomic<bool>& stopped)
        : source(whole), isStopped(stopped), choice(whole.making.Selection()) {}

    bool Begin(std::string_view /*path*/) override {
        source.objectCount.fetch_add(1, std::memory_order_relaxed);
        return !isStopped;
    }
    void Take(const SurveyRow& row) override {
        using Listing = FolderShape::Listing;
        const Listing listing = !choice.Fits(row)          ? Listing::kLeftOut
                                : choice.IsDeepEnough(row) ? Listing::kListed
                                                           : Listing::kCounted;
        source.findings.Add(row, listing, [this](const nt::Sid& sid) { return source.making.NameOf(sid); });
        if (row.error != ERROR_SUCCESS) source.unreadCount.fetch_add(1, std::memory_order_relaxed);
    }

  private:
    ReportSource& source;
    const std::atomic<bool>& isStopped;
    RowChoice choice;
};

ReportSource::ReportSource(ReportRequest request, std::vector<ResultTop> walked)
    : tops(std::move(walked)), making(std::move(request)) {}

void ReportSource::AddProblem(std::string problem) {
    if (problem.empty()) return;
    const std::scoped_lock hold(lock);
    news.problems.push_back(std::move(problem));
}

void ReportSource::Run(const std::atomic<bool>& isStopped) {
    CommonServer server;
    for (const ResultTop& top : tops)
        if (HeldObject object; FindItem(top.remembered, object).IsDone()) server.Add(object);
    AddProblem(making.Begin(server.Name()));
    if (!WalkTops(isStopped)) {
        const std::scoped_lock hold(lock);
        news.end = End::kNothing;
        return;
    }
    const DWORD error = making.Finish(isStopped);
    std::vector<AccountLine> lines = AccountLinesOf(making.Result());
    std::string line = SummaryLine(making.Result(), findings.ListedCount());
    const std::scoped_lock hold(lock);
    news.end = error == ERROR_SUCCESS ? End::kDone : End::kStopped;
    news.accounts = std::move(lines);
    news.summary = std::move(line);
}

// Whether there was any top.
bool ReportSource::WalkTops(const std::atomic<bool>& isStopped) {
    Walk walk(*this, isStopped);
    bool isAnyFound = false;
    for (std::size_t i = 0; i < tops.size(); ++i) {
        const std::string& path = tops[i].object.path;
        HeldObject object;
        const Outcome outcome = FindItem(tops[i].remembered, object);
        if (!outcome.IsDone()) {
            making.MissTop();
            AddProblem(path + ": " + LineText({outcome.code, outcome.step}));
            continue;
        }
        isAnyFound = true;
        findings.BeginTop(i);
        if (making.Walk({path, path}, object, walk) != ERROR_SUCCESS) break;
    }
    return isAnyFound;
}

void ReportSource::TakeNews() {
    folders.TakeNews();
    objects.TakeNews();
    const std::scoped_lock hold(lock);
    if (end == End::kNotYet && news.end != End::kNotYet) accounts.TakeLines(std::move(news.accounts));
    end = news.end;
    status = StatusText();
}

// Under the lock.
std::string ReportSource::StatusText() const {
    std::string line;
    if (end == End::kNotYet) {
        const std::size_t count = objectCount.load(std::memory_order_relaxed);
        line = GroupedNumber(count) + (count == 1 ? " object" : " objects") + " so far, " +
               GroupedNumber(objects.Count()) + " listed";
        AddPart(line, CountText(unreadCount.load(std::memory_order_relaxed), " could not be read"));
    } else if (end == End::kStopped) {
        line = "Stopped: " + news.summary + "; what comes later is missing, and so are the accounts";
    } else {
        line = news.summary;
    }
    for (const std::string& problem : news.problems)
        AddPart(line, problem);
    return line;
}

std::span<const SaveFormat> ReportSource::Formats() const {
    if (end == End::kDone || end == End::kStopped) return kReportFormats;
    return {};
}

DWORD ReportSource::Write(const SaveFormat& format, SavedOutput& output) {
    for (std::size_t i = 0; i < kReportFormats.size(); ++i)
        if (std::string_view(format.extension) == kReportFormats[i].extension)
            return kReportWriters[i](making.Result(), output);
    return ERROR_NOT_SUPPORTED;
}

}  // namespace permora
