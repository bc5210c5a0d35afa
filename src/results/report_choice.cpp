#include "results/report_choice.h"

#include <utility>

#include "platform/ascii.h"
#include "security/account_lookup.h"

namespace permora {

std::string MakeReportRequest(const ReportChoice& choice, ReportRequest& request) {
    ReportRequest made{.depth = {}, .only = choice.only, .account = {}, .members = choice.members};
    const std::string levels(WithoutOuterBlanks(choice.levels));
    if (!levels.empty()) {
        made.depth = LevelsOf(levels);
        if (!made.depth) return "The levels below are not a number: " + levels;
    }
    const std::string account(WithoutOuterBlanks(choice.account));
    if (!account.empty())
        if (std::string problem = FindTypedAccount(account, made.account, choice.server); !problem.empty())
            return problem;
    request = std::move(made);
    return {};
}

}  // namespace permora
