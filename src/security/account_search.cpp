#include "security/account_search.h"

#include <array>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "platform/api/account_enumeration.h"
#include "platform/api/errors.h"
#include "platform/ascii.h"
#include "platform/library_function.h"
#include "platform/resources.h"
#include "platform/system_message.h"
#include "security/account_lookup.h"
#include "security/text_conversion.h"

namespace permora {
namespace {

constexpr int kFirstWellKnownType = WinWorldSid;  // the null SID before it is nobody
constexpr int kLastWellKnownType = WinAccountRasAndIasServersSid;

// Appends accounts in the order in which they are found, each once.
class Search {
  public:
    explicit Search(std::vector<AccountRecord>& accounts) : found(accounts) {}

    void Add(AccountRecord account) {
        if (!known.insert(account.GetSidText()).second) return;
        if (account.Lookup() && account.use != SidTypeUnknown) found.push_back(std::move(account));
    }

    void AddWellKnown(HMODULE library) {
        const auto create = FindFunction<decltype(&CreateWellKnownSid)>(library, "CreateWellKnownSid");
        if (create == nullptr) return;  // a system without the function has no well-known SIDs
        for (int type = kFirstWellKnownType; type <= kLastWellKnownType; ++type) {
            alignas(DWORD) std::array<BYTE, SECURITY_MAX_SID_SIZE> sid{};
            DWORD size = sid.size();
            AccountRecord account;
            // Types that need a domain's SID fail.
            if (create(static_cast<WELL_KNOWN_SID_TYPE>(type), nullptr, sid.data(), &size) != FALSE &&
                account.SetSid(sid.data()))
                Add(std::move(account));
        }
    }

    // Calls `enumerate` (it fills a buffer, a count and a resume handle, and returns a status) until it has
    // returned all names. `Info` is the level-0 structure, and `name` its one field.
    template <class Info, class Resume, class Enumerate>
    void AddEnumerated(Enumerate enumerate, LPWSTR Info::*name) {
        Resume resume = 0;
        do {
            BYTE* block = nullptr;
            DWORD count = 0;
            const DWORD status = enumerate(&block, &count, &resume);
            const UniqueNetworkBuffer<BYTE> buffer(block);
            if (status != NERR_Success) return;
            for (const Info& info :
                 std::span(reinterpret_cast<const Info*>(block), block != nullptr ? count : 0)) {
                AccountRecord account;
                if (LookupAccountByName(WideToAnsi(info.*name).c_str(), account) == ERROR_SUCCESS)
                    Add(std::move(account));
            }
        } while (resume != 0);
    }

  private:
    std::vector<AccountRecord>& found;
    std::unordered_set<std::string> known;  // the texts of their SIDs
};

bool IsPartOf(std::string_view text, std::string_view part) {
    return InLowerCase(text).find(InLowerCase(part)) != std::string::npos;
}

// The platform searches names and SIDs, but not types.
bool IsPartOfAType(const std::string& text) {
    for (int use = SidTypeUser; use <= SidTypeComputer; ++use)
        if (IsPartOf(AccountTypeText(static_cast<SID_NAME_USE>(use)), text)) return true;
    return false;
}

}  // namespace

Outcome FindLocalAccounts(std::vector<AccountRecord>& accounts) {
    const UniqueLibrary library(LoadLibraryA("Advapi32.dll"));
    if (!library) return {GetLastError(), Step::kLoadLibrary};
    Search search(accounts);
    search.AddWellKnown(library.get());
    DWORD total = 0;
    search.AddEnumerated<LOCALGROUP_INFO_0, DWORD_PTR>(
        [&](BYTE** block, DWORD* count, DWORD_PTR* resume) {
            return NetLocalGroupEnum(nullptr, 0, block, MAX_PREFERRED_LENGTH, count, &total, resume);
        },
        &LOCALGROUP_INFO_0::lgrpi0_name);
    search.AddEnumerated<USER_INFO_0, DWORD>(
        [&](BYTE** block, DWORD* count, DWORD* resume) {
            return NetUserEnum(nullptr, 0, 0, block, MAX_PREFERRED_LENGTH, count, &total, resume);
        },
        &USER_INFO_0::usri0_name);
    return {};
}

bool IsFoundBy(const std::string& text, const AccountRecord& account) {
    return IsPartOf(QualifiedAccountName(account.domain, account.name), text) ||
           IsPartOf(account.GetSidText(), text) || IsPartOf(AccountTypeText(account.use), text);
}

SearchOutcome FindDomainAccounts(const std::string& text, const std::vector<AccountRecord>& local,
                                 const std::atomic<bool>& isStopped,
                                 const std::function<void(std::vector<AccountRecord> accounts)>& take) {
    if (StateOfDomain().availability == DomainAvailability::kNone) return {};
    std::unordered_set<std::string> known;
    for (const AccountRecord& account : local)
        known.insert(account.GetSidText());
    const auto takeRows = [&](const std::vector<AccountRow>& rows) {
        std::vector<AccountRecord> accounts;
        for (const AccountRow& row : rows) {
            AccountRecord account{row.sid, row.use, row.name, row.domain};
            if (!known.contains(account.GetSidText()) && IsFoundBy(text, account))
                accounts.push_back(std::move(account));
        }
        if (!accounts.empty()) take(std::move(accounts));
    };
    return SearchAccounts(IsPartOfAType(text) ? std::string() : text, isStopped, takeRows);
}

std::string MissingAccountsText(const SearchOutcome& outcome) {
    if (outcome.error == ERROR_SUCCESS || outcome.error == ERROR_OPERATION_ABORTED) return {};
    return "The accounts of " + outcome.source + " are missing: " + SystemMessageLine(outcome.error);
}

const char* AccountTypeText(SID_NAME_USE use) {
    switch (use) {
        case SidTypeUser:
            return "User";
        case SidTypeGroup:
            return "Group";
        case SidTypeDomain:
            return "Domain";
        case SidTypeAlias:
            return "Alias";
        case SidTypeWellKnownGroup:
            return "Well-known account";
        case SidTypeDeletedAccount:
            return "Deleted";
        case SidTypeInvalid:
            return "Invalid";
        case SidTypeUnknown:
            return "Unknown";
        case SidTypeComputer:
            return "Computer";
        default:
            return "";
    }
}

}  // namespace permora
