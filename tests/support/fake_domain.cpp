#include "tests/support/fake_domain.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>
#include <thread>

#include "platform/api/effective_rights.h"
#include "platform/found_rows.h"
#include "platform/nt/granted_rights.h"
#include "platform/raw_security.h"

namespace permora::test {
namespace {

std::atomic<FakeDomain*> theDomain = nullptr;
std::atomic<int> runningCalls = 0;

// A call of the program, on any thread. Made before the call looks for the domain, which waits for its end.
struct RunningCall {
    RunningCall() { ++runningCalls; }
    ~RunningCall() { --runningCalls; }
    RunningCall(const RunningCall&) = delete;
    RunningCall& operator=(const RunningCall&) = delete;
};

nt::Sid SidOfText(const std::string& text) {
    return nt::Sid::FromText(text).value_or(nt::Sid());
}

}  // namespace

FakeDomain::FakeDomain() {
    theDomain = this;
}

FakeDomain::~FakeDomain() {
    areAnswersHeld = false;
    theDomain = nullptr;
    while (runningCalls > 0)
        std::this_thread::yield();
}

std::string FakeDomain::SidText(unsigned relativeId) {
    return "S-1-5-21-111-222-333-" + std::to_string(relativeId);
}

void FakeDomain::Add(unsigned relativeId, const std::string& name, SID_NAME_USE use) {
    const std::lock_guard lock(mutex);
    rows.push_back({SidOfText(SidText(relativeId)), use, name, "EXAMPLE", {}});
}

void FakeDomain::HoldNames(bool held) {
    const std::lock_guard lock(mutex);
    areNamesHeld = held;
    ++news;
}

void FakeDomain::SetState(DomainAvailability availability) {
    const std::lock_guard lock(mutex);
    state.availability = availability;
    ++news;
}

void FakeDomain::SetGroups(DWORD error, const std::vector<unsigned>& relativeIds, GroupsOrigin origin) {
    const std::lock_guard lock(mutex);
    groupsError = error;
    groups = {{}, origin};
    for (const unsigned id : relativeIds)
        groups.sids.push_back(SidOfText(SidText(id)));
}

void FakeDomain::WaitForAnswers(const std::atomic<bool>& isStopped) const {
    while (areAnswersHeld && !isStopped)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
}

// What the functions below answer.
struct FakeAnswers {
    static std::optional<NameAnswer> Name(const nt::Sid& sid, AccountName& account) {
        FakeDomain* const domain = theDomain;
        if (domain == nullptr || !sid.ToText().starts_with("S-1-5-21-111-222-333-")) return std::nullopt;
        const std::lock_guard lock(domain->mutex);
        account = {};
        if (domain->areNamesHeld) return NameAnswer::kNotYet;
        const auto row = std::ranges::find(domain->rows, sid, &AccountRow::sid);
        if (row == domain->rows.end()) return NameAnswer::kNobody;
        account = {row->name, row->domain, row->use};
        return NameAnswer::kKnown;
    }

    static DWORD FindSid(std::string_view name, nt::Sid& sid) {
        FakeDomain* const domain = theDomain;
        if (domain == nullptr) return ERROR_NONE_MAPPED;
        if (domain->lookupError != ERROR_SUCCESS) return domain->lookupError;
        if (name.starts_with("EXAMPLE\\")) name.remove_prefix(std::strlen("EXAMPLE\\"));
        const std::lock_guard lock(domain->mutex);
        const auto row = std::ranges::find(domain->rows, name, &AccountRow::name);
        if (row == domain->rows.end()) return ERROR_NONE_MAPPED;
        sid = row->sid;
        return ERROR_SUCCESS;
    }

    static SearchOutcome Search(FakeDomain& domain, const std::string& filter,
                                const std::atomic<bool>& isStopped, const FoundRows::Take& take) {
        ++domain.searches;
        FoundRows found(filter, take);
        std::vector<AccountRow> rows;
        {
            const std::lock_guard lock(domain.mutex);
            rows = domain.rows;
        }
        for (std::size_t i = 0; i < rows.size(); ++i) {
            if (i + 1 == rows.size()) {
                found.HandOut();
                domain.WaitForAnswers(isStopped);
            }
            if (isStopped) break;
            found.Add(rows[i]);
        }
        SearchOutcome outcome{domain.searchError, "EXAMPLE"};
        if (isStopped)
            outcome = {ERROR_OPERATION_ABORTED, {}};
        else
            found.HandOut();
        --domain.searches;
        return outcome;
    }

    static DWORD Groups(FakeDomain& domain, GroupsRequest request, AccountGroups& groups) {
        const std::atomic<bool> isNeverStopped = false;
        if (request == GroupsRequest::kExact) domain.WaitForAnswers(isNeverStopped);
        const std::lock_guard lock(domain.mutex);
        if (domain.groupsError == ERROR_SUCCESS) groups = domain.groups;
        return domain.groupsError;
    }

    static DomainState State() {
        FakeDomain* const domain = theDomain;
        if (domain == nullptr) return {};
        const std::lock_guard lock(domain->mutex);
        return domain->state;
    }

    static std::uint64_t News() {
        FakeDomain* const domain = theDomain;
        return domain != nullptr ? domain->news.load() : 0;
    }
};

}  // namespace permora::test

// The linker leads the program's calls to these (--wrap); the names are those that the compiler makes.
namespace permora {

#define WRAPPED(name) asm("__wrap_" name)
#define REAL(name) asm("__real_" name)
#define SEARCH_ACCOUNTS                                                                                    \
    "_ZN7permora14SearchAccountsERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEERKSt6atomicIbERKSt" \
    "8functionIFvSt6vectorINS_10AccountRowESaISE_EEEE"
#define FIND_ACCOUNT_NAME                                                                        \
    "_ZN7permora15FindAccountNameERKNS_2nt3SidENSt6chrono8durationIlSt5ratioILl1ELl1000EEEERNS_" \
    "11AccountNameE"
#define FIND_ACCOUNT_GROUPS \
    "_ZN7permora17FindAccountGroupsERKNS_2nt3SidENS_13GroupsRequestERNS_13AccountGroupsE"

using Take = std::function<void(std::vector<AccountRow> rows)>;

SearchOutcome RealSearch(const std::string& filter, const std::atomic<bool>& isStopped, const Take& take)
    REAL(SEARCH_ACCOUNTS);
SearchOutcome WrappedSearch(const std::string& filter, const std::atomic<bool>& isStopped, const Take& take)
    WRAPPED(SEARCH_ACCOUNTS);
SearchOutcome WrappedSearch(const std::string& filter, const std::atomic<bool>& isStopped, const Take& take) {
    const test::RunningCall call;
    const SearchOutcome outcome = RealSearch(filter, isStopped, take);
    test::FakeDomain* const domain = test::theDomain;
    if (outcome.error != ERROR_SUCCESS || domain == nullptr) return outcome;
    return test::FakeAnswers::Search(*domain, filter, isStopped, take);
}

NameAnswer RealName(const nt::Sid& sid, std::chrono::milliseconds wait, AccountName& account)
    REAL(FIND_ACCOUNT_NAME);
NameAnswer WrappedName(const nt::Sid& sid, std::chrono::milliseconds wait, AccountName& account)
    WRAPPED(FIND_ACCOUNT_NAME);
NameAnswer WrappedName(const nt::Sid& sid, std::chrono::milliseconds wait, AccountName& account) {
    const test::RunningCall call;
    const std::optional<NameAnswer> answer = test::FakeAnswers::Name(sid, account);
    return answer ? *answer : RealName(sid, wait, account);
}

DWORD RealGroups(const nt::Sid& account, GroupsRequest request, AccountGroups& groups)
    REAL(FIND_ACCOUNT_GROUPS);
DWORD WrappedGroups(const nt::Sid& account, GroupsRequest request, AccountGroups& groups)
    WRAPPED(FIND_ACCOUNT_GROUPS);
DWORD WrappedGroups(const nt::Sid& account, GroupsRequest request, AccountGroups& groups) {
    const test::RunningCall call;
    test::FakeDomain* const domain = test::theDomain;
    AccountName name;
    if (domain == nullptr || !test::FakeAnswers::Name(account, name))
        return RealGroups(account, request, groups);
    return test::FakeAnswers::Groups(*domain, request, groups);
}

DomainState WrappedState() WRAPPED("_ZN7permora13StateOfDomainEv");
DomainState WrappedState() {
    return test::FakeAnswers::State();
}

std::uint64_t WrappedNews() WRAPPED("_ZN7permora11AccountNewsEv");
std::uint64_t WrappedNews() {
    return test::FakeAnswers::News();
}

bool WrappedMayAsk() WRAPPED("_ZN7permora20MayAskForExactGroupsEv");
bool WrappedMayAsk() {
    const test::FakeDomain* const domain = test::theDomain;
    return domain != nullptr && domain->mayAskExactly;
}

}  // namespace permora

// NOLINTBEGIN(bugprone-reserved-identifier): the linker demands these names
extern "C" {

DWORD __real_GetEffectiveRightsFromAclA(PACL acl, PTRUSTEE_A trustee, PACCESS_MASK rights);
DWORD __wrap_GetEffectiveRightsFromAclA(PACL acl, PTRUSTEE_A trustee, PACCESS_MASK rights) {
    permora::test::FakeDomain* const domain = permora::test::theDomain;
    const std::optional<permora::nt::Sid> account = permora::SidOf(trustee->ptstrName);
    permora::AccountName name;
    if (domain == nullptr || !account || !permora::test::FakeAnswers::Name(*account, name))
        return __real_GetEffectiveRightsFromAclA(acl, trustee, rights);
    permora::AccountGroups groups;
    const DWORD error = permora::test::FakeAnswers::Groups(*domain, permora::GroupsRequest::kUsual, groups);
    if (error == ERROR_SUCCESS) *rights = permora::nt::GrantedRights(*permora::AclOf(acl), groups.sids);
    return error;
}

BOOL __real_LookupAccountNameA(LPCSTR system, LPCSTR name, PSID sid, LPDWORD sidSize, LPSTR domain,
                               LPDWORD domainSize, PSID_NAME_USE use);
BOOL __wrap_LookupAccountNameA(LPCSTR system, LPCSTR name, PSID sid, LPDWORD sidSize, LPSTR domain,
                               LPDWORD domainSize, PSID_NAME_USE use) {
    const BOOL isFound = __real_LookupAccountNameA(system, name, sid, sidSize, domain, domainSize, use);
    if (isFound != FALSE || GetLastError() != ERROR_NONE_MAPPED) return isFound;
    permora::nt::Sid found;
    const DWORD error = permora::test::FakeAnswers::FindSid(name, found);
    if (error != ERROR_SUCCESS) {
        SetLastError(error);
        return FALSE;
    }
    PSID raw = permora::RawSid(found);
    std::memcpy(sid, raw, GetLengthSid(raw));
    return TRUE;
}

BOOL __real_LookupAccountSidA(LPCSTR system, PSID sid, LPSTR name, LPDWORD nameSize, LPSTR domain,
                              LPDWORD domainSize, PSID_NAME_USE use);
BOOL __wrap_LookupAccountSidA(LPCSTR system, PSID sid, LPSTR name, LPDWORD nameSize, LPSTR domain,
                              LPDWORD domainSize, PSID_NAME_USE use) {
    permora::AccountName found;
    const std::optional<permora::nt::Sid> value = permora::SidOf(sid);
    const auto answer =
        value ? permora::test::FakeAnswers::Name(*value, found) : std::optional<permora::NameAnswer>();
    if (!answer) return __real_LookupAccountSidA(system, sid, name, nameSize, domain, domainSize, use);
    if (*answer != permora::NameAnswer::kKnown) {
        SetLastError(*answer == permora::NameAnswer::kNobody ? ERROR_NONE_MAPPED : permora::kNameNotYet);
        return FALSE;
    }
    found.name.copy(name, *nameSize - 1);
    name[found.name.size()] = '\0';
    found.domain.copy(domain, *domainSize - 1);
    domain[found.domain.size()] = '\0';
    *use = found.use;
    return TRUE;
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
