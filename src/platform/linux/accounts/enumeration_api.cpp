// Enumerating accounts and making well-known SIDs, under the system's names.
#include "platform/api/account_enumeration.h"

#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/memory.h"
#include "platform/linux/accounts/account_directory.h"
#include "platform/linux/accounts/account_list.h"
#include "platform/linux/base/failure.h"
#include "platform/linux/base/wide_text.h"
#include "platform/nt/well_known_sid_types.h"

namespace {

using permora::host::AccountKind;
using permora::host::Fail;
using permora::nt::Sid;

// The structures of level 0 all consist of one pointer to a name. A block begins with them; their texts
// follow.
static_assert(sizeof(LOCALGROUP_INFO_0) == sizeof(LPWSTR) && sizeof(USER_INFO_0) == sizeof(LPWSTR));

std::size_t BytesOf(const std::u16string& name) {
    return (name.size() + 1) * sizeof(WCHAR);
}

// Null when there is no memory.
LPBYTE MakeBlock(const std::vector<std::u16string>& names) {
    std::size_t bytes = names.size() * sizeof(LPWSTR);
    for (const std::u16string& name : names)
        bytes += BytesOf(name);
    auto* block = static_cast<LPBYTE>(LocalAlloc(LPTR, bytes));
    if (block == nullptr) return nullptr;
    LPBYTE pointer = block;
    LPBYTE text = block + names.size() * sizeof(LPWSTR);
    for (const std::u16string& name : names) {
        std::memcpy(pointer, &text, sizeof text);
        std::memcpy(text, name.c_str(), BytesOf(name));
        pointer += sizeof text;
        text += BytesOf(name);
    }
    return block;
}

// The part that both enumerations share. `Resume` is the type of their handle.
template <class Resume>
NET_API_STATUS Enumerate(AccountKind kind, LPCWSTR server, DWORD level, LPBYTE* buffer, LPDWORD read,
                         LPDWORD total, Resume* resume) {
    if (level != 0) return ERROR_INVALID_LEVEL;
    if (buffer == nullptr || read == nullptr || total == nullptr) return ERROR_INVALID_PARAMETER;
    if (!permora::host::IsThisServer(server)) return ERROR_BAD_NETPATH;
    std::vector<std::string> found;
    if (const DWORD error = permora::host::ListAccountNames(kind, found); error != ERROR_SUCCESS)
        return error;
    std::vector<std::u16string> names;
    names.reserve(found.size());
    for (const std::string& name : found)
        names.push_back(permora::host::ToWide(name));

    LPBYTE block = MakeBlock(names);
    if (block == nullptr) return ERROR_NOT_ENOUGH_MEMORY;
    *buffer = block;
    *read = *total = static_cast<DWORD>(names.size());
    if (resume != nullptr) *resume = 0;
    return NERR_Success;
}

}  // namespace

NET_API_STATUS WINAPI NetLocalGroupEnum(LPCWSTR server, DWORD level, LPBYTE* buffer,
                                        DWORD /*preferredLength*/, LPDWORD read, LPDWORD total,
                                        PDWORD_PTR resume) {
    return Enumerate(AccountKind::kGroup, server, level, buffer, read, total, resume);
}

NET_API_STATUS WINAPI NetUserEnum(LPCWSTR server, DWORD level, DWORD filter, LPBYTE* buffer,
                                  DWORD /*preferredLength*/, LPDWORD read, LPDWORD total, LPDWORD resume) {
    if (filter != 0) return ERROR_INVALID_PARAMETER;
    return Enumerate(AccountKind::kUser, server, level, buffer, read, total, resume);
}

BOOL WINAPI CreateWellKnownSid(WELL_KNOWN_SID_TYPE type, PSID domain, PSID sid, DWORD* size) {
    if (size == nullptr) return Fail(ERROR_INVALID_PARAMETER);
    std::optional<Sid> domainSid;
    if (domain != nullptr) {
        if (!IsValidSid(domain)) return Fail(ERROR_INVALID_PARAMETER);
        domainSid = Sid::FromBytes({static_cast<const BYTE*>(domain), GetLengthSid(domain)});
    }
    const auto value = permora::nt::SidOfWellKnownType(type, domainSid ? &*domainSid : nullptr);
    if (!value) return Fail(ERROR_INVALID_PARAMETER);
    const auto needed = static_cast<DWORD>(value->ByteSize());
    const bool fits = sid != nullptr && *size >= needed;
    *size = needed;
    if (!fits) return Fail(ERROR_INSUFFICIENT_BUFFER);
    std::memcpy(sid, value->Bytes().data(), needed);
    return TRUE;
}
