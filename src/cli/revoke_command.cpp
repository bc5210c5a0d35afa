// revoke: removes an account's entries, or those of accounts that no longer exist.
#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "changes/account_edits.h"
#include "changes/gone_accounts.h"
#include "cli/account_option.h"
#include "cli/change_command.h"
#include "cli/commands.h"
#include "cli/interrupts.h"
#include "cli/tree_edit_run.h"
#include "security/access_rights.h"
#include "security/entry_details.h"

namespace permora {
namespace {

class RevokeCommand : public ChangeCommand {
  public:
    explicit RevokeCommand(const CommandParent& parent)
        : ChangeCommand(parent, "revoke",
                        "Remove the entries made for an account on the object itself;\n"
                        "when there are none, that is said and is no failure") {
        unresolved.Needs(tree);
        foreign.Needs(unresolved);
    }

    std::string Interpret() override;

  private:
    ExitCode Begin(const std::vector<Target>& targets) override;
    bool Do(const Target& target) override;
    bool End() override { return run ? run->End() : ChangeCommand::End(); }
    EditResult Edit(EditedList& list) override;
    void SayNothingToRemove(PACL dacl);
    bool FindGoneAccounts(const std::vector<Target>& targets);
    std::string Named() const { return account.Text().value_or(""); }

    ShareOption shares{*this};
    AccountOption account{*this, "--account", R"(The account: a name, DOMAIN\name or a SID like S-1-1-0)",
                          Presence::kOptional};
    Flag tree{*this, "--tree",
              "Remove them also from everything below the folders. Entries that are not made\n"
              "for the account stay as they are, whatever their types. Links and what is\n"
              "mounted below are not entered"};
    Flag unresolved{*this, "--unresolved",
                    "In the place of --account: all accounts that no longer exist on this machine or\n"
                    "in a domain that it knows. Nothing is removed while a domain does not answer"};
    Flag foreign{*this, "--foreign",
                 "Also those of machines and domains that are not known here, which may exist\n"
                 "there, and what can be no account"};
    QuietFlag quiet{*this};

    std::optional<GoneAccounts> gone;
    std::optional<RevokeEdit> edit;
    std::optional<TreeEditRun> run;
};

std::string RevokeCommand::Interpret() {
    std::string problem = ChangeCommand::Interpret();
    if (!problem.empty()) return problem;
    if (account.IsGiven() == static_cast<bool>(unresolved))
        return unresolved ? "--unresolved excludes --account" : "--account is required";
    return tree && IsAboutShares() ? "--tree is about what is below folders, not about shares" : "";
}

// Finds what is to be removed before anything is. On false, the reason was printed.
bool RevokeCommand::FindGoneAccounts(const std::vector<Target>& targets) {
    gone.emplace(foreign ? GoneAccounts::Kinds::kForeignToo : GoneAccounts::Kinds::kDeleted);
    ProgressLine progress(quiet ? Progress::kQuiet : Progress::kShown);
    std::size_t count = 0;
    for (const Target& target : targets) {
        HeldObject top;
        // What is not found is named when its turn comes.
        if (!FindItem(target.object, top).IsDone()) continue;
        (void)gone->LookThrough(top, [&](std::string_view path) {
            progress.ShowPath(++count, path);
            return !IsInterrupted();
        });
    }
    progress.Clear();
    if (IsInterrupted()) {
        SayInterrupted(messages, "nothing was changed");
        return false;
    }
    for (const nt::Sid& sid : gone->Unasked()) {
        messages.SetSubject(sid.ToText());
        messages.Say(
            "nothing was changed: whether this account exists is not known, since who knows it "
            "does not answer");
    }
    messages.SetSubject("");
    for (const nt::Sid& sid : gone->Gone())
        messages.Tell("no longer exists: " + sid.ToText());
    for (const nt::Sid& sid : gone->Foreign())
        messages.Tell("not known here, and stays without --foreign: " + sid.ToText());
    return gone->Unasked().empty();
}

ExitCode RevokeCommand::Begin(const std::vector<Target>& targets) {
    if (!tree) return ExitCode::kDone;
    WatchForInterrupts();
    if (unresolved && !FindGoneAccounts(targets)) return ExitCode::kSomeFailed;
    edit.emplace(
        [this](const nt::Sid& sid) { return gone ? gone->IsGone(sid) : sid == *account.Account().sid; },
        options.DropsOtherEntries() ? RevokeEdit::Types::kAll : RevokeEdit::Types::kAllowAndDeny);
    run.emplace(TreeEditRun::How{quiet ? Progress::kQuiet : Progress::kShown, LinkedFiles::kChange},
                recording.Recorder(), output);
    return ExitCode::kDone;
}

bool RevokeCommand::Do(const Target& target) {
    if (!tree) return ChangeCommand::Do(target);
    run->Edit(target, *edit);
    return true;
}

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
