// Converts SIDs and security descriptors between text and binary form.
#include <cstring>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/memory.h"
#include "platform/api/security.h"
#include "platform/linux/accounts/unix_accounts.h"
#include "platform/linux/base/failure.h"
#include "platform/linux/security/descriptor_view.h"
#include "platform/nt/sddl.h"
#include "platform/security_change.h"

namespace {

using permora::host::DescriptorValue;
using permora::host::Fail;

// A copy that the caller frees with LocalFree; null with the last error set when there is no memory.
void* LocalCopy(const void* bytes, std::size_t size) {
    void* copy = LocalAlloc(LMEM_FIXED, size);
    if (copy != nullptr) std::memcpy(copy, bytes, size);
    return copy;
}

permora::nt::SddlAccounts OwnAccounts() {
    const permora::nt::Sid* machine = permora::host::MachineSid();
    return machine != nullptr ? permora::nt::SddlAccounts(*machine) : permora::nt::SddlAccounts();
}

}  // namespace

BOOL WINAPI ConvertStringSidToSidA(LPCSTR text, PSID* sid) {
    if (text == nullptr || sid == nullptr) return Fail(ERROR_INVALID_PARAMETER);
    const auto value = permora::nt::SidFromSddl(text, OwnAccounts());
    if (!value) return Fail(ERROR_INVALID_SID);
    const auto bytes = value->Bytes();
    void* copy = LocalCopy(bytes.data(), bytes.size());
    if (copy == nullptr) return FALSE;
    *sid = copy;
    return TRUE;
}

// The length counts the characters of the text with its NUL.
BOOL WINAPI ConvertSecurityDescriptorToStringSecurityDescriptorA(PSECURITY_DESCRIPTOR descriptor,
                                                                 DWORD revision,
                                                                 SECURITY_INFORMATION information,
                                                                 LPSTR* text, PULONG length) {
    if (text == nullptr) return Fail(ERROR_INVALID_PARAMETER);
    if (revision != SDDL_REVISION_1) return Fail(ERROR_UNKNOWN_REVISION);
    const auto value = DescriptorValue(descriptor);
    if (!value) return Fail(ERROR_INVALID_SECURITY_DESCR);
    const auto written = permora::nt::ToSddl(*value, information & permora::kDescriptorParts);
    // The language has no word for the type of one of its entries.
    if (!written) return Fail(ERROR_NOT_SUPPORTED);
    void* copy = LocalCopy(written->c_str(), written->size() + 1);
    if (copy == nullptr) return FALSE;
    *text = static_cast<LPSTR>(copy);
    if (length != nullptr) *length = static_cast<ULONG>(written->size() + 1);
    return TRUE;
}

BOOL WINAPI ConvertStringSecurityDescriptorToSecurityDescriptorA(LPCSTR text, DWORD revision,
                                                                 PSECURITY_DESCRIPTOR* descriptor,
                                                                 PULONG size) {
    if (text == nullptr || descriptor == nullptr) return Fail(ERROR_INVALID_PARAMETER);
    if (revision != SDDL_REVISION_1) return Fail(ERROR_UNKNOWN_REVISION);
    const auto value = permora::nt::FromSddl(text, OwnAccounts());
    if (!value) return Fail(ERROR_INVALID_PARAMETER);
    std::vector<BYTE> bytes;
    if (!value->AppendTo(bytes)) return Fail(ERROR_INVALID_ACL);
    void* copy = LocalCopy(bytes.data(), bytes.size());
    if (copy == nullptr) return FALSE;
    *descriptor = copy;
    if (size != nullptr) *size = static_cast<ULONG>(bytes.size());
    return TRUE;
}
