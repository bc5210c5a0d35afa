#include "security/account_search.h"

#include <span>
#include <string>
#include <unordered_set>
#include <utility>

#include "platform/api/account_enumeration.h"
#include "platform/api/errors.h"
#include "platform/library_function.h"
#include "security/account_lookup.h"
#include "security/message_boxes.h"
#include "security/text_conversion.h"

namespace permora {
namespace {

constexpr int kFirstWellKnownType = WinWorldSid;  // the null SID before it is nobody
constexpr int kLastWellKnownType = WinAccountRasAndIasServersSid;

// SIDs in the order in which they were found, each once.
class Sids {
  public:
    void Add(UniqueLocal<void> sid) {
        const std::string bytes(static_cast<const char*>(sid.get()), GetLengthSid(sid.get()));
        if (known.insert(bytes).second) found.push_back(std::move(sid));
    }
    std::vector<UniqueLocal<void>> Take() { return std::move(found); }

  private:
    std::vector<UniqueLocal<void>> found;
    std::unordered_set<std::string> known;  // their bytes
};

void AppendWellKnownSids(HWND owner, Sids& sids) {
    const UniqueLibrary library(LoadLibraryA("Advapi32.dll"));
    if (!library) ShowFatalLastErrorBox(owner);
    const auto create = FindFunction<decltype(&CreateWellKnownSid)>(library.get(), "CreateWellKnownSid");
    if (create == nullptr) return;  // a system without the function has no well-known SIDs
    for (int type = kFirstWellKnownType; type <= kLastWellKnownType; ++type) {
        DWORD size = SECURITY_MAX_SID_SIZE;
        UniqueLocal<void> sid(LocalAlloc(LMEM_FIXED, size));
        if (!sid) ShowFatalLastErrorBox(owner);
        // Types that need a domain's SID fail.
        if (create(static_cast<WELL_KNOWN_SID_TYPE>(type), nullptr, sid.get(), &size) != FALSE)
            sids.Add(std::move(sid));
    }
}

// Whether a look-up found its account; one that had no memory ends the process.
bool IsFound(HWND owner, DWORD error) {
    if (error == ERROR_NOT_ENOUGH_MEMORY) {
        SetLastError(error);
        ShowFatalLastErrorBox(owner);
    }
    return error == ERROR_SUCCESS;
}

void AppendByName(HWND owner, LPCWSTR name, Sids& sids) {
    UniqueLocal<void> sid;
    if (IsFound(owner, LookupSidByName(WideToAnsi(name).c_str(), sid))) sids.Add(std::move(sid));
}

// Calls `enumerate` (a buffer, a count and a resume handle to fill; a status) until it has handed out all
// names. `Info` is the level-0 structure, and `name` its one field.
template <class Info, class Resume, class Enumerate>
void AppendEnumerated(HWND owner, Enumerate enumerate, LPWSTR Info::*name, Sids& sids) {
    Resume resume = 0;
    do {
        BYTE* block = nullptr;
        DWORD count = 0;
        const DWORD status = enumerate(&block, &count, &resume);
        const UniqueNetworkBuffer<BYTE> buffer(block);
        if (status != NERR_Success) return;
        for (const Info& info : std::span(reinterpret_cast<const Info*>(block), block != nullptr ? count : 0))
            AppendByName(owner, info.*name, sids);
    } while (resume != 0);
}

std::vector<UniqueLocal<void>> FindLocalSids(HWND owner) {
    Sids sids;
    AppendWellKnownSids(owner, sids);
    DWORD total = 0;
    AppendEnumerated<LOCALGROUP_INFO_0, DWORD_PTR>(
        owner,
        [&](BYTE** block, DWORD* count, DWORD_PTR* resume) {
            return NetLocalGroupEnum(nullptr, 0, block, MAX_PREFERRED_LENGTH, count, &total, resume);
        },
        &LOCALGROUP_INFO_0::lgrpi0_name, sids);
    AppendEnumerated<USER_INFO_0, DWORD>(
        owner,
        [&](BYTE** block, DWORD* count, DWORD* resume) {
            return NetUserEnum(nullptr, 0, 0, block, MAX_PREFERRED_LENGTH, count, &total, resume);
        },
        &USER_INFO_0::usri0_name, sids);
    return sids.Take();
}

}  // namespace

std::vector<FoundAccount> FindLocalAccounts(HWND owner) {
    std::vector<FoundAccount> accounts;
    for (UniqueLocal<void>& sid : FindLocalSids(owner)) {
        UniqueLocal<char> name;
        UniqueLocal<char> domain;
        SID_NAME_USE use = SidTypeUnknown;
        if (!IsFound(owner, LookupNameBySid(sid.get(), name, domain, &use))) continue;
        accounts.push_back({std::move(sid), name.get(), domain.get(), use});
    }
    return accounts;
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
