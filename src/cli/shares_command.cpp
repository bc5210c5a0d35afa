// shares: what this machine offers to the network; shares show: the lists of shares.
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/json_output.h"
#include "cli/share_listing.h"
#include "cli/show_command.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"

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

    JsonFlag json{*this, JsonShape::kObjects};
    const Flag& outerJson;
};

class SharesCommand : public Command {
  public:
    explicit SharesCommand(const CommandParent& parent)
        : Command(parent, "shares", "List the shares of this machine") {}

    ExitCode Run() override;

  private:
    JsonFlag json{*this, JsonShape::kArray};
    ShowSharesCommand show{AsParent(), json};
};

// All shares; a system error code.
DWORD ListShares(std::vector<ShareFacts>& shares) {
    DWORD resume = 0;
    NET_API_STATUS status = ERROR_MORE_DATA;
    while (status == ERROR_MORE_DATA) {
        LPBYTE block = nullptr;
        DWORD read = 0;
        DWORD total = 0;
        status = NetShareEnum(nullptr, 2, &block, MAX_PREFERRED_LENGTH, &read, &total, &resume);
        if (status != NERR_Success && status != ERROR_MORE_DATA) return status;
        const UniqueNetworkBuffer<SHARE_INFO_2> records(reinterpret_cast<SHARE_INFO_2*>(block));
        for (DWORD i = 0; i < read; ++i)
            shares.push_back(FactsOf(records.get()[i]));
    }
    return ERROR_SUCCESS;
}

ExitCode SharesCommand::Run() {
    std::vector<ShareFacts> shares;
    if (const DWORD error = ListShares(shares); error != ERROR_SUCCESS) {
        messages.SetSubject("shares");
        messages.SaySystemError(error);
        return ExitCode::kSomeFailed;
    }
    Json array = Json::array();
    std::vector<std::vector<std::string>> table = {{"Name", "Type", "Users", "Path", "Remark"}};
    for (const ShareFacts& share : shares) {
        table.push_back({share.name, share.type, UsesText(share.maxUses), share.path, share.remark});
        array.push_back(FactsJson(share));
    }
    if (json)
        PrintJson(array);
    else
        Print(AlignedTable(table, ""));
    return ExitCode::kDone;
}

}  // namespace

std::unique_ptr<Command> MakeShares(const CommandParent& parent) {
    return std::make_unique<SharesCommand>(parent);
}

}  // namespace permora
