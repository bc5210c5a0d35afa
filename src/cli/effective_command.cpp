// effective: what an access list leaves to an account and its groups.
#include <optional>
#include <span>
#include <utility>

#include "cli/account_option.h"
#include "cli/commands.h"
#include "cli/json_output.h"
#include "cli/listing.h"
#include "cli/object_command.h"
#include "cli/rights_left.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"
#include "security/effective_rights.h"

namespace permora {
namespace {

// Without "Full control", which hardly any list of a file grants in the strict sense. The name of the mask
// shows it.
constexpr std::span kSingleRights = std::span(kAccessRights).subspan<1>();

struct Answer {
    ObjectSecurity object;
    std::optional<DWORD> rights;  // nothing: there is no list, and everyone may do everything
    std::vector<std::string> remarks;
};

std::optional<Answer> Ask(const Target& target, AccountRecord& account, ConsoleMessages& messages) {
    Answer answer;
    HeldObject held;
    if (!FindTarget(target, held, messages) || !ReadList(held, answer.object, messages)) return std::nullopt;
    answer.remarks = RemarksOn(answer.object);
    if (answer.object.dacl == nullptr) return answer;
    DWORD rights = 0;
    const DWORD error = FindEffectiveRights(answer.object.dacl, account.RawSid(), rights);
    if (error == ERROR_NONE_MAPPED) {
        messages.Say(UnknownGroupsText(account));
        return std::nullopt;
    }
    if (error != ERROR_SUCCESS) {
        messages.SaySystemError(error);
        return std::nullopt;
    }
    answer.rights = rights;
    for (std::string& remark : RemarksOnRights(answer.object.dacl, account, rights))
        answer.remarks.push_back(std::move(remark));
    return answer;
}

std::string TableText(const Target& target, const std::string& account, const Answer& answer) {
    std::string text = PrintableText(target.argument) + "\n  Account: " + PrintableText(account) + '\n' +
                       RemarkLines(answer.remarks);
    if (!answer.rights) return text;
    text += std::string("  Permission: ") + PermissionText(*answer.rights) + '\n';
    std::vector<std::vector<std::string>> lines;
    for (const AccessRight& right : kSingleRights)
        lines.push_back({right.listName, IsEffective(right, *answer.rights) ? "yes" : "no"});
    return text + AlignedTable(lines, "  ");
}

// "rights" is null where there is no list and everyone may do everything, and [] where nothing is left.
Json AnswerJson(const Target& target, AccountRecord& account, const Answer& answer) {
    Json json = {{"path", target.argument},     {"account", AccountDisplayName(account)},
                 {"sid", account.GetSidText()}, {"mask", nullptr},
                 {"synchronize", nullptr},      {"permission", nullptr},
                 {"rights", nullptr},           {"remarks", answer.remarks},
                 {"note", kNotConsidered}};
    if (!answer.rights) return json;
    json["mask"] = "0x" + HexText(WithoutSynchronize(*answer.rights));
    json["synchronize"] = (*answer.rights & SYNCHRONIZE) != 0;
    json["permission"] = PermissionText(*answer.rights);
    json["rights"] = Json::array();
    for (const AccessRight& right : kSingleRights)
        if (IsEffective(right, *answer.rights)) json["rights"].push_back(right.listName);
    return json;
}

class EffectiveCommand : public ObjectCommand {
  public:
    explicit EffectiveCommand(const CommandParent& parent)
        : ObjectCommand(parent, "effective", "Show what an access list leaves to an account and its groups") {
    }

  private:
    bool Do(const Target& target) override;
    bool End() override;

    AccountOption account{*this};
    JsonFlag json{*this, JsonShape::kObjects};
    Json answers = Json::array();
};

bool EffectiveCommand::Do(const Target& target) {
    AccountRecord& shown = account.Account();
    const std::optional<Answer> answer = Ask(target, shown, messages);
    if (!answer) return false;
    if (json)
        answers.push_back(AnswerJson(target, shown, *answer));
    else
        Print(TableText(target, AccountDisplayName(shown), *answer) + '\n');
    return true;
}

bool EffectiveCommand::End() {
    if (json)
        PrintJsonObjects(answers, ObjectCount());
    else
        Print(std::string(kNotConsidered) + '\n');
    return true;
}

}  // namespace

std::unique_ptr<Command> MakeEffective(const CommandParent& parent) {
    return std::make_unique<EffectiveCommand>(parent);
}

}  // namespace permora
