// assign: gives an account exactly these rights, as the security wizard does.
#include <optional>
#include <utility>

#include "cli/account_option.h"
#include "cli/commands.h"
#include "cli/list_change.h"
#include "cli/listing.h"
#include "cli/object_command.h"
#include "cli/rights_left.h"
#include "cli/rights_options.h"
#include "cli/terminal_output.h"
#include "platform/api/errors.h"
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

struct NewList {
    std::vector<AccessEntry> entries;
    UniqueLocal<ACL> dacl;
};

// The new lists of objects, by kind.
struct NewLists {
    NewList forFolders;
    NewList forFiles;
};

// Gives `object` the list that it would have: the new one, which `dacl` then holds, and what it still
// inherits. False after a message.
bool Preview(HMODULE library, std::vector<AccessEntry> entries, ObjectSecurity& object,
             UniqueLocal<ACL>& dacl, ConsoleMessages& messages) {
    if (object.inheritance == DaclInheritance::kFromParent) {
        for (const AccessEntry& entry : object.entries.Entries())
            if (entry.IsInherited()) entries.push_back(entry);
    }
    dacl = BuildWholeDacl(library, entries, messages);
    if (!dacl) return false;
    object.dacl = dacl.get();
    object.entries.LoadFromDacl(object.dacl);
    return true;
}

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
    ExitCode Begin(const std::vector<Target>& targets) override;
    bool Do(const Target& target) override;
    bool End() override;

    std::optional<AccountRights> MakeRights(const HeldObject& held, ObjectSecurity& object);
    bool MakeList(const AccountRights& rights, ItemKind kind, NewList& list);
    bool MakeLists(const HeldObject& held, ObjectSecurity& object);
    ChangeResult TellRightsLeft(const HeldObject& held);
    ChangeResult GiveList(const Target& target, const HeldObject& held, ObjectSecurity& object);
    bool Assign(const Target& target);

    ChangeOptions options{*this,
                          "Change even an object without any access list, which allows everyone everything;\n"
                          "the first one must have a list, since all get what is made of it"};
    AccountOption account{*this};
    Choice choice{*this};
    CombinationOption combination{choice};
    RightsOption rights{choice, Presence::kOptional};

    // All rights of the account; kFullControlAsOne for full control as a whole, as the wizard ticks it.
    DWORD wanted = 0;
    UniqueLibrary library;
    std::optional<NewLists> lists;  // once they are made of the first object's
    const Target* first = nullptr;
    bool isFirstDone = false;
};

std::string AssignCommand::Interpret() {
    if (std::string problem = ObjectCommand::Interpret(); !problem.empty()) return problem;
    if ((rights.Mask() & ~FULL_CONTROL_RIGHTS) != 0)
        return "--rights: assign knows single rights only, no generic ones";
    wanted = combination.Mask().value_or(rights.NamesAll() ? kFullControlAsOne : rights.Mask());
    return {};
}

// The new rights of the first object's accounts; nothing after a message. Losses of the object are checked
// here, so that nothing is changed if the first object may not be changed. `object` is its state at the
// start.
std::optional<AccountRights> AssignCommand::MakeRights(const HeldObject& held, ObjectSecurity& object) {
    AccountRights made;
    ReadParts list;
    if (!ReadForChange(held, object, messages)) return std::nullopt;
    if (const Outcome outcome = LoadAccountsFromItem(held, made, list); !outcome.IsDone()) {
        messages.Say(outcome);
        return std::nullopt;
    }
    if (list.dacl == nullptr) {
        messages.Say("Object's access control list is null (All access is allowed)");
        return std::nullopt;
    }
    if (!MayReplace(LossesOf(object.dacl, object.entries), options.Choices(), messages)) return std::nullopt;
    const std::size_t index = made.Add(account.Account());
    made.Select(index);
    made.ApplyCombination(wanted);
    made.Select(index);  // the boxes show what was written, not what was ticked
    if (!HasRights(made, wanted, messages)) return std::nullopt;
    return made;
}

bool AssignCommand::MakeList(const AccountRights& made, ItemKind kind, NewList& list) {
    list.entries = made.Entries(kind);
    list.dacl = BuildWholeDacl(library.get(), list.entries, messages);
    return list.dacl != nullptr;
}

// Makes `lists`; false after a message.
bool AssignCommand::MakeLists(const HeldObject& held, ObjectSecurity& object) {
    lists.reset();
    const std::optional<AccountRights> made = MakeRights(held, object);
    NewLists all;
    if (!made || !MakeList(*made, ItemKind::kFolder, all.forFolders) ||
        !MakeList(*made, ItemKind::kFile, all.forFiles))
        return false;
    lists = std::move(all);
    return true;
}

// Prints the rights that a written list leaves to the account. They may be more than was assigned, through
// its groups, its other SIDs and inheritance. False after a message.
ChangeResult AssignCommand::TellRightsLeft(const HeldObject& held) {
    ObjectSecurity object;
    if (!ReadList(held, object, messages)) return ChangeResult::kFailed;
    Print(RightsLeftText(object.dacl, account.Account()));
    return ChangeResult::kDone;
}

// `object` is the state of `held` when it was read.
ChangeResult AssignCommand::GiveList(const Target& target, const HeldObject& held, ObjectSecurity& object) {
    const NewList& list = held.IsFolder() ? lists->forFolders : lists->forFiles;
    if (options.Choices().mode == ChangeMode::kWrite) {
        const ChangeResult result = WriteDacl(target, held, object, std::nullopt, list.dacl.get(), messages);
        return result == ChangeResult::kDone ? TellRightsLeft(held) : result;
    }
    const std::string before = StateText(target, "before", object, RemarksOn(object));
    UniqueLocal<ACL> dacl;
    if (!Preview(library.get(), list.entries, object, dacl, messages)) return ChangeResult::kFailed;
    Print(before + StateText(target, "after", object, RemarksOn(object)) +
          RightsLeftText(object.dacl, account.Account()));
    return ChangeResult::kDone;
}

// The first object's list is made and written in one turn.
bool AssignCommand::Assign(const Target& target) {
    ChangeTurn turn;
    if (!turn.Begin(target, options.Choices().mode, messages)) return false;
    while (turn.TryAgain(messages)) {
        const HeldObject& held = turn.Object();
        ObjectSecurity object;
        const bool isReady = &target == first ? MakeLists(held, object)
                                              : ReadForChange(held, object, messages) &&
                                                    MayReplace(LossesOf(object.dacl, object.entries),
                                                               options.Choices(), messages);
        if (!isReady) return false;
        const ChangeResult result = GiveList(target, held, object);
        if (result != ChangeResult::kOutOfDate) return result == ChangeResult::kDone;
    }
    return false;
}

ExitCode AssignCommand::Begin(const std::vector<Target>& targets) {
    library = LoadAccessListLibrary();
    messages.SetSubject(Paths().front());
    // With another object's list, the others would get other rights than requested.
    if (!targets.empty() && targets.front().argument == Paths().front()) {
        first = &targets.front();
        isFirstDone = Assign(*first);
    }
    if (lists) return ExitCode::kDone;
    messages.Say("nothing was changed, since all would get the list that is made of this one's");
    return ExitCode::kSomeFailed;
}

bool AssignCommand::Do(const Target& target) {
    return &target == first ? isFirstDone : Assign(target);
}

bool AssignCommand::End() {
    Print(std::string(kNotConsidered) + '\n');
    return true;
}

}  // namespace

std::unique_ptr<Command> MakeAssign(const CommandParent& parent) {
    return std::make_unique<AssignCommand>(parent);
}

}  // namespace permora
