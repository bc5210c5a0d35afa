#include "cli/history_listing.h"

#include <array>
#include <optional>

#include "cli/listing.h"
#include "cli/terminal_text.h"
#include "history/history_texts.h"
#include "platform/api/errors.h"
#include "platform/nt/sddl.h"
#include "platform/raw_security.h"
#include "platform/security_change.h"
#include "platform/stored_security.h"
#include "security/account_record.h"
#include "security/object_security.h"

namespace permora {
namespace {

// For programs, which look for words that stay.
const char* KindWord(ChangeKind kind) {
    switch (kind) {
        case ChangeKind::kPermissions:
            return "permissions";
        case ChangeKind::kOwner:
            return "owner";
        case ChangeKind::kReset:
            return "reset";
        case ChangeKind::kAssign:
            return "assign";
        case ChangeKind::kShare:
            return "share";
        case ChangeKind::kUndo:
            return "undo";
        case ChangeKind::kRestore:
            return "restore";
        case ChangeKind::kReplace:
            return "replace";
        case ChangeKind::kClone:
            return "clone";
        case ChangeKind::kPolicy:
            return "policy";
    }
    return "unknown";
}

const char* StateWord(ChangeState state) {
    switch (state) {
        case ChangeState::kRunning:
            return "running";
        case ChangeState::kDone:
            return "done";
        case ChangeState::kInterrupted:
            return "interrupted";
        case ChangeState::kUndone:
            return "undone";
        case ChangeState::kPartlyUndone:
            return "partlyUndone";
    }
    return "unknown";
}

const char* FormWord(SecurityForm form) {
    switch (form) {
        case SecurityForm::kNone:
            return "nothing";
        case SecurityForm::kVolume:
            return "volume";
        case SecurityForm::kSamba:
            return "samba";
        case SecurityForm::kUser:
            return "user";
        case SecurityForm::kShare:
            return "share";
    }
    return "unknown";
}

std::string NameOf(const std::optional<nt::Sid>& sid) {
    AccountRecord account;
    account.sid = sid;
    return AccountDisplayName(account);
}

Json EntriesIn(const nt::SecurityDescriptor& descriptor) {
    std::vector<std::uint8_t> bytes;
    PACL dacl = nullptr;
    BOOL isPresent = FALSE;
    BOOL isDefaulted = FALSE;
    if (!descriptor.AppendTo(bytes) ||
        GetSecurityDescriptorDacl(bytes.data(), &isPresent, &dacl, &isDefaulted) == FALSE)
        return Json::array();
    return EntriesJson(dacl, AccessEntryList(AcesOf(dacl)));
}

Json StoredJson(const StoredSecurity& stored) {
    Json json = {{"keptIn", FormWord(stored.form)}};
    json["hostOwner"] = stored.hostOwner ? Json(*stored.hostOwner) : Json();
    std::optional<nt::SecurityDescriptor> descriptor;
    json["damaged"] = DescriptorIn(stored, descriptor) != ERROR_SUCCESS;
    if (!descriptor) return json;
    const std::optional<std::string> text = nt::ToSddl(*descriptor, kDescriptorParts);
    json["owner"] = descriptor->owner ? Json(NameOf(descriptor->owner)) : Json();
    json["inherits"] = !descriptor->IsDaclProtected();
    json["sddl"] = text ? Json(*text) : Json();
    json["entries"] = EntriesIn(*descriptor);
    return json;
}

}  // namespace

std::vector<std::string> ChangeTitles() {
    return {"Number", "When", "Who", "What", "Objects", "State"};
}

std::vector<std::string> ChangeColumns(const ChangeFacts& facts) {
    return {std::to_string(facts.number),  ChangeTimeText(facts.began), facts.user, ChangeText(facts),
            std::to_string(facts.objects), ChangeStateText(facts.state)};
}

std::string ChangeLine(const ChangeFacts& facts) {
    return std::to_string(facts.number) + ": " + ChangeText(facts) + " (" + std::to_string(facts.objects) +
           (facts.objects == 1 ? " object), " : " objects), ") + ChangeTimeText(facts.began) + " by " +
           facts.user;
}

Json ChangeJson(const ChangeFacts& facts) {
    Json json = {
        {"number", facts.number},       {"began", facts.began},      {"user", facts.user},
        {"kind", KindWord(facts.kind)}, {"what", ChangeText(facts)}, {"state", StateWord(facts.state)},
        {"objects", facts.objects},     {"tops", facts.tops},        {"firstTop", facts.firstTop}};
    if (facts.kind == ChangeKind::kUndo) json["undoes"] = facts.undoes;
    return json;
}

std::string RecordedPath(const ChangedTop& top, const std::string& path) {
    return ChildPath(top.path, path);
}

std::string RecordedText(const RecordedObject& object) {
    const DescriptorChange& change = object.change;
    const ComparedObject kind = change.isFolder ? ComparedObject::kFolder : ComparedObject::kFile;
    return PrintableText(RecordedPath(object.top, change.path)) + '\n' +
           ComparedRowsText(CompareStored(change.before, change.after, kind, AccountDisplayName));
}

Json RecordedJson(const RecordedObject& object) {
    const DescriptorChange& change = object.change;
    return {{"path", RecordedPath(object.top, change.path)},
            {"folder", change.isFolder},
            {"before", StoredJson(change.before)},
            {"after", StoredJson(change.after)}};
}

ExitCode SayHistoryFailure(DWORD error, ConsoleMessages& messages) {
    messages.SetSubject(History::UsualPath());
    messages.Say(HistoryFailureText(error));
    return ExitCode::kSomeFailed;
}

}  // namespace permora
