#include "platform/linux/security/descriptor_view.h"

#include <cstring>
#include <utility>

#include "platform/raw_security.h"

namespace permora::host {
namespace {

template <typename Header>
Header ReadHeader(const void* bytes) {
    Header header;
    std::memcpy(&header, bytes, sizeof(header));
    return header;
}

bool LeadsIntoHeader(DWORD offset) {
    return offset != 0 && offset < sizeof(SECURITY_DESCRIPTOR_RELATIVE);
}

std::optional<DescriptorView> ViewOfSelfRelative(PSECURITY_DESCRIPTOR descriptor) {
    const auto header = ReadHeader<SECURITY_DESCRIPTOR_RELATIVE>(descriptor);
    for (const DWORD offset : {header.Owner, header.Group, header.Sacl, header.Dacl})
        if (LeadsIntoHeader(offset)) return std::nullopt;
    const auto partAt = [descriptor](DWORD offset) -> void* {
        return offset != 0 ? static_cast<BYTE*>(descriptor) + offset : nullptr;
    };
    return DescriptorView{header.Sbz1,
                          header.Control,
                          partAt(header.Owner),
                          partAt(header.Group),
                          static_cast<PACL>(partAt(header.Sacl)),
                          static_cast<PACL>(partAt(header.Dacl))};
}

DescriptorView ViewOfAbsolute(PSECURITY_DESCRIPTOR descriptor) {
    const auto header = ReadHeader<SECURITY_DESCRIPTOR>(descriptor);
    return {header.Sbz1, header.Control, header.Owner, header.Group, header.Sacl, header.Dacl};
}

}  // namespace

std::optional<DescriptorView> DescriptorView::Of(PSECURITY_DESCRIPTOR descriptor) {
    const auto* bytes = static_cast<const BYTE*>(descriptor);
    if (bytes == nullptr || bytes[offsetof(SECURITY_DESCRIPTOR, Revision)] != SECURITY_DESCRIPTOR_REVISION)
        return std::nullopt;
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    std::memcpy(&control, bytes + offsetof(SECURITY_DESCRIPTOR, Control), sizeof(control));
    auto view =
        (control & SE_SELF_RELATIVE) != 0 ? ViewOfSelfRelative(descriptor) : ViewOfAbsolute(descriptor);
    if (!view) return std::nullopt;
    if ((control & SE_SACL_PRESENT) == 0) view->sacl = nullptr;
    if ((control & SE_DACL_PRESENT) == 0) view->dacl = nullptr;
    return view;
}

std::optional<nt::SecurityDescriptor> DescriptorValue(PSECURITY_DESCRIPTOR descriptor) {
    const auto view = DescriptorView::Of(descriptor);
    if (!view) return std::nullopt;
    nt::SecurityDescriptor value;
    value.control = view->control | SE_SELF_RELATIVE;
    value.resourceManagerControl = view->resourceManagerControl;
    value.owner = SidOf(view->owner);
    value.group = SidOf(view->group);
    if ((view->owner != nullptr && !value.owner) || (view->group != nullptr && !value.group) ||
        (view->sacl != nullptr && IsValidAcl(view->sacl) == FALSE))
        return std::nullopt;
    if ((view->control & SE_DACL_PRESENT) != 0) value.daclState = nt::DaclState::kNull;
    if (view->dacl != nullptr) {
        auto dacl = AclOf(view->dacl);
        if (!dacl) return std::nullopt;
        value.daclState = nt::DaclState::kList;
        value.dacl = std::move(*dacl);
    }
    const auto sacl = ClaimedBytes(view->sacl);
    value.saclBytes.assign(sacl.begin(), sacl.end());
    return value;
}

}  // namespace permora::host
