#include "report/report_making.h"

#include <charconv>
#include <utility>

#include "platform/group_members.h"
#include "platform/server_accounts.h"
#include "saved/utc_time.h"
#include "security/effective_rights.h"

namespace permora {

std::optional<std::size_t> LevelsOf(std::string_view text) {
    std::size_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [place, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || place != end) return std::nullopt;
    return number;
}

std::string ReportMaking::Begin(const std::string& server) {
    time = UtcTimeText();
    selection = {.depth = request.depth, .only = request.only, .account = std::nullopt};
    if (!request.account.sid) return {};
    AccountGroups groups;
    const DWORD error = FindAccountGroupsAt(server, *request.account.sid, GroupsRequest::kUsual, groups);
    if (error != ERROR_SUCCESS) groups.sids = {*request.account.sid};
    selection.account = std::move(groups);
    selection.isOfServer = !server.empty();
    if (error == ERROR_SUCCESS) return {};
    return NoRightsText(error, GroupsRequest::kUsual, request.account) +
           "; only what it owns or is named in is listed";
}

DWORD ReportMaking::Walk(ReportTop top, const HeldObject& object, SurveyObserver& observer) {
    tops.push_back(std::move(top));
    const DWORD error = survey.Walk(object, observer);
    isWalkStopped = isWalkStopped || error != ERROR_SUCCESS;
    return error;
}

// The figures count the people as well.
std::vector<nt::Sid> ReportMaking::FindPeople(std::span<const AccountSummary> found, PeopleInGroups& groups,
                                              const std::atomic<bool>& isStopped) const {
    if (request.members == ReportMembers::kLeftOut) return {};
    GroupDirectory directory;
    std::vector<nt::Sid> people;
    for (const AccountSummary& each : found) {
        if (isStopped) return {};
        if (!IsGroup(each.account.name.use)) continue;
        GroupPeople inGroup = directory.PeopleOf(each.sid);
        for (const GroupPerson& person : inGroup.people)
            people.push_back(person.sid);
        groups.emplace_back(each.sid, std::move(inGroup));
    }
    return people;
}

DWORD ReportMaking::Finish(const std::atomic<bool>& isStopped) {
    PeopleInGroups groups;
    const std::atomic<bool> isOver = true;
    const DWORD error = survey.Summarise(
        isWalkStopped ? isOver : isStopped, summary,
        [&](std::span<const AccountSummary> found) { return FindPeople(found, groups, isStopped); });
    // Half of the figures would be read as all.
    if (error != ERROR_SUCCESS) summary.accounts.clear();
    report.emplace(survey, rows, summary);
    report->tops = tops;
    report->time = time;
    for (auto& [group, people] : groups)
        if (const auto place = report->PlaceOf(group)) report->accounts[*place].people = std::move(people);
    if (!selection.IsAll()) extent = ReportExtent::kPart;
    report->extent = error == ERROR_SUCCESS ? extent : ReportExtent::kStopped;
    report->Select(RowChoice(selection));
    return error;
}

}  // namespace permora
