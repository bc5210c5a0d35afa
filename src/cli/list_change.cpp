#include "cli/list_change.h"

#include "cli/listing.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"
#include "platform/volume_loss.h"

namespace permora {
namespace {

bool IsTurn(DWORD error, ConsoleMessages& messages) {
    if (error != ERROR_SUCCESS) messages.Say("not changed: another program of yours is still changing it");
    return error == ERROR_SUCCESS;
}

}  // namespace

ChangeOptions::ChangeOptions(OptionPlace place, const char* nullListDescription)
    : dropOtherEntries(place, "--drop-other-entries",
                       "Change even a list with entries of other types than allow and deny, or with such\n"
                       "that are not valid; they are lost"),
      replaceNullList(place, "--replace-null-list", nullListDescription) {}

bool ReadForChange(const HeldObject& object, ObjectSecurity& security, ConsoleMessages& messages) {
    if (!ReadList(object, security, messages)) return false;
    if (!security.inheritance) {
        messages.Say("not changed: whether it inherits cannot be read");
        return false;
    }
    return true;
}

Losses LossesOf(PACL dacl, const AccessEntryList& entries) {
    return {entries.OtherTypeCount(), entries.UnacceptableCount(), dacl == nullptr};
}

void DropOtherEntries(AccessEntryList& entries) {
    for (std::size_t i = entries.Entries().size(); i-- > 0;) {
        const AccessEntry& entry = entries.Entries()[i];
        if (entry.IsOfOtherType() || !entry.IsAcceptable()) entries.RemoveEntry(i);
    }
}

bool ChangeOptions::MayReplace(const Losses& losses, ConsoleMessages& messages) const {
    if (losses.otherEntries > 0 && !dropOtherEntries) {
        messages.Say("not changed: " + std::to_string(losses.otherEntries) +
                     (losses.otherEntries == 1 ? " entry of another type" : " entries of other types") +
                     " than allow and deny would be lost (--drop-other-entries does it all the same)");
        return false;
    }
    if (losses.unacceptable > 0 && !dropOtherEntries) {
        messages.Say("not changed: " + std::to_string(losses.unacceptable) +
                     (losses.unacceptable == 1 ? " entry that is" : " entries that are") +
                     " not valid would be lost (--drop-other-entries does it all the same)");
        return false;
    }
    if (losses.everyonesAccess && !replaceNullList) {
        messages.Say(
            "not changed: everyone may do everything now, and only those in the new list could afterwards "
            "(--replace-null-list does it all the same)");
        return false;
    }
    return true;
}

UniqueLocal<ACL> BuildWholeDacl(std::span<const AccessEntry> entries, ConsoleMessages& messages) {
    UniqueLocal<ACL> dacl;
    Outcome outcome = BuildDacl(LoadAccessListLibrary().get(), entries, dacl);
    if (outcome.IsDone() && dacl->AceCount != entries.size()) outcome.code = ERROR_INVALID_ACL;
    if (outcome.IsDone()) return dacl;
    messages.Say("not changed: the new access list cannot be built: " + LineText(outcome));
    return nullptr;
}

ChangeResult WriteDacl(const Target& target, const HeldObject& object, const ObjectSecurity& before,
                       std::optional<DaclInheritance> inheritance, PACL dacl, Recording& recording,
                       ConsoleMessages& messages) {
    FailuresBelow below;
    ChangeRecorder& recorder = recording.Recorder();
    const std::uint64_t written = recording.Count();
    const DWORD error = object.WriteSecurity(DaclWriteInformation(inheritance), {.dacl = dacl},
                                             before.descriptor.get(), recorder, below);
    if (error == ERROR_REVISION_MISMATCH) return ChangeResult::kOutOfDate;
    if (!messages.Check(OutcomeOfChange(error, recorder))) return ChangeResult::kFailed;
    messages.PrintForPeople(PrintableText(target.argument) +
                            (recording.Count() > written ? ": changed\n" : ": already so\n"));
    if (below.count == 0) return ChangeResult::kDone;
    const auto [path, failure] = below.ToTell();
    messages.SetSubject(TypedPath(target, path));
    messages.SaySystemError(failure);
    messages.SetSubject(target.argument);
    if (IsVolumeLost(failure)) {
        messages.Say(
            "changed itself, and what is below it that inherits only to a part: the rest was not reached");
        return ChangeResult::kFailed;
    }
    messages.Say("changed itself, but not everything below that inherits: " + std::to_string(below.count) +
                 (below.count == 1 ? " object" : " objects") + " could not be reached or changed");
    return ChangeResult::kFailed;
}

bool ChangeTurn::Begin(const Target& target, ChangeMode mode, ConsoleMessages& messages) {
    if (!FindTarget(target, object, messages)) return false;
    return IsTurn(mode == ChangeMode::kDryRun ? ERROR_SUCCESS : object.TakeTurn(), messages);
}

bool ChangeTurn::Begin(const std::string& share, ChangeMode mode, ConsoleMessages& messages) {
    return IsTurn(mode == ChangeMode::kDryRun ? ERROR_SUCCESS : shareTurn.Take(share), messages);
}

bool ChangeTurn::TryAgain(ConsoleMessages& messages) {
    constexpr int kAttempts = 5;
    if (attempts++ < kAttempts) return true;
    messages.Say("not changed: another program changes it all the time");
    return false;
}

std::string StateText(const Target& target, const char* moment, ObjectSecurity& object,
                      const std::vector<std::string>& remarks) {
    return PrintableText(target.argument) + ' ' + moment + ":\n" + InheritsLine(object) +
           RemarkLines(remarks) + RowsText(object.entries);
}

}  // namespace permora
