#include "tests/support/descriptor_texts.h"

namespace permora::test {

UniqueLocal<void> DescriptorOf(const std::string& sddl) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ConvertStringSecurityDescriptorToSecurityDescriptorA(sddl.c_str(), SDDL_REVISION_1, &descriptor, nullptr);
    return UniqueLocal<void>(descriptor);
}

PACL ListOf(const UniqueLocal<void>& descriptor) {
    PACL list = nullptr;
    BOOL isPresent = FALSE;
    BOOL isDefaulted = FALSE;
    GetSecurityDescriptorDacl(descriptor.get(), &isPresent, &list, &isDefaulted);
    return list;
}

std::string SddlOfParts(PSECURITY_DESCRIPTOR descriptor, SECURITY_INFORMATION parts) {
    LPSTR text = nullptr;
    if (ConvertSecurityDescriptorToStringSecurityDescriptorA(descriptor, SDDL_REVISION_1, parts, &text,
                                                             nullptr) == FALSE)
        return "none";
    return UniqueLocal<char>(text).get();
}

}  // namespace permora::test
