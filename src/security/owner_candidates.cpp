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
#include "platform/raw_security.h"
#include "security/text_conversion.h"

namespace permora {
namespace {

constexpr std::string_view kTakeOwnership = "SeTakeOwnershipPrivilege";
constexpr std::string_view kRestore = "SeRestorePrivilege";
constexpr DWORD kPrivilegeNameSize = 256;

using Candidates = std::vector<AccountRecord>;

void AddOnce(PSID sid, Candidates& candidates) {
    AccountRecord added;
    const bool isNew = added.SetSid(sid) && std::ranges::none_of(candidates, [&](const auto& candidate) {
                           return IsSameAccount(candidate, added);
                       });
    if (isNew) candidates.push_back(std::move(added));
}

// The policy's accounts. A failure has two outcomes: the step, and the system's text.
Outcomes AddFromPolicy(Candidates& candidates) {
    LSA_OBJECT_ATTRIBUTES attributes{};
    LSA_HANDLE opened = nullptr;
    DWORD error = LsaNtStatusToWinError(
        LsaOpenPolicy(nullptr, &attributes, POLICY_VIEW_LOCAL_INFORMATION | POLICY_LOOKUP_NAMES, &opened));
    if (error != ERROR_SUCCESS) return {{error, Step::kOpenPolicy}, {error}};
    const UniquePolicy policy(opened);
    std::basic_string<WCHAR> buffer;
    LSA_UNICODE_STRING right{};
    right.Buffer = AnsiToWide(kTakeOwnership, buffer);
    right.Length = static_cast<WORD>(kTakeOwnership.size() * sizeof(WCHAR));
    right.MaximumLength = right.Length;
    LPVOID block = nullptr;
    ULONG count = 0;
    error = LsaNtStatusToWinError(LsaEnumerateAccountsWithUserRight(policy.get(), &right, &block, &count));
    if (error != ERROR_SUCCESS) return {{error, Step::kEnumerateUsers}, {error}};
    const UniqueLsaMemory<LSA_ENUMERATION_INFORMATION> accounts(
        static_cast<LSA_ENUMERATION_INFORMATION*>(block));
    for (const LSA_ENUMERATION_INFORMATION& account : std::span(accounts.get(), count))
        AddOnce(account.Sid, candidates);
    return {};
}

// Empty when the token cannot be read.
std::vector<BYTE> ReadToken(HANDLE token, TOKEN_INFORMATION_CLASS informationClass) {
    DWORD size = 0;
    if (GetTokenInformation(token, informationClass, nullptr, 0, &size) != FALSE ||
        GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
        return {};
    }
    std::vector<BYTE> block(size);
    if (GetTokenInformation(token, informationClass, block.data(), size, &size) == FALSE) block.clear();
    return block;
}

bool IsCalled(LUID privilege, std::string_view wanted) {
    std::array<char, kPrivilegeNameSize> name{};
    DWORD size = name.size();
    return LookupPrivilegeNameA(nullptr, &privilege, name.data(), &size) != FALSE && name.data() == wanted;
}

bool Holds(HANDLE token, std::string_view wanted) {
    const std::vector<BYTE> block = ReadToken(token, TokenPrivileges);
    if (block.empty()) return false;
    const auto* held = reinterpret_cast<const TOKEN_PRIVILEGES*>(block.data());
    const std::span privileges(&held->Privileges[0], held->PrivilegeCount);
    return std::any_of(privileges.begin(), privileges.end(), [&](const LUID_AND_ATTRIBUTES& privilege) {
        return IsCalled(privilege.Luid, wanted);
    });
}

}  // namespace

UniqueHandle OpenOwnToken() {
    HANDLE token = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY, &token) == FALSE)
        return nullptr;
    return UniqueHandle(token);
}

std::optional<nt::Sid> OwnAccount() {
    const UniqueHandle token = OpenOwnToken();
    const std::vector<BYTE> user = token ? ReadToken(token.get(), TokenUser) : std::vector<BYTE>();
    if (user.empty()) return std::nullopt;
    return SidOf(reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid);
}

DWORD EnableTakeOwnership(HANDLE token) {
    TOKEN_PRIVILEGES enabled{1, {{{}, SE_PRIVILEGE_ENABLED}}};
    const bool isDone =
        LookupPrivilegeValueA(nullptr, kTakeOwnership.data(), &enabled.Privileges[0].Luid) != FALSE &&
        AdjustTokenPrivileges(token, FALSE, &enabled, sizeof enabled, nullptr, nullptr) != FALSE;
    return isDone ? ERROR_SUCCESS : GetLastError();
}

OwnerCandidates FindOwnerCandidates() {
    OwnerCandidates found;
    Candidates candidates;
    found.failures = AddFromPolicy(candidates);
    if (!found.failures.empty()) return found;
    if (const UniqueHandle token = OpenOwnToken()) {
        if (const DWORD error = EnableTakeOwnership(token.get()); error != ERROR_SUCCESS)
            found.failures.push_back({error});
        const std::vector<BYTE> user =
            Holds(token.get(), kTakeOwnership) ? ReadToken(token.get(), TokenUser) : std::vector<BYTE>();
        if (!user.empty()) AddOnce(reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid, candidates);
        found.isAnyoneAllowed = Holds(token.get(), kRestore);
    }
    found.accounts = std::move(candidates);
    return found;
}

}  // namespace permora
