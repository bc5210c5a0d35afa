// shares: what this machine offers to the network; shares show: the lists of shares.
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/json_output.h"
#include "cli/share_listing.h"
#include "cli/show_command.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"

namespace permora {
namespace {

class ShowSharesCommand : public ShowListsCommand {
  public:
    // `sharesJson` is the flag of "shares", which may come before "show".
    ShowSharesCommand(const CommandParent& parent, const Flag& sharesJson)
        : ShowListsCommand(parent, "show", "Show shares with their access lists, as show --share does",
                           Objects::kShares),
          outerJson(sharesJson) {}

  private:
    ShowFormat Format() const override { return json || outerJson ? ShowFormat::kJson : ShowFormat::kTable; }

    JsonFlag json{*this};
    const Flag& outerJson;
};

class SharesCommand : public Command {
  public:
    explicit SharesCommand(const CommandParent& parent)
        : Command(parent, "shares", "List the shares of this machine") {}

    ExitCode Run() override;

  private:
    JsonFlag json{*this};
    ShowSharesCommand show{AsParent(), json};
};

ExitCode SharesCommand::Run() {
    std::vector<ListedShare> shares;
    if (const NET_API_STATUS error = ListShares(shares); error != NERR_Success) {
        messages.SetSubject("shares");
        messages.SaySystemError(error);
        return ExitCode::kSomeFailed;
    }
    ExitCode result = ExitCode::kDone;
    Json array = Json::array();
    std::vector<std::vector<std::string>> table = {{"Name", "Type", "Users", "Path", "Remark"}};
    for (const ListedShare& share : shares) {
        if (share.error != NERR_Success) {
            messages.SetSubject(share.name);
            messages.SaySystemError(share.error);
            result = ExitCode::kSomeFailed;
            continue;
        }
        table.push_back(
            {share.name, ShareTypeText(share.type), UsesText(share.maxUses), share.path, share.remark});
        array.push_back(FactsJson(share));
    }
    if (json)
        PrintJson("shares", array);
    else
        Print(AlignedTable(table, ""));
    return result;
}

}  // namespace

std::unique_ptr<Command> MakeShares(const CommandParent& parent) {
    return std::make_unique<SharesCommand>(parent);
}

}  // namespace permora
