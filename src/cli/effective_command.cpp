// effective: what an access list leaves to an account and its groups.
#include <optional>
#include <span>
#include <utility>

#include "cli/account_option.h"
#include "cli/commands.h"
#include "cli/explanation_output.h"
#include "cli/json_output.h"
#include "cli/known_groups.h"
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
    std::optional<EffectiveRights> effective;  // nothing: there is no list, and everyone may do everything
    std::vector<std::string> remarks;
    std::optional<PrintedExplanation> explanation;  // where one was asked for and there is a list
};

std::string TableText(const Target& target, const std::string& account, const Answer& answer) {
    std::string text = PrintableText(target.argument) + "\n  Account: " + PrintableText(account) + '\n' +
                       RemarkLines(answer.remarks);
    if (!answer.effective) return text;
    const DWORD rights = answer.effective->rights;
    text += std::string("  Permission: ") + PermissionText(rights) + '\n';
    if (answer.explanation) return text + ExplanationText(*answer.explanation);
    std::vector<std::vector<std::string>> lines;
    for (const AccessRight& right : kSingleRights)
        lines.push_back({right.listName, IsEffective(right, rights) ? "yes" : "no"});
    return text + AlignedTable(lines, "  ");
}

const char* OriginName(GroupsOrigin origin) {
    switch (origin) {
        case GroupsOrigin::kThisMachine:
            return "machine";
        case GroupsOrigin::kExact:
            return "exact";
        case GroupsOrigin::kLastLogon:
            return "lastLogon";
        case GroupsOrigin::kWithoutLogon:
            return "withoutLogon";
        case GroupsOrigin::kDomain:
            break;
    }
    return "domain";
}

// "rights" is null where there is no list and everyone may do everything, and [] where nothing is left.
Json AnswerJson(const Target& target, AccountRecord& account, const Answer& answer) {
    Json json = {
        {"path", target.argument},     {"account", AccountDisplayName(account)},
        {"sid", account.GetSidText()}, {"mask", nullptr},
        {"synchronize", nullptr},      {"permission", nullptr},
        {"rights", nullptr},           {"groups", nullptr},
        {"remarks", answer.remarks},   {"note", answer.explanation ? kNotExplained : kNotConsidered}};
    if (!answer.effective) return json;
    const auto [rights, origin] = *answer.effective;
    json["mask"] = "0x" + HexText(WithoutSynchronize(rights));
    json["synchronize"] = (rights & SYNCHRONIZE) != 0;
    json["permission"] = PermissionText(rights);
    json["groups"] = OriginName(origin);
    json["rights"] = Json::array();
    for (const AccessRight& right : kSingleRights)
        if (IsEffective(right, rights)) json["rights"].push_back(right.listName);
    if (answer.explanation) AddExplanation(*answer.explanation, json);
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
    std::optional<Answer> Ask(const Target& target);
    // False after a message.
    bool Explain(const HeldObject& held, Answer& answer);

    AccountOption account{*this};
    Flag exact{*this, "--exact",
               "Count the groups that a logon would give a domain account now; only root may ask for them"};
    Flag explain{*this, "--explain",
                 "For each right the entry that decides it, through which group, and from which folder\n"
                 "it is inherited; and what the shares leave that hold the object"};
    JsonFlag json{*this, JsonShape::kObjects};
    Json answers = Json::array();
    KnownGroups groups;
};

bool EffectiveCommand::Do(const Target& target) {
    AccountRecord& shown = account.Account();
    const std::optional<Answer> answer = Ask(target);
    if (!answer) return false;
    if (json)
        answers.push_back(AnswerJson(target, shown, *answer));
    else
        Print(TableText(target, AccountDisplayName(shown), *answer) + '\n');
    return true;
}

std::optional<Answer> EffectiveCommand::Ask(const Target& target) {
    Answer answer;
    HeldObject held;
    if (!FindTarget(target, held, messages) || !ReadList(held, answer.object, messages)) return std::nullopt;
    answer.remarks = RemarksOn(answer.object);
    if (answer.object.dacl == nullptr) return answer;
    AccountRecord& asked = account.Account();
    const GroupsRequest request = exact ? GroupsRequest::kExact : GroupsRequest::kUsual;
    EffectiveRights effective;
    DWORD error = groups.Find(asked, request);
    if (error == ERROR_SUCCESS) error = FindEffectiveRights(answer.object.dacl, groups.Groups(), effective);
    if (error != ERROR_SUCCESS) {
        messages.Say(NoRightsText(error, request, asked));
        return std::nullopt;
    }
    answer.effective = effective;
    for (std::string& remark : RemarksOnRights(answer.object.dacl, asked, effective))
        answer.remarks.push_back(std::move(remark));
    if (explain && !Explain(held, answer)) return std::nullopt;
    return answer;
}

bool EffectiveCommand::Explain(const HeldObject& held, Answer& answer) {
    PrintedExplanation& made = answer.explanation.emplace();
    if (!messages.Check({ExplainRights(held, answer.object.dacl, groups.Groups(), made.rights)}))
        return false;
    made.network = FindNetworkRights(held, made.rights);
    return true;
}

bool EffectiveCommand::End() {
    if (json)
        PrintJsonObjects(answers, ObjectCount());
    else
        Print(std::string(explain ? kNotExplained : kNotConsidered) + '\n');
    return true;
}

}  // namespace

std::unique_ptr<Command> MakeEffective(const CommandParent& parent) {
    return std::make_unique<EffectiveCommand>(parent);
}

}  // namespace permora
