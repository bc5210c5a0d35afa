// grant and deny: an entry for an account.
#include "cli/account_option.h"
#include "cli/change_command.h"
#include "cli/commands.h"
#include "cli/rights_options.h"
#include "security/access_rights.h"

namespace permora {
namespace {

constexpr int kThisFolderOnly = 0;
constexpr int kThisFolderSubfoldersAndFiles = 1;

class GrantCommand : public ChangeCommand {
  public:
    GrantCommand(const CommandParent& parent, const char* name, const char* description,
                 DWORD PermissionChoice::*maskToSet)
        : ChangeCommand(parent, name, description), setMask(maskToSet) {}

  private:
    EditResult Edit(EditedList& list) override;

    DWORD PermissionChoice::*const setMask;
    ShareOption shares{*this};
    AccountOption account{*this};
    RightsOption rights{*this, Presence::kRequired};
    ScopeOption scope{*this};
    Flag childrenOnly{*this, "--children-only",
                      "Hand the entry down to direct children only, not to what is below them"};
};

EditResult GrantCommand::Edit(EditedList& list) {
    PermissionChoice choice;
    choice.account = account.Account();
    choice.*setMask = rights.Mask();
    if (list.place == EntryPlace::kFolder || list.place == EntryPlace::kDrive) {
        choice.applyIndex = scope.Index().value_or(kThisFolderSubfoldersAndFiles);
        choice.childrenOnly = static_cast<bool>(childrenOnly);
    } else {
        // A file has nothing below it, so only the part of a scope for the object itself applies.
        const BYTE flags = ScopeFlagsFromIndex(scope.Index().value_or(kThisFolderOnly));
        if ((flags & INHERIT_ONLY_ACE) != 0) {
            messages.Say(std::string("not changed: on a ") +
                         (list.place == EntryPlace::kFile ? "file" : "share") + " an entry for \"" +
                         ScopeTextFromFlags(flags) + "\" would do nothing");
            return EditResult::kRefused;
        }
        choice.applyIndex = kThisFolderOnly;
    }
    list.entries.AddFromDialog(choice);
    return EditResult::kChanged;
}

}  // namespace

std::unique_ptr<Command> MakeGrant(const CommandParent& parent) {
    return std::make_unique<GrantCommand>(parent, "grant", "Allow an account rights",
                                          &PermissionChoice::allowMask);
}

std::unique_ptr<Command> MakeDeny(const CommandParent& parent) {
    return std::make_unique<GrantCommand>(parent, "deny", "Deny an account rights",
                                          &PermissionChoice::denyMask);
}

}  // namespace permora
