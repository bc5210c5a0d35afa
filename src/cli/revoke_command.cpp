// revoke: removes an account's entries.
#include <algorithm>
#include <vector>

#include "cli/account_option.h"
#include "cli/change_command.h"
#include "cli/commands.h"
#include "security/access_rights.h"
#include "security/entry_details.h"

namespace permora {
namespace {

class RevokeCommand : public ChangeCommand {
  public:
    explicit RevokeCommand(const CommandParent& parent)
        : ChangeCommand(parent, "revoke",
                        "Remove the entries made for an account on the object itself;\n"
                        "when there are none, that is said and is no failure") {}

  private:
    EditResult Edit(EditedList& list) override;
    void SayNothingToRemove(PACL dacl);
    std::string Named() const { return account.Text().value_or(""); }

    ShareOption shares{*this};
    AccountOption account{*this};
};

// The types of an account's explicit entries that are neither allow nor deny, each once: "Callback allow".
std::string OtherTypesOf(const AccountRecord& account, PACL dacl) {
    std::vector<std::string> names;
    for (const EntryDetails& entry : DetailsOfEntries(dacl)) {
        const bool isOther =
            entry.aceType != ACCESS_ALLOWED_ACE_TYPE && entry.aceType != ACCESS_DENIED_ACE_TYPE;
        std::string name = EntryTypeName(entry.aceType);
        if (isOther && !entry.IsInherited() && IsSameAccount(entry.account, account) &&
            std::find(names.begin(), names.end(), name) == names.end())
            names.push_back(std::move(name));
    }
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "" : ", ") + name;
    return text;
}

void RevokeCommand::SayNothingToRemove(PACL dacl) {
    const std::string others = OtherTypesOf(account.Account(), dacl);
    if (others.empty())
        messages.Say("nothing to remove: no explicit entry is for " + Named());
    else
        messages.Say("nothing removed: the explicit entries for " + Named() +
                     " are of other types than allow and deny, and stay: " + others);
}

EditResult RevokeCommand::Edit(EditedList& list) {
    AccessEntryList& entries = list.entries;
    EditResult result = EditResult::kNothingToDo;
    bool inheritedStay = false;
    for (std::size_t i = entries.Entries().size(); i-- > 0;) {
        const AccessEntry& entry = entries.Entries()[i];
        if (entry.IsOfOtherType() || !IsSameAccount(entry.account, account.Account())) continue;
        if (entry.IsInherited()) {
            inheritedStay = true;
        } else {
            entries.RemoveEntry(i);
            result = EditResult::kChanged;
        }
    }
    if (inheritedStay) SayOnce("the inherited entries for " + Named() + " stay");
    if (result == EditResult::kNothingToDo) SayNothingToRemove(list.dacl);
    return result;
}

}  // namespace

std::unique_ptr<Command> MakeRevoke(const CommandParent& parent) {
    return std::make_unique<RevokeCommand>(parent);
}

}  // namespace permora
