// accounts: the accounts of this machine and its domain.
#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "cli/commands.h"
#include "cli/interrupts.h"
#include "cli/json_output.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"
#include "security/account_record.h"
#include "security/account_search.h"

namespace permora {
namespace {

// Prints accounts as they come, in columns that grow where a later batch needs it, or as JSON.
class AccountPrinter {
  public:
    explicit AccountPrinter(bool printsJson) : isJson(printsJson) {}

    void Print(const std::vector<AccountRecord>& accounts) {
        if (isJson)
            PrintElements(accounts);
        else
            PrintLines(accounts);
    }

    void End() {
        if (isJson)
            array.End();
        else if (!hasTitles)
            PrintLines({});
    }

  private:
    void PrintLines(const std::vector<AccountRecord>& accounts) {
        std::vector<std::vector<std::string>> lines;
        if (!std::exchange(hasTitles, true)) lines.push_back({"Name", "Type", "SID"});
        for (const AccountRecord& account : accounts) {
            lines.push_back({QualifiedAccountName(account.domain, account.name), AccountTypeText(account.use),
                             account.GetSidText()});
        }
        permora::Print(AlignedTable(lines, "", widths));
    }

    void PrintElements(const std::vector<AccountRecord>& accounts) {
        for (const AccountRecord& account : accounts) {
            array.Add({{"account", QualifiedAccountName(account.domain, account.name)},
                       {"name", account.name},
                       {"domain", account.domain},
                       {"type", AccountTypeText(account.use)},
                       {"sid", account.GetSidText()}});
        }
    }

    bool isJson;
    bool hasTitles = false;
    std::vector<std::size_t> widths;
    JsonPrinter array{"accounts"};
};

class AccountsCommand : public Command {
  public:
    explicit AccountsCommand(const CommandParent& parent)
        : Command(parent, "accounts", "List the accounts of this machine and its domain") {}

    ExitCode Run() override;

  private:
    TextOption find{*this, "--find,--search", "TEXT",
                    "Only those in whose name, SID or type this text stands"};
    JsonFlag json{*this};
};

ExitCode AccountsCommand::Run() {
    std::vector<AccountRecord> local;
    if (const Outcome outcome = FindLocalAccounts(local); !outcome.IsDone()) {
        messages.Say(outcome);
        return ExitCode::kSomeFailed;
    }
    WatchForInterrupts();
    const std::string wanted = find.Text().value_or("");
    AccountPrinter printer(static_cast<bool>(json));
    std::vector<AccountRecord> shown;
    std::ranges::copy_if(local, std::back_inserter(shown),
                         [&](const AccountRecord& account) { return IsFoundBy(wanted, account); });
    printer.Print(shown);
    const SearchOutcome domain = FindDomainAccounts(
        wanted, local, IsInterrupted(), [&](const std::vector<AccountRecord>& more) { printer.Print(more); });
    printer.End();
    if (domain.error == ERROR_OPERATION_ABORTED) SayInterrupted(messages, "there may be more accounts");
    if (const std::string missing = MissingAccountsText(domain); !missing.empty()) messages.Say(missing);
    return ExitCodeOf(domain.error == ERROR_SUCCESS);
}

}  // namespace

std::unique_ptr<Command> MakeAccounts(const CommandParent& parent) {
    return std::make_unique<AccountsCommand>(parent);
}

}  // namespace permora
