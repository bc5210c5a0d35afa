#include "report/unasked.h"

#include "platform/api/errors.h"

namespace permora {
namespace {

// "3 accounts, EXAMPLE\anna among them".
std::string CountText(const std::vector<std::string>& names, const char* what) {
    if (names.size() == 1) return names.front();
    return std::to_string(names.size()) + ' ' + what + "s, " + names.front() + " among them";
}

}  // namespace

std::vector<std::string> UnaskedLines(const Report& report) {
    std::vector<std::string> accounts;
    std::vector<std::string> groups;
    for (const ReportAccount& account : report.accounts) {
        const AccountSummary& summary = account.summary;
        const bool isAsked = summary.groupsError == ERROR_SUCCESS || summary.groupsError == ERROR_NONE_MAPPED;
        if (!isAsked || summary.account.standing == AccountStanding::kUnasked)
            accounts.push_back(account.name);
        if (account.people && !account.people->unknown.empty()) groups.push_back(account.name);
    }
    std::vector<std::string> lines;
    if (!accounts.empty())
        lines.push_back("not known, since they could not be asked about: what " +
                        CountText(accounts, "account") + " can read and write");
    if (!groups.empty())
        lines.push_back("not known to the end, since not all could be asked: who is in " +
                        CountText(groups, "group"));
    return lines;
}

}  // namespace permora
