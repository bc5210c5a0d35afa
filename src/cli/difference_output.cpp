#include "cli/difference_output.h"

#include <optional>
#include <vector>

#include "cli/interrupts.h"
#include "cli/listing.h"
#include "cli/saved_parts.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"
#include "platform/security_change.h"
#include "saved/descriptor_text.h"

namespace permora {
namespace {

const char* KindText(SavedKind kind) {
    switch (kind) {
        case SavedKind::kFile:
            return "a file";
        case SavedKind::kFolder:
            return "a folder";
        case SavedKind::kLink:
            return "a link";
        case SavedKind::kMounted:
            return "another volume";
        case SavedKind::kOther:
        case SavedKind::kUnknown:
        case SavedKind::kUnread:
        case SavedKind::kUnlisted:
            break;
    }
    return "something else";
}

// For programs, which look for words that stay.
const char* DifferenceWord(DifferenceKind kind) {
    switch (kind) {
        case DifferenceKind::kAdded:
            return "added";
        case DifferenceKind::kMissing:
            return "missing";
        case DifferenceKind::kOtherKind:
            return "otherKind";
        case DifferenceKind::kSecurity:
            return "changed";
        case DifferenceKind::kUnread:
            return "unread";
        case DifferenceKind::kUnlisted:
            return "unlisted";
        case DifferenceKind::kUnknown:
            return "notSaved";
    }
    return "unknown";
}

std::string ReasonText(const TreeDifference& difference) {
    const std::string reason = LineText({difference.error});
    switch (difference.kind) {
        case DifferenceKind::kUnread:
            return "not compared: " + reason;
        case DifferenceKind::kUnlisted:
            return "not compared, what is in it: " + reason;
        case DifferenceKind::kUnknown:
            return "not compared, it was not saved: " + reason;
        default:
            return {};
    }
}

// The rows that differ.
std::vector<ComparedRow> RowsOf(const TreeDifference& difference) {
    const auto before = nt::SecurityDescriptor::FromBytes(difference.before);
    const auto after = nt::SecurityDescriptor::FromBytes(difference.after);
    const ComparedObject object =
        difference.is == SavedKind::kFolder ? ComparedObject::kFolder : ComparedObject::kFile;
    return ChangedRows(before ? &*before : nullptr, after ? &*after : nullptr, object);
}

Json SddlJson(std::span<const std::uint8_t> descriptor) {
    const std::optional<std::string> text = ExactSddl(descriptor, kDescriptorParts);
    return text ? Json(*text) : Json();
}

}  // namespace

Json RowsJson(const std::vector<ComparedRow>& rows) {
    Json json = Json::array();
    for (const ComparedRow& row : rows)
        json.push_back({{"change", RowChangeText(row.change)},
                        {"what", row.what},
                        {"name", row.name},
                        {"before", row.before},
                        {"after", row.after}});
    return json;
}

bool DifferenceOutput::Begin(std::string_view path) {
    if (IsInterrupted()) return false;
    line.ShowPath(++objects, path);
    return true;
}

void DifferenceOutput::Differ(const TreeDifference& difference) {
    ++differences;
    line.Clear();
    const std::string path = TypedPath(target, std::string(difference.path));
    if (difference.error != ERROR_SUCCESS) {
        messages.SetSubject(path);
        messages.Say(ReasonText(difference));
    }
    if (form == DifferenceForm::kJson)
        PrintJson(difference, path);
    else
        PrintText(difference, path);
}

void DifferenceOutput::PrintText(const TreeDifference& difference, const std::string& path) {
    std::string text = PrintableText(path) + '\n';
    switch (difference.kind) {
        case DifferenceKind::kAdded:
            text = "added: " + text;
            break;
        case DifferenceKind::kMissing:
            text = "missing: " + text;
            break;
        case DifferenceKind::kOtherKind:
            text = std::string("it was ") + KindText(difference.was) + " and is " + KindText(difference.is) +
                   ": " + text;
            break;
        case DifferenceKind::kSecurity:
            text = "changed: " + text + ChangedRowsText(RowsOf(difference));
            break;
        case DifferenceKind::kUnread:
        case DifferenceKind::kUnlisted:
        case DifferenceKind::kUnknown:
            return;  // named on standard error
    }
    Print(text);
}

void DifferenceOutput::PrintJson(const TreeDifference& difference, const std::string& path) {
    Json json = {{"path", path}, {"difference", DifferenceWord(difference.kind)}};
    if (difference.error != ERROR_SUCCESS) json["error"] = difference.error;
    if (difference.kind == DifferenceKind::kOtherKind) {
        json["was"] = KindText(difference.was);
        json["is"] = KindText(difference.is);
    }
    if (!difference.before.empty()) json["before"] = SddlJson(difference.before);
    if (!difference.after.empty()) json["after"] = SddlJson(difference.after);
    if (difference.kind == DifferenceKind::kSecurity) json["rows"] = RowsJson(RowsOf(difference));
    array.Add(json);
}

void DifferenceOutput::End() {
    line.Clear();
    if (form == DifferenceForm::kJson)
        array.End(
            {{"parts", PartsJson(parts)}, {"summary", {{"compared", objects}, {"different", differences}}}});
    else
        Print("compared: " + std::to_string(objects) + ", different: " + std::to_string(differences) + '\n');
}

}  // namespace permora
