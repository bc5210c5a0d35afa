// accounts: the accounts that this machine knows.
#include <string>
#include <string_view>
#include <vector>

#include "cli/commands.h"
#include "cli/json_output.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/ascii.h"
#include "security/account_record.h"
#include "security/account_search.h"

namespace permora {
namespace {

class AccountsCommand : public Command {
  public:
    explicit AccountsCommand(const CommandParent& parent)
        : Command(parent, "accounts", "List the accounts that this machine knows") {}

    ExitCode Run() override;

  private:
    TextOption find{*this, "--find", "TEXT", "Only those in whose name, SID or type this text stands"};
    JsonFlag json{*this, JsonShape::kArray};
};

bool Contains(std::string_view text, std::string_view part) {
    return InLowerCase(text).find(InLowerCase(part)) != std::string::npos;
}

ExitCode AccountsCommand::Run() {
    std::vector<AccountRecord> accounts;
    if (const Outcome outcome = FindLocalAccounts(accounts); !outcome.IsDone()) {
        messages.Say(outcome);
        return ExitCode::kSomeFailed;
    }
    const std::string wanted = find.Text().value_or("");
    Json array = Json::array();
    std::vector<std::vector<std::string>> table = {{"Name", "Type", "SID"}};
    for (AccountRecord& account : accounts) {
        const std::string name = QualifiedAccountName(account.domain, account.name);
        const std::string type = AccountTypeText(account.use);
        const std::string sid = account.GetSidText();
        if (!Contains(name, wanted) && !Contains(sid, wanted) && !Contains(type, wanted)) continue;
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
    return ExitCode::kDone;
}

}  // namespace

std::unique_ptr<Command> MakeAccounts(const CommandParent& parent) {
    return std::make_unique<AccountsCommand>(parent);
}

}  // namespace permora
