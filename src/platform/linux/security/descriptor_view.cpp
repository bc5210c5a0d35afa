#include "platform/linux/security/descriptor_view.h"

#include <cstring>

namespace permora::host {
namespace {

template <typename Header>
Header ReadHeader(PSECURITY_DESCRIPTOR descriptor) {
    Header header;
    std::memcpy(&header, descriptor, sizeof(header));
    return header;
}

bool LeadsIntoHeader(DWORD offset) {
    return offset != 0 && offset < sizeof(SECURITY_DESCRIPTOR_RELATIVE);
}

std::optional<DescriptorView> ViewOfSelfRelative(PSECURITY_DESCRIPTOR descriptor) {
    const auto header = ReadHeader<SECURITY_DESCRIPTOR_RELATIVE>(descriptor);
    for (const DWORD offset : {header.Owner, header.Group, header.Sacl, header.Dacl}) {
        if (LeadsIntoHeader(offset)) return std::nullopt;
    }
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

}  // namespace

std::optional<DescriptorView> DescriptorView::Of(PSECURITY_DESCRIPTOR descriptor) {
    if (descriptor == nullptr || *static_cast<BYTE*>(descriptor) != SECURITY_DESCRIPTOR_REVISION) {
        return std::nullopt;
    }
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    std::memcpy(&control, static_cast<BYTE*>(descriptor) + offsetof(SECURITY_DESCRIPTOR, Control),
                sizeof(control));
    if ((control & SE_SELF_RELATIVE) != 0) return ViewOfSelfRelative(descriptor);
    const auto header = ReadHeader<SECURITY_DESCRIPTOR>(descriptor);
    return DescriptorView{header.Sbz1, header.Control, header.Owner, header.Group, header.Sacl, header.Dacl};
}

}  // namespace permora::host
