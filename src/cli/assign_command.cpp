// assign: gives an account exactly these rights, as the security wizard does.
#include <optional>
#include <utility>

#include "cli/account_option.h"
#include "cli/change_foresight.h"
#include "cli/change_output.h"
#include "cli/commands.h"
#include "cli/list_change.h"
#include "cli/listing.h"
#include "cli/object_command.h"
#include "cli/rights_left.h"
#include "cli/rights_options.h"
#include "platform/raw_security.h"
#include "security/access_rights.h"
#include "wizard/account_rights.h"

namespace permora {
namespace {

// Whether the selected account has all `wanted` rights; false after a message. Rights are missing only if
// full control was ticked as a whole because a part of it is inherited.
bool HasRights(const AccountRights& rights, DWORD wanted, ConsoleMessages& messages) {
    std::string missing;
    for (std::size_t right = 1; right < AccountRights::kRights; ++right) {
        if ((kAccessRights[right].bits & wanted) == 0 || rights.IsChecked(right)) continue;
        missing += (missing.empty() ? "" : ", ") + std::string(kAccessRights[right].listName);
    }
    if (missing.empty()) return true;
    messages.Say(
        "not changed: full control adds nothing to rights that come from above, and the account "
        "would not have: " +
        missing + " (--rights 0xf01ff gives each right by itself)");
    return false;
}

// Gives `object` the list that it would have: the new one, which `dacl` then holds, and what it still
// inherits. False after a message.
bool Preview(std::vector<AccessEntry> entries, ObjectSecurity& object, UniqueLocal<ACL>& dacl,
             ConsoleMessages& messages) {
    if (object.inheritance == DaclInheritance::kFromParent) {
        for (const AccessEntry& entry : object.entries.Entries())
            if (entry.IsInherited()) entries.push_back(entry);
    }
    dacl = BuildWholeDacl(entries, messages);
    if (!dacl) return false;
    object.dacl = dacl.get();
    object.entries = AccessEntryList(AcesOf(object.dacl));
    return true;
}

constexpr const char* kNothingChanged =
    "nothing was changed, since all would get the list that is made of this one's";

class AssignCommand : public ObjectCommand {
  public:
    explicit AssignCommand(const CommandParent& parent)
        : ObjectCommand(
              parent, "assign",
              "Give an account these rights and no others, as the security wizard does: the\n"
              "first object's own entries, with this change, replace those of every object.\n"
              "What an object inherits stays; a right that comes from above is taken away by\n"
              "denying it. Only entries that name the account itself are changed; what it has\n"
              "then, and through which entries, is told of each object.\n"
              "\"Full control\" and \"Allow all\" add nothing to rights that come from above; where\n"
              "some would be missing, nothing is changed: 0xf01ff gives each right by itself") {}

    std::string Interpret() override;

  private:
    std::optional<PlannedChange> Plan() override;
    ChangeOutput* Output() override { return &output; }
    ExitCode Begin(const std::vector<Target>& targets) override;
    bool Do(const Target& target) override;
    bool End() override;

    bool MakeRights(const HeldObject& held, ObjectSecurity& object);
    ChangeResult TellRightsLeft(const HeldObject& held);
    ChangeResult GiveList(const Target& target, const HeldObject& held, ObjectSecurity& object);
    bool Assign(const Target& target);

    ChangeOutput output{*this, messages, kDryRunOfEntries};
    ChangeOptions options{*this,
                          "Change even an object without any access list, which allows everyone everything;\n"
                          "the first one must have a list, since all get what is made of it"};
    AccountOption account{*this};
    Choice choice{*this};
    CombinationOption combination{choice};
    RightsOption rights{choice, Presence::kOptional};
    Recording recording{*this};

    // All rights of the account; kFullControlAsOne for full control as a whole, as the wizard ticks it.
    DWORD wanted = 0;
    std::optional<AccountRights> assigned;  // to every object; made of the first one's list
    KnownGroups groups;                     // of the account
    const Target* first = nullptr;
    std::optional<ChangeForesight> foresight;  // of a dry run
};

std::string AssignCommand::Interpret() {
    if (std::string problem = ObjectCommand::Interpret(); !problem.empty()) return problem;
    if ((rights.Mask() & ~FULL_CONTROL_RIGHTS) != 0)
        return "--rights: assign knows single rights only, no generic ones";
    wanted = combination.Mask().value_or(rights.NamesAll() ? kFullControlAsOne : rights.Mask());
    return {};
}

std::optional<ObjectCommand::PlannedChange> AssignCommand::Plan() {
    if (output.Mode() == ChangeMode::kDryRun) return std::nullopt;
    return PlannedChange{ChangeKind::kAssign, recording};
}

// Makes `assigned`; false after a message. Losses of the object are checked here, so that nothing is changed
// if the first object may not be changed. `object` is its state at the start.
bool AssignCommand::MakeRights(const HeldObject& held, ObjectSecurity& object) {
    assigned.reset();
    AccountRights made;
    ReadParts list;
    if (!ReadForChange(held, object, messages) || !messages.Check(LoadAccountsFromItem(held, made, list)))
        return false;
    if (list.dacl == nullptr) {
        messages.Say("Object's access control list is null (All access is allowed)");
        return false;
    }
    if (!options.MayReplace(LossesOf(object.dacl, object.entries), messages)) return false;
    const std::size_t index = made.Add(account.Account());
    made.Select(index);
    made.ApplyCombination(wanted);
    made.Select(index);  // the boxes show what was written, not what was ticked
    // The lists of folders and of files have the same size.
    if (!HasRights(made, wanted, messages) || !BuildWholeDacl(made.Entries(ItemKind::kFile), messages))
        return false;
    assigned = std::move(made);
    return true;
}

// Prints the rights that a written list leaves to the account. They may be more than was assigned, through
// its groups, its other SIDs and inheritance. False after a message.
ChangeResult AssignCommand::TellRightsLeft(const HeldObject& held) {
    ObjectSecurity object;
    if (!ReadList(held, object, messages)) return ChangeResult::kFailed;
    messages.PrintForPeople(RightsLeftText(held, object.dacl, account.Account(), groups));
    return ChangeResult::kDone;
}

// `object` is the state of `held` when it was read.
ChangeResult AssignCommand::GiveList(const Target& target, const HeldObject& held, ObjectSecurity& object) {
    const std::vector<AccessEntry> entries =
        assigned->Entries(held.IsFolder() ? ItemKind::kFolder : ItemKind::kFile);
    UniqueLocal<ACL> dacl;
    if (output.Mode() == ChangeMode::kWrite) {
        dacl = BuildWholeDacl(entries, messages);
        if (!dacl) return ChangeResult::kFailed;
        const ChangeResult result =
            WriteDacl(target, held, object, std::nullopt, dacl.get(), recording, messages);
        return result == ChangeResult::kDone ? TellRightsLeft(held) : result;
    }
    const std::string before = StateText(target, "before", object, RemarksOn(object));
    if (!Preview(entries, object, dacl, messages)) return ChangeResult::kFailed;
    messages.PrintForPeople(before + StateText(target, "after", object, RemarksOn(object)) +
                            RightsLeftText(held, object.dacl, account.Account(), groups));
    const UniqueLocal<ACL> written = BuildWholeDacl(entries, messages);
    if (!written) return ChangeResult::kFailed;
    if (!foresight) foresight.emplace(output);
    foresight->Add(target, held,
                   {DaclWriteInformation(std::nullopt), {.dacl = written.get()}, BelowChange::kCarryDown});
    return ChangeResult::kDone;
}

// The first object's list is made and written in one turn.
bool AssignCommand::Assign(const Target& target) {
    ChangeTurn turn;
    if (!turn.Begin(target, output.Mode(), messages)) return false;
    while (turn.TryAgain(messages)) {
        const HeldObject& held = turn.Object();
        ObjectSecurity object;
        const bool isReady = &target == first
                                 ? MakeRights(held, object)
                                 : ReadForChange(held, object, messages) &&
                                       options.MayReplace(LossesOf(object.dacl, object.entries), messages);
        if (!isReady) return false;
        const ChangeResult result = GiveList(target, held, object);
        if (result != ChangeResult::kOutOfDate) return result == ChangeResult::kDone;
    }
    return false;
}

ExitCode AssignCommand::Begin(const std::vector<Target>& targets) {
    // With another object's list, the others would get other rights than requested.
    if (!targets.empty() && targets.front().argument == Paths().front()) {
        first = &targets.front();
        return ExitCode::kDone;
    }
    messages.SetSubject(Paths().front());
    messages.Say(kNothingChanged);
    return ExitCode::kSomeFailed;
}

bool AssignCommand::Do(const Target& target) {
    const bool isTurn = &target == first || assigned;
    const bool isDone = isTurn && Assign(target);
    if (!assigned && (isTurn || output.IsJson())) {  // once for people
        messages.SetSubject(Paths().front());
        messages.Say(kNothingChanged);
    }
    return isDone;
}

bool AssignCommand::End() {
    if (!assigned) return false;
    messages.PrintForPeople(std::string(kNotConsidered) + '\n');
    return !foresight || foresight->End();
}

}  // namespace

std::unique_ptr<Command> MakeAssign(const CommandParent& parent) {
    return std::make_unique<AssignCommand>(parent);
}

}  // namespace permora
