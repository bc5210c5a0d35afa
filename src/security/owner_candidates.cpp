#include "security/owner_candidates.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

#include "platform/api/errors.h"
#include "platform/api/policy.h"
#include "platform/api/token.h"
#include "security/message_boxes.h"
#include "security/text_conversion.h"

namespace permora {
namespace {

constexpr std::string_view kTakeOwnership = "SeTakeOwnershipPrivilege";
constexpr DWORD kPrivilegeNameSize = 256;

using Candidates = std::vector<AccountRecord>;

void AddOnce(PSID sid, Candidates& candidates) {
    const bool isThere = std::any_of(
        candidates.begin(), candidates.end(),
        [sid](const AccountRecord& candidate) { return EqualSid(candidate.sid.get(), sid) != FALSE; });
    if (isThere) return;
    AccountRecord candidate;
    if (candidate.SetSid(sid)) candidates.push_back(std::move(candidate));
}

UniquePolicy OpenPolicy(HWND owner) {
    LSA_OBJECT_ATTRIBUTES attributes{};
    LSA_HANDLE policy = nullptr;
    const DWORD error = LsaNtStatusToWinError(
        LsaOpenPolicy(nullptr, &attributes, POLICY_VIEW_LOCAL_INFORMATION | POLICY_LOOKUP_NAMES, &policy));
    if (error == ERROR_SUCCESS) return UniquePolicy(policy);
    ShowErrorBox(owner, "Error: cannot open local security policy");
    ShowSystemErrorBox(owner, error);
    return nullptr;
}

// False after two error boxes.
bool AddFromPolicy(HWND owner, Candidates& candidates) {
    const UniquePolicy policy = OpenPolicy(owner);
    if (!policy) return false;
    std::basic_string<WCHAR> buffer;
    LSA_UNICODE_STRING right{};
    right.Buffer = AnsiToWide(kTakeOwnership, buffer);
    right.Length = static_cast<WORD>(kTakeOwnership.size() * sizeof(WCHAR));
    right.MaximumLength = right.Length;
    LPVOID block = nullptr;
    ULONG count = 0;
    const DWORD error =
        LsaNtStatusToWinError(LsaEnumerateAccountsWithUserRight(policy.get(), &right, &block, &count));
    if (error != ERROR_SUCCESS) {
        ShowErrorBox(owner, "Error: cannot enumerate users");
        ShowSystemErrorBox(owner, error);
        return false;
    }
    const UniqueLsaMemory<LSA_ENUMERATION_INFORMATION> accounts(
        static_cast<LSA_ENUMERATION_INFORMATION*>(block));
    for (const LSA_ENUMERATION_INFORMATION& account : std::span(accounts.get(), count))
        AddOnce(account.Sid, candidates);
    return true;
}

// Null when the token does not tell.
UniqueLocal<void> ReadToken(HANDLE token, TOKEN_INFORMATION_CLASS informationClass) {
    DWORD size = 0;
    if (GetTokenInformation(token, informationClass, nullptr, 0, &size) != FALSE ||
        GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
        return nullptr;
    }
    UniqueLocal<void> block(LocalAlloc(LMEM_FIXED, size));
    if (!block || GetTokenInformation(token, informationClass, block.get(), size, &size) == FALSE)
        return nullptr;
    return block;
}

bool IsTakeOwnership(LUID privilege) {
    std::array<char, kPrivilegeNameSize> name{};
    DWORD size = name.size();
    return LookupPrivilegeNameA(nullptr, &privilege, name.data(), &size) != FALSE &&
           name.data() == kTakeOwnership;
}

bool HoldsTakeOwnership(HANDLE token) {
    const UniqueLocal<void> block = ReadToken(token, TokenPrivileges);
    if (!block) return false;
    const auto* held = static_cast<const TOKEN_PRIVILEGES*>(block.get());
    const std::span privileges(&held->Privileges[0], held->PrivilegeCount);
    return std::any_of(privileges.begin(), privileges.end(),
                       [](const LUID_AND_ATTRIBUTES& privilege) { return IsTakeOwnership(privilege.Luid); });
}

void AddFromToken(HWND owner, Candidates& candidates) {
    const UniqueHandle token = OpenOwnToken();
    if (!token) return;
    if (!EnableTakeOwnership(token.get())) ShowLastErrorBox(owner);
    if (!HoldsTakeOwnership(token.get())) return;
    if (const UniqueLocal<void> user = ReadToken(token.get(), TokenUser))
        AddOnce(static_cast<const TOKEN_USER*>(user.get())->User.Sid, candidates);
}

}  // namespace

UniqueHandle OpenOwnToken() {
    HANDLE token = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY, &token) == FALSE)
        return nullptr;
    return UniqueHandle(token);
}

bool EnableTakeOwnership(HANDLE token) {
    TOKEN_PRIVILEGES enabled{1, {{{}, SE_PRIVILEGE_ENABLED}}};
    return LookupPrivilegeValueA(nullptr, kTakeOwnership.data(), &enabled.Privileges[0].Luid) != FALSE &&
           AdjustTokenPrivileges(token, FALSE, &enabled, sizeof enabled, nullptr, nullptr) != FALSE;
}

std::optional<std::vector<AccountRecord>> FindOwnerCandidates(HWND owner) {
    Candidates candidates;
    if (!AddFromPolicy(owner, candidates)) return std::nullopt;
    AddFromToken(owner, candidates);
    return candidates;
}

}  // namespace permora
