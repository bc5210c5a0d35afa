// accounts: the accounts of this machine and its domain.
#include <algorithm>
#include <atomic>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "cli/commands.h"
#include "cli/json_output.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"
#include "security/account_record.h"
#include "security/account_search.h"

namespace permora {
namespace {

class AccountsCommand : public Command {
  public:
    explicit AccountsCommand(const CommandParent& parent)
        : Command(parent, "accounts", "List the accounts of this machine and its domain") {}

    ExitCode Run() override;

  private:
    TextOption find{*this, "--find", "TEXT", "Only those in whose name, SID or type this text stands"};
    JsonFlag json{*this, JsonShape::kArray};
};

ExitCode AccountsCommand::Run() {
    std::vector<AccountRecord> accounts;
    if (const Outcome outcome = FindLocalAccounts(accounts); !outcome.IsDone()) {
        messages.Say(outcome);
        return ExitCode::kSomeFailed;
    }
    const std::string wanted = find.Text().value_or("");
    const std::atomic<bool> isStopped = false;
    std::vector<AccountRecord> inDomain;
    const SearchOutcome domain = FindDomainAccounts(
        wanted, accounts, isStopped,
        [&](std::vector<AccountRecord> more) { std::ranges::move(more, std::back_inserter(inDomain)); });
    std::erase_if(accounts, [&](const AccountRecord& account) { return !IsFoundBy(wanted, account); });
    std::ranges::move(inDomain, std::back_inserter(accounts));
    Json array = Json::array();
    std::vector<std::vector<std::string>> table = {{"Name", "Type", "SID"}};
    for (const AccountRecord& account : accounts) {
        const std::string name = QualifiedAccountName(account.domain, account.name);
        const std::string type = AccountTypeText(account.use);
        const std::string sid = account.GetSidText();
        table.push_back({name, type, sid});
        array.push_back({{"account", name},
                         {"name", account.name},
                         {"domain", account.domain},
                         {"type", type},
                         {"sid", sid}});
    }
    if (json)
        PrintJson(array);
    else
        Print(AlignedTable(table, ""));
    if (const std::string missing = MissingAccountsText(domain); !missing.empty()) messages.Say(missing);
    return ExitCodeOf(domain.error == ERROR_SUCCESS);
}

}  // namespace

std::unique_ptr<Command> MakeAccounts(const CommandParent& parent) {
    return std::make_unique<AccountsCommand>(parent);
}

}  // namespace permora
