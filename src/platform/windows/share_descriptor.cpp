#include "platform/share_descriptor.h"

#include "platform/api/shares.h"
#include "platform/windows/code_page.h"

namespace permora {

DWORD RemoveShareDescriptor(const std::string& name) {
    std::wstring wide;
    if (const DWORD error = ToWide(name, wide); error != ERROR_SUCCESS) return error;
    SECURITY_DESCRIPTOR descriptor{};
    if (InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION) == FALSE ||
        SetSecurityDescriptorDacl(&descriptor, TRUE, nullptr, FALSE) == FALSE)
        return GetLastError();
    SHARE_INFO_1501 record{};
    record.shi1501_security_descriptor = &descriptor;
    return NetShareSetInfo(nullptr, wide.data(), 1501, reinterpret_cast<LPBYTE>(&record), nullptr);
}

}  // namespace permora
