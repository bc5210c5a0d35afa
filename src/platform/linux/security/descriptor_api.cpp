// Security descriptors in the caller's memory, absolute or self-relative. Their parts need not be aligned.
#include <cstring>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/linux/base/failure.h"
#include "platform/linux/security/descriptor_view.h"
#include "platform/raw_security.h"

namespace {

using permora::ClaimedBytes;
using permora::host::DescriptorView;
using permora::host::Fail;

struct Part {
    void* bytes;  // null: the descriptor has none
    DWORD length;
};

struct Parts {
    Part sacl, dacl, owner, group;
};

Parts PartsOf(const DescriptorView& view) {
    return {{view.sacl, static_cast<DWORD>(ClaimedBytes(view.sacl).size())},
            {view.dacl, static_cast<DWORD>(ClaimedBytes(view.dacl).size())},
            {view.owner, GetLengthSid(view.owner)},
            {view.group, GetLengthSid(view.group)}};
}

bool AreValid(const Parts& parts) {
    const auto isValidAcl = [](const Part& part) {
        return part.bytes == nullptr || IsValidAcl(static_cast<PACL>(part.bytes));
    };
    const auto isValidSid = [](const Part& part) { return part.bytes == nullptr || IsValidSid(part.bytes); };
    return isValidAcl(parts.sacl) && isValidAcl(parts.dacl) && isValidSid(parts.owner) &&
           isValidSid(parts.group);
}

bool IsSelfRelative(const DescriptorView& view) {
    return (view.control & SE_SELF_RELATIVE) != 0;
}

// The caller's buffer for one part, and the size that the caller gave for it.
struct Place {
    void* bytes;
    LPDWORD size;
};

bool IsTooSmall(const Place& place, const Part& part) {
    return part.bytes != nullptr && (place.bytes == nullptr || *place.size < part.length);
}

// Copies the part if there is one. Returns the copy.
void* Store(const Place& place, const Part& part) {
    if (part.bytes == nullptr) return nullptr;
    std::memcpy(place.bytes, part.bytes, part.length);
    return place.bytes;
}

// The place of a list in a view, and its flags in the control word.
struct ListPlace {
    WORD presentBit;
    WORD defaultedBit;
    PACL DescriptorView::*list;
};

BOOL HandOutList(PSECURITY_DESCRIPTOR descriptor, const ListPlace& place, LPBOOL present, PACL* list,
                 LPBOOL defaulted) {
    const auto view = DescriptorView::Of(descriptor);
    if (!view) return Fail(ERROR_INVALID_SECURITY_DESCR);
    if (present == nullptr || list == nullptr || defaulted == nullptr) return Fail(ERROR_INVALID_PARAMETER);
    *present = (view->control & place.presentBit) != 0 ? TRUE : FALSE;
    if (*present == FALSE) return TRUE;  // the SDK leaves the other outputs alone
    *list = (*view).*place.list;
    *defaulted = (view->control & place.defaultedBit) != 0 ? TRUE : FALSE;
    return TRUE;
}

}  // namespace

BOOL WINAPI InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor, DWORD revision) {
    if (descriptor == nullptr) return Fail(ERROR_INVALID_PARAMETER);
    if (revision != SECURITY_DESCRIPTOR_REVISION) return Fail(ERROR_UNKNOWN_REVISION);
    SECURITY_DESCRIPTOR header{};
    header.Revision = SECURITY_DESCRIPTOR_REVISION;
    std::memcpy(descriptor, &header, sizeof header);
    return TRUE;
}

BOOL WINAPI SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL present, PACL dacl,
                                      BOOL defaulted) {
    const auto view = DescriptorView::Of(descriptor);
    if (!view || IsSelfRelative(*view)) return Fail(ERROR_INVALID_SECURITY_DESCR);
    SECURITY_DESCRIPTOR header{};
    std::memcpy(&header, descriptor, sizeof header);
    header.Control &= static_cast<WORD>(~(SE_DACL_PRESENT | SE_DACL_DEFAULTED));
    if (present != FALSE) header.Control |= SE_DACL_PRESENT;
    if (present != FALSE && defaulted != FALSE) header.Control |= SE_DACL_DEFAULTED;
    header.Dacl = present != FALSE ? dacl : nullptr;
    std::memcpy(descriptor, &header, sizeof header);
    return TRUE;
}

BOOL WINAPI IsValidSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor) {
    const auto view = DescriptorView::Of(descriptor);
    return view && AreValid(PartsOf(*view));
}

DWORD WINAPI GetSecurityDescriptorLength(PSECURITY_DESCRIPTOR descriptor) {
    const auto view = DescriptorView::Of(descriptor);
    if (!view) return 0;
    constexpr DWORD kAlignment = 4;
    const Parts parts = PartsOf(*view);
    DWORD length = 5 * kAlignment;  // the header, with four offsets
    for (const Part& part : {parts.sacl, parts.dacl, parts.owner, parts.group})
        if (part.bytes != nullptr) length += (part.length + kAlignment - 1) / kAlignment * kAlignment;
    return length;
}

BOOL WINAPI GetSecurityDescriptorControl(PSECURITY_DESCRIPTOR descriptor,
                                         PSECURITY_DESCRIPTOR_CONTROL control, LPDWORD revision) {
    const auto view = DescriptorView::Of(descriptor);
    if (!view) return Fail(ERROR_INVALID_SECURITY_DESCR);
    if (control == nullptr || revision == nullptr) return Fail(ERROR_INVALID_PARAMETER);
    *control = view->control;
    *revision = SECURITY_DESCRIPTOR_REVISION;
    return TRUE;
}

BOOL WINAPI GetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, LPBOOL present, PACL* dacl,
                                      LPBOOL defaulted) {
    return HandOutList(descriptor, {SE_DACL_PRESENT, SE_DACL_DEFAULTED, &DescriptorView::dacl}, present, dacl,
                       defaulted);
}

BOOL WINAPI GetSecurityDescriptorSacl(PSECURITY_DESCRIPTOR descriptor, LPBOOL present, PACL* sacl,
                                      LPBOOL defaulted) {
    return HandOutList(descriptor, {SE_SACL_PRESENT, SE_SACL_DEFAULTED, &DescriptorView::sacl}, present, sacl,
                       defaulted);
}

BOOL WINAPI MakeAbsoluteSD(PSECURITY_DESCRIPTOR selfRelative, PSECURITY_DESCRIPTOR absolute,
                           LPDWORD absoluteSize, PACL dacl, LPDWORD daclSize, PACL sacl, LPDWORD saclSize,
                           PSID owner, LPDWORD ownerSize, PSID primaryGroup, LPDWORD primaryGroupSize) {
    const auto view = DescriptorView::Of(selfRelative);
    if (!view) return Fail(ERROR_INVALID_SECURITY_DESCR);
    if (!IsSelfRelative(*view)) return Fail(ERROR_BAD_DESCRIPTOR_FORMAT);
    const Parts parts = PartsOf(*view);
    if (!AreValid(parts)) return Fail(ERROR_INVALID_SECURITY_DESCR);
    for (const DWORD* size : {absoluteSize, daclSize, saclSize, ownerSize, primaryGroupSize})
        if (size == nullptr) return Fail(ERROR_INVALID_PARAMETER);

    const Place saclPlace{sacl, saclSize};
    const Place daclPlace{dacl, daclSize};
    const Place ownerPlace{owner, ownerSize};
    const Place groupPlace{primaryGroup, primaryGroupSize};
    if (absolute == nullptr || *absoluteSize < sizeof(SECURITY_DESCRIPTOR) ||
        IsTooSmall(saclPlace, parts.sacl) || IsTooSmall(daclPlace, parts.dacl) ||
        IsTooSmall(ownerPlace, parts.owner) || IsTooSmall(groupPlace, parts.group)) {
        *absoluteSize = sizeof(SECURITY_DESCRIPTOR);
        *saclSize = parts.sacl.length;
        *daclSize = parts.dacl.length;
        *ownerSize = parts.owner.length;
        *primaryGroupSize = parts.group.length;
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }

    SECURITY_DESCRIPTOR header{};
    header.Revision = SECURITY_DESCRIPTOR_REVISION;
    header.Sbz1 = view->resourceManagerControl;
    header.Control = static_cast<WORD>(view->control & ~SE_SELF_RELATIVE);
    header.Owner = Store(ownerPlace, parts.owner);
    header.Group = Store(groupPlace, parts.group);
    header.Sacl = static_cast<PACL>(Store(saclPlace, parts.sacl));
    header.Dacl = static_cast<PACL>(Store(daclPlace, parts.dacl));
    std::memcpy(absolute, &header, sizeof(header));
    return TRUE;
}
