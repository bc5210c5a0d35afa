// Making the report of several trees, the same for the terminal and the window: the walks, the people in
// groups, the figures, the selection.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "report/report.h"
#include "security/account_record.h"
#include "survey/survey.h"
#include "survey/survey_rows.h"

namespace permora {

enum class ReportMembers : std::uint8_t { kLeftOut, kFound };

// What the user asks for.
struct ReportRequest {
    std::optional<std::size_t> depth;
    RemarkSet only;
    AccountRecord account;  // without a SID: objects are listed whatever accounts they are about
    ReportMembers members = ReportMembers::kLeftOut;
};

// A number of levels as somebody types it; nothing: the text is none.
std::optional<std::size_t> LevelsOf(std::string_view text);

// One thread at a time.
class ReportMaking {
  public:
    explicit ReportMaking(ReportRequest asked) : request(std::move(asked)) {}

    // Comes first: asks for the groups of the account, and sets the time. Returns why these are not known, in
    // a sentence without its stop, or an empty text. Only what the account owns or is named in is chosen
    // then. `server` is where all trees are (ServerOfObject).
    std::string Begin(const std::string& server = {});
    // The rows are chosen by it, whether they are kept already or not. After Begin.
    const ReportSelection& Selection() const { return selection; }

    // `observer` keeps the rows in Rows(): who reads them meanwhile in another thread needs a lock there. 0,
    // or ERROR_OPERATION_ABORTED when the observer has ended the walk.
    DWORD Walk(ReportTop top, const HeldObject& object, SurveyObserver& observer);
    // The user has asked for one that was not found.
    void MissTop() { extent = ReportExtent::kPart; }
    SurveyRows& Rows() { return rows; }
    // How an account that a row names is shown.
    std::string NameOf(const nt::Sid& sid) { return ShownAccountName(survey, sid); }

    // Comes last. ERROR_OPERATION_ABORTED when it was stopped: the report is of what was come to so far, and
    // has no accounts.
    DWORD Finish(const std::atomic<bool>& isStopped);
    // After Finish. Lives as long as this.
    const Report& Result() const { return *report; }

  private:
    using PeopleInGroups = std::vector<std::pair<nt::Sid, GroupPeople>>;
    std::vector<nt::Sid> FindPeople(std::span<const AccountSummary> found, PeopleInGroups& groups,
                                    const std::atomic<bool>& isStopped) const;

    ReportRequest request;
    ReportSelection selection;
    Survey survey;
    SurveyRows rows;
    SurveySummary summary;
    std::vector<ReportTop> tops;
    std::string time;
    ReportExtent extent = ReportExtent::kWhole;
    bool isWalkStopped = false;
    std::optional<Report> report;
};

}  // namespace permora
