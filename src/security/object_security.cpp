#include "security/object_security.h"

#include <algorithm>
#include <set>
#include <utility>

#include "platform/api/errors.h"
#include "platform/raw_security.h"
#include "platform/system_message.h"

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

// Writes what the object has anew, which joins it with what its folder hands down by now.
DWORD InheritAnew(const HeldObject& object, ChangeRecorder& recorder, FailuresBelow& below) {
    constexpr int kAttempts = 5;  // another program may change it just then
    DWORD error = ERROR_REVISION_MISMATCH;
    for (int attempt = 0; attempt < kAttempts && error == ERROR_REVISION_MISMATCH; ++attempt) {
        ReadParts now;
        error = object.ReadSecurity(DACL_SECURITY_INFORMATION, now);
        if (error == ERROR_SUCCESS)
            error = object.WriteSecurity(DACL_SECURITY_INFORMATION, {.dacl = now.dacl}, now.descriptor.get(),
                                         recorder, below);
    }
    return error == ERROR_REVISION_MISMATCH ? DWORD{ERROR_BUSY} : error;
}

// `object` is that of the place.
void AddFailuresBelow(const HeldObject& object, const std::string& item, const ObjectPlace& place,
                      const FailuresBelow& below, ChangeResults& results) {
    for (const auto& [path, error] : below.named) {
        const std::string belowItem =
            place.below.empty() || path.empty() ? place.below + path : ChildPath(place.below, path);
        ObjectPlace failed{place.item, belowItem, ObjectPart::kInherited};
        MarkPlace(object, path, failed);
        results.Add({std::move(failed), {error, Step::kCarryDown, ChildPath(item, belowItem), item}});
    }
    results.CountFailures(below.count - below.named.size());
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

std::string ReadOnlyReason(std::span<const RememberedObject> items, SECURITY_INFORMATION information) {
    constexpr std::size_t kMostItems = 100;
    DWORD obstacle = ERROR_SUCCESS;
    if (items.size() > kMostItems) return {};
    for (const RememberedObject& item : items) {
        HeldObject object;
        if (item.Find(object) != ERROR_SUCCESS) return {};
        obstacle = object.FindObstacle(information);
        if (obstacle == ERROR_SUCCESS) return {};
    }
    return obstacle == ERROR_SUCCESS ? std::string()
                                     : "This cannot be changed: " + SystemMessageLine(obstacle);
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

std::vector<ObjectPlace> PlacesOf(std::span<const RememberedObject> items, Contents contents) {
    std::vector<ObjectPlace> places;
    for (std::size_t item = 0; item < items.size(); ++item)
        places.push_back({item, {}, ObjectPart::kObject});
    for (std::size_t item = 0; item < items.size() && contents == Contents::kToo; ++item)
        places.push_back({item, {}, ObjectPart::kContents});
    return places;
}

void MarkPlace(const HeldObject& folder, const std::string& path, ObjectPlace& place) {
    HeldObject object;
    ChangedTop found;
    if (folder.HoldBelow(path, object) == ERROR_SUCCESS && object.FindTop(found) == ERROR_SUCCESS)
        place.mark = std::move(found.mark);
}

Outcome FindPlace(std::span<const RememberedObject> items, const ObjectPlace& place, HeldObject& object) {
    HeldObject item;
    Outcome outcome = FindItem(items[place.item], item);
    outcome.object = ChildPath(items[place.item].Path(), place.below);
    if (!outcome.IsDone()) return outcome;
    HeldObject found;
    if (place.below.empty())
        found = std::move(item);
    else
        outcome.code = item.HoldBelow(place.below, found);
    ChangedTop now;
    if (outcome.IsDone() && !place.mark.empty()) outcome.code = found.FindTop(now);
    if (outcome.IsDone() && now.mark != place.mark) {
        outcome.code = ERROR_FILE_INVALID;
        outcome.step = Step::kFindAgain;
    }
    if (outcome.IsDone()) object = std::move(found);
    return outcome;
}

void WriteListToItems(std::span<const RememberedObject> items, std::span<const ObjectPlace> places,
                      std::optional<DaclInheritance> inheritance, const ListsByKind& lists,
                      PSECURITY_DESCRIPTOR shown, ChangeRecorder& recorder, ChangeResults& results) {
    std::set<std::size_t> walked;
    for (const ObjectPlace& place : places)
        if (place.part == ObjectPart::kContents) walked.insert(place.item);
    for (const ObjectPlace& place : places) {
        const bool isAnew = place.part == ObjectPart::kInherited;
        if (place.part == ObjectPart::kContents || IsSingleBelow(place)) continue;
        HeldObject object;
        FailuresBelow below;
        Outcome outcome = FindPlace(items, place, object);
        if (outcome.IsDone()) {
            const std::string path = outcome.object;
            PACL dacl = object.IsFolder() ? lists.forFolders : lists.forFiles;
            // Only the first one's list was shown.
            PSECURITY_DESCRIPTOR expected = place.item == 0 ? shown : nullptr;
            DWORD error = isAnew ? InheritAnew(object, recorder, below)
                                 : object.WriteSecurity(DaclWriteInformation(inheritance), {.dacl = dacl},
                                                        expected, recorder, below);
            // Others change it all the time, but nothing that was shown.
            if (error == ERROR_REVISION_MISMATCH && expected == nullptr) error = ERROR_BUSY;
            outcome = OutcomeOfChange(error, recorder);
            if (isAnew && outcome.step == Step::kNone)
                outcome = {error, Step::kCarryDown, {}, items[place.item].Path()};
            outcome.object = path;
        }
        const bool isLast = outcome.code == ERROR_REVISION_MISMATCH || outcome.step == Step::kRecord;
        if (!below.named.contains({}) || walked.contains(place.item))
            results.Add({place, std::move(outcome)});
        if (!walked.contains(place.item))
            AddFailuresBelow(object, items[place.item].Path(), place, below, results);
        if (isLast) break;
    }
}

}  // namespace permora
