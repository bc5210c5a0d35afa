#include "cli/accounts_command.h"

#include <string>
#include <string_view>
#include <vector>

#include "cli/json_output.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/ascii.h"
#include "security/account_record.h"
#include "security/account_search.h"

namespace permora {
namespace {

bool Contains(std::string_view text, std::string_view part) {
    return InLowerCase(text).find(InLowerCase(part)) != std::string::npos;
}

}  // namespace

bool RunAccounts(const Arguments& arguments, ConsoleMessages& messages) {
    std::vector<AccountRecord> accounts;
    if (const Outcome outcome = FindLocalAccounts(accounts); !outcome.IsDone()) {
        messages.Say(outcome);
        return false;
    }
    Json array = Json::array();
    std::vector<std::vector<std::string>> table = {{"Name", "Type", "SID"}};
    for (AccountRecord& account : accounts) {
        const std::string name = QualifiedAccountName(account.domain, account.name);
        const std::string type = AccountTypeText(account.use);
        const std::string sid = account.GetSidText();
        const bool isWanted =
            Contains(name, arguments.find) || Contains(sid, arguments.find) || Contains(type, arguments.find);
        if (!isWanted) continue;
        table.push_back({name, type, sid});
        array.push_back({{"account", name},
                         {"name", account.name},
                         {"domain", account.domain},
                         {"type", type},
                         {"sid", sid}});
    }
    if (arguments.format == ShowFormat::kJson)
        PrintJson(array);
    else
        Print(AlignedTable(table, ""));
    return true;
}

}  // namespace permora
