#include "security/object_security.h"

#include <algorithm>
#include <utility>

#include "platform/api/errors.h"
#include "platform/raw_security.h"

namespace permora {
namespace {

Outcome NeedAccessControl(const HeldObject& object, HiddenVolume hidden) {
    bool isSupported = true;
    const DWORD error = object.AskAccessControl(isSupported);
    if (error == ERROR_ACCESS_DENIED && hidden == HiddenVolume::kReadOn) return {};
    if (error == ERROR_SUCCESS && !isSupported) return {ERROR_NOT_SUPPORTED, Step::kUseAccessControl};
    return {error};
}

std::optional<DaclInheritance> InheritanceOf(PSECURITY_DESCRIPTOR descriptor) {
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    if (GetSecurityDescriptorControl(descriptor, &control, &revision) == FALSE) return std::nullopt;
    return (control & SE_DACL_PROTECTED) != 0 ? DaclInheritance::kProtected : DaclInheritance::kFromParent;
}

}  // namespace

RememberedPlace RememberPlace(const Place& place) {
    RememberedPlace remembered{place.kind, {}};
    remembered.items.reserve(place.names.size());
    for (const std::string& name : place.names)
        remembered.items.emplace_back(place.folder, name);
    return remembered;
}

Outcome FindItem(const RememberedObject& item, HeldObject& object) {
    const DWORD error = item.Find(object);
    return {error, error == ERROR_FILE_INVALID ? Step::kFindAgain : Step::kNone, item.Path()};
}

Outcome ReadListOfObject(const HeldObject& object, HiddenVolume hidden, ReadParts& list) {
    Outcome outcome = NeedAccessControl(object, hidden);
    if (outcome.IsDone()) outcome.code = object.ReadSecurity(DACL_SECURITY_INFORMATION, list);
    return outcome;
}

Outcome ReadObjectDacl(const HeldObject& object, ObjectSecurity& security) {
    ObjectSecurity read;
    Outcome outcome = ReadListOfObject(object, HiddenVolume::kReadOn, read);
    if (!outcome.IsDone()) return outcome;
    read.inheritance = InheritanceOf(read.descriptor.get());
    read.entries = AccessEntryList(AcesOf(read.dacl));
    security = std::move(read);
    return outcome;
}

DWORD ReadObjectOwner(const HeldObject& object, AccountRecord& account) {
    ReadParts parts;
    const DWORD error = object.ReadSecurity(OWNER_SECURITY_INFORMATION, parts);
    if (error != ERROR_SUCCESS) return error;
    AccountRecord read;
    if (parts.owner != nullptr && !read.SetSid(parts.owner)) return ERROR_INVALID_SID;
    account = std::move(read);
    return ERROR_SUCCESS;
}

std::string ChildPath(const std::string& item, const std::string& below) {
    if (below.empty()) return item;
    return item + (item.ends_with('\\') ? "" : "\\") + below;
}

std::string TypedChildPath(const std::string& typed, const std::string& below) {
    const std::size_t start = below.find_first_not_of('\\');
    if (start == below.npos) return typed;
    std::string rest = below.substr(start);
    const char separator = typed.find('\\') == typed.npos ? '/' : '\\';
    std::replace(rest.begin(), rest.end(), '\\', separator);
    const bool endsWithSeparator = typed.find_last_of("/\\") + 1 == typed.size();
    return typed + (endsWithSeparator ? "" : std::string(1, separator)) + rest;
}

Outcomes WriteListToItems(std::span<const RememberedObject> items, std::optional<DaclInheritance> inheritance,
                          const ListsByKind& lists, PSECURITY_DESCRIPTOR shown, ChangeRecorder& recorder) {
    Outcomes failures;
    PSECURITY_DESCRIPTOR expected = shown;
    for (const RememberedObject& item : items) {
        HeldObject object;
        FailuresBelow below;
        Outcome outcome = FindItem(item, object);
        if (outcome.IsDone()) {
            PACL dacl = object.IsFolder() ? lists.forFolders : lists.forFiles;
            outcome = OutcomeOfChange(object.WriteSecurity(DaclWriteInformation(inheritance), {.dacl = dacl},
                                                           expected, recorder, below),
                                      recorder);
            outcome.object = item.Path();
        }
        if (!outcome.IsDone()) failures.push_back(outcome);
        if (outcome.code == ERROR_REVISION_MISMATCH || outcome.step == Step::kRecord) break;
        if (below.count > 0) {
            failures.push_back({below.firstError, Step::kCarryDown, ChildPath(item.Path(), below.firstPath),
                                item.Path(), below.count - 1});
        }
        expected = nullptr;  // only the first one's list was shown
    }
    return failures;
}

}  // namespace permora
