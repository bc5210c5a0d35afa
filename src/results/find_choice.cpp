#include "results/find_choice.h"

#include <utility>

#include "platform/ascii.h"
#include "security/account_lookup.h"

namespace permora {

std::string MakeFindRequest(const FindChoice& choice, FindRequest& request) {
    FindRequest made{{.account = {}, .part = choice.part}, "accounts that no longer exist"};
    if (choice.accounts == SearchedAccounts::kOne) {
        const std::string typed(WithoutOuterBlanks(choice.typed));
        if (typed.empty()) return "The name of the account is empty.";
        AccountRecord account;
        if (std::string problem = FindTypedAccount(typed, account, choice.server); !problem.empty())
            return problem;
        made.criteria.account = account.sid;
        made.name = AccountDisplayName(account);
    }
    if (choice.part == SearchedPart::kOwner) {
        made.name = "owned by " + made.name;
    } else {
        made.criteria.rights = choice.rights;
        made.criteria.effect = choice.effect;
        made.criteria.origin = choice.origin;
    }
    request = std::move(made);
    return {};
}

}  // namespace permora
