#include "cli/change_command.h"

#include "cli/listing.h"
#include "cli/share_listing.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"
#include "platform/raw_security.h"

namespace permora {
namespace {

std::string StateOfShare(const std::string& name, const char* moment, PACL dacl, AccessEntryList& entries) {
    return PrintableText(name) + ' ' + moment + ":\n" + RemarkLines(RemarksOn(dacl, entries)) +
           RowsText(entries);
}

bool IsSame(const ShareSecurity& share, PACL dacl) {
    return share.hasDescriptor && AclOf(share.dacl) == AclOf(dacl);
}

nt::SecurityDescriptor WithList(PACL dacl) {
    nt::SecurityDescriptor descriptor;
    descriptor.daclState = dacl != nullptr ? nt::DaclState::kList : nt::DaclState::kNull;
    descriptor.dacl = AclOf(dacl).value_or(nt::Acl());
    return descriptor;
}

std::vector<ComparedRow> ChangedRowsOf(PACL before, PACL after) {
    const nt::SecurityDescriptor was = WithList(before);
    const nt::SecurityDescriptor is = WithList(after);
    return ChangedRows(&was, &is, ComparedObject::kFile);
}

EntryPlace PlaceOf(const Target& target, const HeldObject& object) {
    if (target.place == PlaceKind::kDrives) return EntryPlace::kDrive;
    return object.IsFolder() ? EntryPlace::kFolder : EntryPlace::kFile;
}

}  // namespace

void ChangeCommand::SayOnce(const std::string& text) {
    if (said != text) messages.Say(text);
    said = text;
}

// Edits the list and builds what is to be written.
EditResult ChangeCommand::MakeList(EditedList list, UniqueLocal<ACL>& dacl) {
    const Losses losses = LossesOf(list.dacl, list.entries);
    const EditResult edited = Edit(list);
    if (edited != EditResult::kChanged) return edited;
    if (!options.MayReplace(losses, messages)) return EditResult::kRefused;
    DropOtherEntries(list.entries);
    dacl = BuildWholeDacl(list.entries.Entries(), messages);
    return dacl ? edited : EditResult::kRefused;
}

std::optional<ObjectCommand::PlannedChange> ChangeCommand::Plan() {
    if (output.Mode() == ChangeMode::kDryRun) return std::nullopt;
    return PlannedChange{IsAboutShares() ? ChangeKind::kShare : ChangeKind::kPermissions, recording};
}

bool ChangeCommand::Do(const Target& target) {
    said.clear();
    const ChangeMode mode = output.Mode();
    ChangeTurn turn;
    if (!turn.Begin(target, mode, messages)) return false;
    while (turn.TryAgain(messages)) {
        const HeldObject& held = turn.Object();
        ObjectSecurity object;
        if (!ReadForChange(held, object, messages)) return false;
        const DaclInheritance before = *object.inheritance;
        const std::string preview =
            mode == ChangeMode::kDryRun ? StateText(target, "before", object, RemarksOn(object)) : "";

        UniqueLocal<ACL> dacl;
        const EditResult edited =
            MakeList({PlaceOf(target, held), object.dacl, object.entries, object.inheritance}, dacl);
        if (edited != EditResult::kChanged) return edited == EditResult::kNothingToDo;
        if (mode == ChangeMode::kWrite) {
            const ChangeResult result =
                WriteDacl(target, held, object, object.inheritance, dacl.get(), recording, messages);
            if (result == ChangeResult::kOutOfDate) continue;
            return result == ChangeResult::kDone;
        }
        object.dacl = dacl.get();
        const bool inheritsAnew =
            object.inheritance != before && object.inheritance == DaclInheritance::kFromParent;
        const std::vector<std::string> parentsPart = {"the entries that the parent hands down come to these"};
        messages.PrintForPeople(
            preview + StateText(target, "after", object, inheritsAnew ? parentsPart : RemarksOn(object)));
        if (!foresight) foresight.emplace(output);
        foresight->Add(
            target, held,
            {DaclWriteInformation(object.inheritance), {.dacl = dacl.get()}, BelowChange::kCarryDown});
        return true;
    }
    return false;
}

bool ChangeCommand::End() {
    return !foresight || foresight->End();
}

ChangeResult ChangeCommand::WriteShare(const std::string& name, const ShareSecurity& share, PACL dacl) {
    if (IsSame(share, dacl)) {
        messages.PrintForPeople(PrintableText(name) + ": already so\n");
        return ChangeResult::kDone;
    }
    // A list needs a descriptor to stand in.
    Outcome outcome = share.hasDescriptor ? Outcome() : GiveShareDescriptor(name, recording.Recorder());
    if (outcome.IsDone()) outcome = WriteShareDacl(name, dacl, &share, recording.Recorder());
    if (outcome.code == ERROR_REVISION_MISMATCH) return ChangeResult::kOutOfDate;
    if (!messages.Check(outcome)) return ChangeResult::kFailed;
    messages.PrintForPeople(PrintableText(name) + ": changed\n");
    return ChangeResult::kDone;
}

bool ChangeCommand::DoShare(const std::string& name) {
    said.clear();
    const ChangeMode mode = output.Mode();
    ChangeTurn turn;
    if (!turn.Begin(name, mode, messages)) return false;
    while (turn.TryAgain(messages)) {
        ShareSecurity share;
        if (!messages.Check(LoadShareDacl(name, share))) return false;
        const std::string preview =
            mode == ChangeMode::kDryRun ? StateOfShare(name, "before", share.dacl, share.entries) : "";

        std::optional<DaclInheritance> noInheritance;
        UniqueLocal<ACL> dacl;
        const EditResult edited =
            MakeList({EntryPlace::kShare, share.dacl, share.entries, noInheritance}, dacl);
        if (edited != EditResult::kChanged) return edited == EditResult::kNothingToDo;
        if (mode == ChangeMode::kWrite) {
            const ChangeResult result = WriteShare(name, share, dacl.get());
            if (result == ChangeResult::kOutOfDate) continue;
            return result == ChangeResult::kDone;
        }
        messages.PrintForPeople(preview + StateOfShare(name, "after", dacl.get(), share.entries));
        if (!IsSame(share, dacl.get())) output.SetChanged();
        if (output.IsJson()) output.AddDifference(name, ChangedRowsOf(share.dacl, dacl.get()));
        return true;
    }
    return false;
}

}  // namespace permora
