#include "shares/share_security.h"

#include <string>
#include <utility>

#include "platform/api/errors.h"
#include "security/dacl_builder.h"
#include "security/text_conversion.h"

namespace permora {
namespace {

constexpr DWORD kLevel = 502;  // with the descriptor

using ShareRecord = UniqueNetworkBuffer<SHARE_INFO_502>;

NET_API_STATUS GetRecord(const std::string& name, ShareRecord& record) {
    std::basic_string<WCHAR> wideName;
    LPBYTE block = nullptr;
    const NET_API_STATUS status = NetShareGetInfo(nullptr, AnsiToWide(name, wideName), kLevel, &block);
    if (status == NERR_Success) record.reset(reinterpret_cast<SHARE_INFO_502*>(block));
    return status;
}

// Writes the record back as it was read, with another descriptor.
NET_API_STATUS SetDescriptor(const std::string& name, const SHARE_INFO_502& read,
                             PSECURITY_DESCRIPTOR descriptor) {
    std::basic_string<WCHAR> wideName;
    SHARE_INFO_502 record = read;
    record.shi502_security_descriptor = descriptor;
    return NetShareSetInfo(nullptr, AnsiToWide(name, wideName), kLevel, reinterpret_cast<LPBYTE>(&record),
                           nullptr);
}

Outcome WriteDacl(const std::string& name, PACL dacl) {
    ShareRecord record;
    if (const NET_API_STATUS status = GetRecord(name, record); status != NERR_Success) return {status};
    PSECURITY_DESCRIPTOR absolute = nullptr;
    UniqueHeap heap;
    if (!MakeAbsoluteDescriptor(record->shi502_security_descriptor, absolute, heap))
        return {ERROR_INVALID_SECURITY_DESCR, Step::kMakeAbsolute};
    if (SetSecurityDescriptorDacl(absolute, TRUE, dacl, FALSE) == FALSE) return {GetLastError()};
    return {SetDescriptor(name, *record, absolute)};
}

}  // namespace

Outcome LoadShareDacl(const std::string& name, ShareSecurity& share) {
    ShareSecurity read;
    if (const NET_API_STATUS status = GetRecord(name, read.record); status != NERR_Success) return {status};
    PSECURITY_DESCRIPTOR descriptor = read.record->shi502_security_descriptor;
    read.hasDescriptor = IsValidSecurityDescriptor(descriptor) != FALSE;
    BOOL isPresent = FALSE;
    BOOL isDefaulted = FALSE;
    if (read.hasDescriptor &&
        GetSecurityDescriptorDacl(descriptor, &isPresent, &read.dacl, &isDefaulted) == FALSE)
        return {GetLastError()};
    read.entries.LoadFromDacl(read.dacl);
    share = std::move(read);
    return {};
}

Outcome GiveShareDescriptor(const std::string& name, const SHARE_INFO_502& record) {
    SECURITY_DESCRIPTOR descriptor{};
    if (InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION) == FALSE ||
        SetSecurityDescriptorDacl(&descriptor, TRUE, nullptr, FALSE) == FALSE)
        return {GetLastError()};
    return {SetDescriptor(name, record, &descriptor), Step::kAssignDescriptor};
}

Outcome WriteShareDacl(std::span<const std::string> names, PACL dacl) {
    for (const std::string& name : names)
        if (Outcome outcome = WriteDacl(name, dacl); !outcome.IsDone()) return outcome;
    return {};
}

}  // namespace permora
