#include "shares/share_security.h"

#include <string>
#include <utility>

#include "platform/api/errors.h"
#include "security/dacl_builder.h"
#include "security/message_boxes.h"
#include "security/object_security.h"
#include "security/text_conversion.h"

namespace permora {
namespace {

constexpr DWORD kLevel = 502;  // with the descriptor

using ShareRecord = UniqueNetworkBuffer<SHARE_INFO_502>;

NET_API_STATUS GetRecord(LPCSTR name, ShareRecord& record) {
    std::basic_string<WCHAR> wideName;
    LPBYTE block = nullptr;
    const NET_API_STATUS status = NetShareGetInfo(nullptr, AnsiToWide(name, wideName), kLevel, &block);
    if (status == NERR_Success) record.reset(reinterpret_cast<SHARE_INFO_502*>(block));
    return status;
}

// Everything but the descriptor goes back as it was read.
NET_API_STATUS SetDescriptor(LPCSTR name, const SHARE_INFO_502& read, PSECURITY_DESCRIPTOR descriptor) {
    std::basic_string<WCHAR> wideName;
    SHARE_INFO_502 record = read;
    record.shi502_security_descriptor = descriptor;
    return NetShareSetInfo(nullptr, AnsiToWide(name, wideName), kLevel, reinterpret_cast<LPBYTE>(&record),
                           nullptr);
}

bool WriteDacl(HWND owner, LPCSTR name, PACL dacl) {
    ShareRecord record;
    if (const NET_API_STATUS status = GetRecord(name, record); status != NERR_Success) {
        ShowSystemErrorBox(owner, status);
        return false;
    }
    PSECURITY_DESCRIPTOR absolute = nullptr;
    UniqueHeap heap;
    if (!MakeAbsoluteDescriptor(record->shi502_security_descriptor, absolute, heap)) {
        ShowErrorBox(owner, "Error: cannot convert security descriptor to absolute format");
        return false;
    }
    if (SetSecurityDescriptorDacl(absolute, TRUE, dacl, FALSE) == FALSE) {
        ShowLastErrorBox(owner);
        return false;
    }
    const NET_API_STATUS status = SetDescriptor(name, *record, absolute);
    if (status != NERR_Success) ShowSystemErrorBox(owner, status);
    return status == NERR_Success;
}

}  // namespace

bool LoadShareDacl(HWND owner, LPCSTR name, ShareSecurity& share) {
    ShareSecurity read;
    if (const NET_API_STATUS status = GetRecord(name, read.record); status != NERR_Success) {
        ShowSystemErrorBox(owner, status);
        return false;
    }
    PSECURITY_DESCRIPTOR descriptor = read.record->shi502_security_descriptor;
    read.hasDescriptor = IsValidSecurityDescriptor(descriptor) != FALSE;
    BOOL isPresent = FALSE;
    BOOL isDefaulted = FALSE;
    if (read.hasDescriptor &&
        GetSecurityDescriptorDacl(descriptor, &isPresent, &read.dacl, &isDefaulted) == FALSE) {
        ShowLastErrorBox(owner);
        return false;
    }
    read.entries.LoadFromDacl(read.dacl);
    share = std::move(read);
    return true;
}

bool GiveShareDescriptor(HWND owner, LPCSTR name, const SHARE_INFO_502& record) {
    const UniqueLocal<void> descriptor(LocalAlloc(LPTR, sizeof(SECURITY_DESCRIPTOR)));
    if (!descriptor ||
        InitializeSecurityDescriptor(descriptor.get(), SECURITY_DESCRIPTOR_REVISION) == FALSE ||
        SetSecurityDescriptorDacl(descriptor.get(), TRUE, nullptr, FALSE) == FALSE) {
        ShowLastErrorBox(owner);
        return false;
    }
    const NET_API_STATUS status = SetDescriptor(name, record, descriptor.get());
    if (status != NERR_Success)
        ShowErrorWithSystemText(owner, "Cannot assign new security descriptor", status);
    return status == NERR_Success;
}

bool ReadShareDacl(HWND owner, LPCSTR name, ShareSecurity& share) {
    share = {};
    ShareSecurity read;
    if (!LoadShareDacl(owner, name, read)) return false;
    if (!read.hasDescriptor) {
        ShowInfoBox(owner, "There is no security descriptor associated with object.");
        if (!GiveShareDescriptor(owner, name, *read.record) || !LoadShareDacl(owner, name, read))
            return false;
    }
    if (!read.hasDescriptor) {
        ShowInfoBox(owner, "The security descriptor can not be associated with object.");
        return false;
    }
    if (read.dacl == nullptr) ShowInfoBox(owner, kNullListText);
    share = std::move(read);
    return true;
}

bool WriteShareDacl(HWND owner, std::span<const char* const> names, PACL dacl) {
    for (const char* name : names)
        if (!WriteDacl(owner, name, dacl)) return false;
    return true;
}

}  // namespace permora
