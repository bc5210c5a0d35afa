// effective: what access lists leave to accounts and their groups.
#include <algorithm>
#include <optional>
#include <span>
#include <utility>

#include "cli/account_option.h"
#include "cli/commands.h"
#include "cli/explanation_output.h"
#include "cli/json_output.h"
#include "cli/listing.h"
#include "cli/object_command.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"
#include "security/distinct_names.h"
#include "security/effective_rights.h"
#include "security/object_server.h"
#include "security/rights_comparison.h"
#include "shares/network_rights.h"

namespace permora {
namespace {

constexpr const char* kNotInList =
    "Not considered: privileges, and in the rights by the list what a share takes away and what an owner may "
    "do anyway";

// Without "Full control", which hardly any list of a file grants in the strict sense. The name of the mask
// shows it.
constexpr std::span kSingleRights = std::span(kAccessRights).subspan<1>();

// About one account and one object.
struct Answer {
    std::vector<std::string> remarks;
    std::string unknown;                       // why there is no answer; empty: there is one
    std::optional<EffectiveRights> effective;  // nothing: there is no list, and everyone may do everything
    std::optional<RightsExplanation> explanation;  // where one was asked for and there is a list
    std::optional<NetworkAnswers> network;         // nothing: the groups of the account are not known
};

std::vector<std::string> NetworkRemarks(const Answer& answer) {
    std::vector<std::string> remarks;
    if (answer.network) remarks = RemarksOnNetwork(*answer.network, AccountDisplayName);
    for (std::string& remark : remarks)
        remark = PrintableText(remark);
    return remarks;
}

std::string RightsByListText(const Answer& answer) {
    if (!answer.effective) return {};
    const DWORD rights = answer.effective->rights;
    const std::string text = std::string("  Permission: ") + PermissionText(rights) + '\n';
    if (answer.explanation) return text + ExplanationText(*answer.explanation);
    std::vector<std::vector<std::string>> lines;
    for (const AccessRight& right : kSingleRights)
        lines.push_back({right.listName, IsEffective(right, rights) ? "yes" : "no"});
    return text + AlignedTable(lines, "  ");
}

std::string AnswerText(const Target& target, const std::string& account, const Answer& answer) {
    return PrintableText(target.argument) + "\n  Account: " + PrintableText(account) + '\n' +
           RemarkLines(answer.remarks) + RightsByListText(answer) + RemarkLines(NetworkRemarks(answer));
}

// Rights in lines and accounts in columns: these have the shorter names.
std::string ComparisonText(RightsComparison& comparison) {
    std::vector<std::vector<std::string>> lines = {{""}};
    DistinctNames names;
    for (RightsHolder& each : comparison.Accounts())
        names.Note(AccountDisplayName(each.account), each.account);
    for (RightsHolder& each : comparison.Accounts())
        lines.front().push_back(names.Of(AccountDisplayName(each.account), each.account));
    for (const AccessRight& right : kSingleRights) {
        std::vector<std::string>& line = lines.emplace_back();
        line.emplace_back(right.listName);
        for (const RightsHolder& each : comparison.Accounts())
            line.emplace_back(comparison.TextOf(each, right));
    }
    return AlignedTable(lines, "  ");
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
    Json json = {{"path", target.argument},
                 {"account", AccountDisplayName(account)},
                 {"sid", account.GetSidText()},
                 {"remarks", answer.remarks}};
    if (!answer.unknown.empty()) {
        json["unknown"] = answer.unknown;
        return json;
    }
    for (const char* key : {"mask", "synchronize", "permission", "rights", "groups"})
        json[key] = nullptr;
    json["note"] = answer.explanation ? kNotExplained : kNotInList;
    json["shares"] = answer.network ? NetworkJson(*answer.network) : Json();
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
        : ObjectCommand(parent, "effective", "Show what access lists leave to accounts and their groups") {}

    std::string Interpret() override;

  private:
    ExitCode Begin(const std::vector<Target>& targets) override;
    bool Do(const Target& target) override;
    bool End() override;
    Answer Ask(const HeldObject& held, const ObjectSecurity& object, RightsHolder& asked);
    void PrintTogether(const Target& target, const ObjectSecurity& object, std::vector<Answer>& found);

    GroupsRequest Request() const { return exact ? GroupsRequest::kExact : GroupsRequest::kUsual; }
    bool IsAboutSeveral() const { return all->Accounts().size() > 1; }

    AccountsOption accounts{*this};
    Flag exact{*this, "--exact",
               "Count the groups that a logon would give a domain account now; only root may ask for them"};
    Flag explain{*this, "--explain",
                 "For each right the entry that decides it, through which group, and from which folder\n"
                 "it is inherited"};
    JsonFlag json{*this};
    Json answers = Json::array();
    std::optional<RightsComparison> all;  // over all objects
    NetworkShares shares;
};

std::string EffectiveCommand::Interpret() {
    std::string problem = ObjectCommand::Interpret();
    return problem.empty() ? accounts.Interpret() : problem;
}

ExitCode EffectiveCommand::Begin(const std::vector<Target>& targets) {
    CommonServer server;
    for (const Target& target : targets) {
        HeldObject held;
        // Those that are not there any more are named when their turn comes.
        if (target.object.Find(held) == ERROR_SUCCESS) server.Add(held);
    }
    if (!server.IsOne()) {
        messages.Say("The objects are on different servers, where accounts belong to different groups");
        return ExitCode::kUsage;
    }
    all.emplace(Request());
    all->BeOn(server.Name());
    for (const AccountRecord& account : accounts.Accounts())
        all->AddAccount(account);
    for (std::size_t missing = targets.size(); missing < ObjectCount(); ++missing)
        all->AddUnknownObject();
    return ExitCode::kDone;
}

bool EffectiveCommand::Do(const Target& target) {
    HeldObject held;
    ObjectSecurity object;
    if (!FindTarget(target, held, messages) || !ReadList(held, object, messages)) {
        all->AddUnknownObject();
        return false;
    }
    all->AddObject(object.dacl, all->Server());
    bool isAnswered = true;
    std::vector<Answer> found;
    for (RightsHolder& asked : all->Accounts()) {
        const Answer& answer = found.emplace_back(Ask(held, object, asked));
        if (!answer.unknown.empty()) messages.Say(answer.unknown);
        isAnswered = isAnswered && answer.unknown.empty();
        if (!answer.unknown.empty() && !IsAboutSeveral()) continue;
        if (json)
            answers.push_back(AnswerJson(target, asked.account, answer));
        else if (answer.unknown.empty() && (explain || !IsAboutSeveral()))
            Print(AnswerText(target, AccountDisplayName(asked.account), answer) + '\n');
    }
    if (!json && !explain && IsAboutSeveral()) PrintTogether(target, object, found);
    return isAnswered;
}

Answer EffectiveCommand::Ask(const HeldObject& held, const ObjectSecurity& object, RightsHolder& asked) {
    Answer answer;
    answer.remarks = RemarksOn(object);
    const bool isHere = all->Server().empty();
    if (!isHere) answer.remarks.emplace_back(kNotOfServer);
    if (isHere && asked.error == ERROR_SUCCESS) answer.network = shares.RightsOf(held, asked.groups);
    if (object.dacl == nullptr) return answer;
    EffectiveRights effective;
    DWORD error = asked.error;
    if (error == ERROR_SUCCESS) error = CheckListOfServer(all->Server(), object.dacl);
    if (error == ERROR_SUCCESS) error = FindEffectiveRights(object.dacl, asked.groups, effective);
    if (error == ERROR_SUCCESS && explain)
        error = ExplainRights(held, object.dacl, asked.groups, answer.explanation.emplace());
    if (error != ERROR_SUCCESS) {
        answer.unknown = NoRightsText(error, Request(), asked.account);
        return answer;
    }
    answer.effective = effective;
    for (std::string& remark : RemarksOnRights(object.dacl, asked.account, effective))
        answer.remarks.push_back(std::move(remark));
    return answer;
}

// What is said of several accounts is said once.
void EffectiveCommand::PrintTogether(const Target& target, const ObjectSecurity& object,
                                     std::vector<Answer>& found) {
    RightsComparison one = all->WithoutObjects();
    one.AddObject(object.dacl, all->Server());
    std::vector<std::string> remarks;
    for (std::size_t i = 0; i < found.size(); ++i) {
        for (std::string& remark : found[i].remarks)
            if (std::ranges::find(remarks, remark) == remarks.end()) remarks.push_back(std::move(remark));
        const std::string name = PrintableText(AccountDisplayName(all->Accounts()[i].account));
        if (!found[i].unknown.empty()) remarks.push_back(PrintableText(found[i].unknown));
        for (const std::string& remark : NetworkRemarks(found[i]))
            remarks.emplace_back(name).append(" ").append(remark);
    }
    Print(PrintableText(target.argument) + '\n' + ComparisonText(one) + RemarkLines(remarks) + '\n');
}

bool EffectiveCommand::End() {
    if (json) {
        PrintJson("effective", answers);
        return true;
    }
    if (ObjectCount() > 1) {
        const std::size_t missing = all->UnknownCount();
        std::string text = "All " + std::to_string(all->ObjectCount()) + " objects together\n";
        if (missing > 0) text += "  Note: not known of " + std::to_string(missing) + " of them\n";
        Print(text + ComparisonText(*all) + '\n');
    }
    Print(std::string(explain ? kNotExplained : kNotInList) + '\n');
    return true;
}

}  // namespace

std::unique_ptr<Command> MakeEffective(const CommandParent& parent) {
    return std::make_unique<EffectiveCommand>(parent);
}

}  // namespace permora
