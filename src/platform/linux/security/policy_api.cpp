// The machine's security policy, kept in its registry.
//
// Below HKEY_LOCAL_MACHINE\SECURITY\Policy\Accounts each account has a key, its SID's text, and in it the key
// "Privilgs" (spelled so) whose default value holds the account's privileges: where and how Windows keeps
// them. The value is a PRIVILEGE_SET of the SDK: count, control, and for each privilege its number and
// attributes.
#include "platform/api/policy.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/memory.h"
#include "platform/api/messages.h"
#include "platform/linux/accounts/account_directory.h"
#include "platform/linux/base/handle_table.h"
#include "platform/linux/base/wide_text.h"
#include "platform/linux/registry/registry_places.h"
#include "platform/linux/registry/registry_store.h"
#include "platform/linux/security/privileges.h"
#include "platform/nt/byte_io.h"
#include "platform/nt/sid.h"

namespace permora::host {
namespace {

constexpr const char* kAccountsKey = "HKEY_LOCAL_MACHINE\\SECURITY\\Policy\\Accounts";
constexpr std::size_t kSetHeader = 8;
constexpr std::size_t kSetEntry = sizeof(LUID_AND_ATTRIBUTES);

struct Policy : HandleObject {
    explicit Policy(ACCESS_MASK granted) : access(granted) {}
    const ACCESS_MASK access;
};

// --- Status codes.

struct StatusRow {
    DWORD error;
    std::uint32_t status;
};

// clang-format off
constexpr StatusRow kStatuses[] = {
    {ERROR_SUCCESS,           0x00000000},
    {ERROR_NO_MORE_ITEMS,     0x8000001A},
    {ERROR_INVALID_HANDLE,    0xC0000008},
    {ERROR_INVALID_PARAMETER, 0xC000000D},
    {ERROR_NOT_ENOUGH_MEMORY, 0xC0000017},
    {ERROR_ACCESS_DENIED,     0xC0000022},
    {ERROR_NO_SUCH_PRIVILEGE, 0xC0000060},
};
// clang-format on

// Statuses of this facility hold a system error code in their lower half.
constexpr std::uint32_t kErrorFacility = 0xC0070000;
constexpr std::uint32_t kFacilityMask = 0xFFFF0000;

NTSTATUS StatusOf(DWORD error) {
    for (const StatusRow& row : kStatuses)
        if (row.error == error) return static_cast<NTSTATUS>(row.status);
    return static_cast<NTSTATUS>(kErrorFacility | error);
}

// --- Accounts.

// Whether a stored set has the privilege; nothing when it is damaged.
std::optional<bool> HasPrivilege(std::span<const std::uint8_t> set, const LUID& id) {
    const std::optional<std::uint32_t> count = nt::ReadU32(set, 0);
    if (!count || set.size() < kSetHeader || (set.size() - kSetHeader) % kSetEntry != 0 ||
        (set.size() - kSetHeader) / kSetEntry != *count) {
        return std::nullopt;
    }
    for (std::size_t offset = kSetHeader; offset < set.size(); offset += kSetEntry) {
        if (nt::ReadU32(set, offset) == id.LowPart &&
            nt::ReadU32(set, offset + 4) == static_cast<std::uint32_t>(id.HighPart)) {
            return true;
        }
    }
    return false;
}

// The initial state of a system: the administrators.
const nt::Sid& DefaultHolder() {
    static const nt::Sid kAdministrators(5, {32, 544});
    return kAdministrators;
}

DWORD FindHolders(const LUID& privilege, std::vector<nt::Sid>& holders) {
    RegistryDocument document;
    const DWORD error = RegistryStore(MachineRegistryFolder(), RegistryAudience::kEveryone).Read(document);
    if (error != ERROR_SUCCESS) return error;
    if (!document.HasKey(kAccountsKey)) {
        holders = {DefaultHolder()};
        return ERROR_SUCCESS;
    }
    std::vector<nt::Sid> found;
    for (const std::string& account : document.SubkeysOf(kAccountsKey)) {
        const std::optional<nt::Sid> sid = nt::Sid::FromText(account);
        if (!sid) return ERROR_BADDB;
        RegistryValue value;
        const auto lookup =
            document.FindValue(std::string(kAccountsKey) + '\\' + account + "\\Privilgs", "", value);
        if (lookup == RegistryDocument::Lookup::kMissing) continue;
        const std::optional<bool> isHolder = HasPrivilege(value.data, privilege);
        if (lookup == RegistryDocument::Lookup::kDamaged || !isHolder) return ERROR_BADDB;
        if (*isHolder) found.push_back(*sid);
    }
    holders = std::move(found);
    return ERROR_SUCCESS;
}

// The structures, then the SIDs that they point to. Null when there is no memory.
LPVOID MakeBlock(const std::vector<nt::Sid>& holders) {
    const std::size_t structures = holders.size() * sizeof(LSA_ENUMERATION_INFORMATION);
    auto* block =
        static_cast<BYTE*>(LocalAlloc(LMEM_FIXED, structures + holders.size() * nt::Sid::kMaxBytes));
    if (block == nullptr) return nullptr;
    BYTE* place = block + structures;
    for (std::size_t i = 0; i < holders.size(); ++i, place += nt::Sid::kMaxBytes) {
        std::memcpy(place, holders[i].Bytes().data(), holders[i].ByteSize());
        const LSA_ENUMERATION_INFORMATION entry{place};
        std::memcpy(block + i * sizeof entry, &entry, sizeof entry);
    }
    return block;
}

std::optional<std::string> TextOf(PLSA_UNICODE_STRING text) {
    if (text == nullptr || text->Buffer == nullptr || text->Length % sizeof(WCHAR) != 0) return std::nullopt;
    return ToAnsi({text->Buffer, text->Length / sizeof(WCHAR)});
}

}  // namespace
}  // namespace permora::host

using permora::host::StatusOf;

NTSTATUS WINAPI LsaOpenPolicy(PLSA_UNICODE_STRING system, PLSA_OBJECT_ATTRIBUTES attributes,
                              ACCESS_MASK access, PLSA_HANDLE policy) {
    constexpr ACCESS_MASK kOffered = POLICY_VIEW_LOCAL_INFORMATION | POLICY_LOOKUP_NAMES;
    if (attributes == nullptr || policy == nullptr) return StatusOf(ERROR_INVALID_PARAMETER);
    if ((access & ~kOffered) != 0) return StatusOf(ERROR_ACCESS_DENIED);
    const bool namesOne = system != nullptr && system->Length != 0;
    if (namesOne && !permora::host::IsThisMachine(permora::host::TextOf(system).value_or("")))
        return StatusOf(ERROR_BAD_NETPATH);
    *policy = permora::host::OpenHandles().Add(std::make_shared<permora::host::Policy>(access));
    return StatusOf(ERROR_SUCCESS);
}

NTSTATUS WINAPI LsaClose(LSA_HANDLE policy) {
    return StatusOf(permora::host::OpenHandles().Remove<permora::host::Policy>(policy)
                        ? ERROR_SUCCESS
                        : ERROR_INVALID_HANDLE);
}

NTSTATUS WINAPI LsaEnumerateAccountsWithUserRight(LSA_HANDLE policy, PLSA_UNICODE_STRING right,
                                                  LPVOID* buffer, PULONG count) {
    constexpr ACCESS_MASK kNeeded = POLICY_VIEW_LOCAL_INFORMATION | POLICY_LOOKUP_NAMES;
    const auto open = permora::host::OpenHandles().Find<permora::host::Policy>(policy);
    if (!open) return StatusOf(ERROR_INVALID_HANDLE);
    if ((open->access & kNeeded) != kNeeded) return StatusOf(ERROR_ACCESS_DENIED);
    if (buffer == nullptr || count == nullptr) return StatusOf(ERROR_INVALID_PARAMETER);
    const permora::host::Privilege* privilege =
        permora::host::FindPrivilege(permora::host::TextOf(right).value_or(""));
    if (privilege == nullptr) return StatusOf(ERROR_NO_SUCH_PRIVILEGE);

    std::vector<permora::nt::Sid> holders;
    const DWORD error = permora::host::FindHolders(privilege->id, holders);
    if (error != ERROR_SUCCESS) return StatusOf(error);
    if (holders.empty()) return StatusOf(ERROR_NO_MORE_ITEMS);
    LPVOID block = permora::host::MakeBlock(holders);
    if (block == nullptr) return StatusOf(ERROR_NOT_ENOUGH_MEMORY);
    *buffer = block;
    *count = static_cast<ULONG>(holders.size());
    return StatusOf(ERROR_SUCCESS);
}

NTSTATUS WINAPI LsaFreeMemory(LPVOID buffer) {
    LocalFree(buffer);
    return StatusOf(ERROR_SUCCESS);
}

ULONG WINAPI LsaNtStatusToWinError(NTSTATUS status) {
    using namespace permora::host;
    const auto value = static_cast<std::uint32_t>(status);
    for (const StatusRow& row : kStatuses)
        if (row.status == value) return row.error;
    return (value & kFacilityMask) == kErrorFacility ? value & ~kFacilityMask : ERROR_MR_MID_NOT_FOUND;
}
