// Searching a domain. winbind's lists are complete, but hold bare names in small letters, without SIDs and
// without computers, and take seconds. Numbers are answered with names and kinds by the thousand at once, so
// a walk over the relative ids gives nearly everything first; the lists then give what stands apart, each
// asked for by its name.
#include <algorithm>
#include <array>
#include <unordered_set>

#include "platform/ascii.h"
#include "platform/linux/accounts/domain_accounts.h"

namespace permora::host {

namespace {

constexpr std::uint32_t kFirstAsked = 500;
constexpr std::uint32_t kIdsAtOnce = 1500;
constexpr int kEmptyPiecesAtEnd = 3;
constexpr std::size_t kNamesAtOnce = 50;
constexpr std::chrono::seconds kPieceTime{10};
// Of all names of a large domain.
constexpr std::chrono::seconds kListTime{120};

class DomainSearch {
  public:
    DomainSearch(DomainLink& domainLink, const WinbindDomain& searched, const std::atomic<bool>& stopFlag,
                 FoundRows& found)
        : link(domainLink), domain(searched), isStopped(stopFlag), rows(found) {}

    DWORD Run() {
        DWORD error = WalkIds();
        std::vector<std::string> names;
        for (const AccountKind kind : {AccountKind::kUser, AccountKind::kGroup})
            if (error == ERROR_SUCCESS) error = List(kind, names);
        // winbind also succeeds with nobody while the controller is away.
        if (error == ERROR_SUCCESS && (names.empty() || seen.empty())) error = kDomainOffline;
        if (error == ERROR_SUCCESS) error = AddOthers(names);
        return error == ERROR_SUCCESS ? CheckDomain() : error;
    }

  private:
    template <class Value>
    DWORD Ask(std::chrono::milliseconds limit, Value& value,
              std::function<WinbindAnswer(Winbind&, Value&)> call) {
        if (isStopped) return ERROR_OPERATION_ABORTED;
        Asked<Value> asked =
            link.Ask<Value>({SteadyClock::now() + limit, &isStopped}, limit, std::move(call));
        if (isStopped) return ERROR_OPERATION_ABORTED;
        if (asked.answer != WinbindAnswer::kFound) return kDomainOffline;
        value = std::move(asked.value);
        return ERROR_SUCCESS;
    }

    void Add(const nt::Sid& sid, const WinbindName& name) {
        seen.insert(InLowerCase(name.name));
        rows.Add({sid, name.Use(), name.name, domain.name, {}});
    }

    DWORD WalkIds() {
        int emptyPieces = 0;
        for (std::uint32_t first = kFirstAsked; emptyPieces < kEmptyPiecesAtEnd; first += kIdsAtOnce) {
            std::vector<WinbindName> names;
            const DWORD error = Ask<std::vector<WinbindName>>(
                kPieceTime, names,
                [sid = domain.sid, first](Winbind& winbind, std::vector<WinbindName>& found) {
                    std::vector<std::uint32_t> ids(kIdsAtOnce);
                    for (std::uint32_t i = 0; i < kIdsAtOnce; ++i)
                        ids[i] = first + i;
                    return winbind.FindNames(sid, ids, found);
                });
            if (error != ERROR_SUCCESS) return error;
            ++emptyPieces;
            for (std::uint32_t i = 0; i < names.size(); ++i) {
                const std::optional<nt::Sid> sid = domain.sid.Append(first + i);
                if (names[i].name.empty() || !sid) continue;
                Add(*sid, names[i]);
                emptyPieces = 0;
            }
            rows.HandOut();
        }
        return ERROR_SUCCESS;
    }

    DWORD List(AccountKind kind, std::vector<std::string>& names) {
        std::vector<std::string> found;
        const DWORD error = Ask<std::vector<std::string>>(
            kListTime, found, [kind, name = domain.name](Winbind& winbind, std::vector<std::string>& listed) {
                return winbind.ListNames(kind, name, listed);
            });
        std::ranges::move(found, std::back_inserter(names));
        return error;
    }

    struct Found {
        nt::Sid sid;
        WinbindName name;
    };

    DWORD AddOthers(std::vector<std::string>& names) {
        std::erase_if(names, [this](const std::string& name) { return seen.contains(InLowerCase(name)); });
        for (std::size_t first = 0; first < names.size(); first += kNamesAtOnce) {
            const auto begin = names.begin() + static_cast<std::ptrdiff_t>(first);
            const std::vector<std::string> piece(
                begin, begin + static_cast<std::ptrdiff_t>(std::min(kNamesAtOnce, names.size() - first)));
            std::vector<Found> found;
            const DWORD error = Ask<std::vector<Found>>(
                kPieceTime, found,
                [piece, name = domain.name](Winbind& winbind, std::vector<Found>& accounts) {
                    return FindAll(winbind, name, piece, accounts);
                });
            if (error != ERROR_SUCCESS) return error;
            for (const Found& account : found)
                Add(account.sid, account.name);
            rows.HandOut();
        }
        return ERROR_SUCCESS;
    }

    // Accounts that vanish meanwhile are no failure.
    static WinbindAnswer FindAll(Winbind& winbind, const std::string& domain,
                                 const std::vector<std::string>& names, std::vector<Found>& accounts) {
        for (const std::string& name : names) {
            Found account;
            WinbindAnswer answer = winbind.FindSid(domain, name, account.sid);
            if (answer == WinbindAnswer::kFound) answer = winbind.FindName(account.sid, account.name);
            if (answer == WinbindAnswer::kFailed) return answer;
            if (answer == WinbindAnswer::kFound) accounts.push_back(std::move(account));
        }
        return WinbindAnswer::kFound;
    }

    DWORD CheckDomain() {
        int nothing = 0;
        return Ask<int>(kPieceTime, nothing, [sid = domain.sid](Winbind& winbind, int&) {
            return DomainLink::Verify(winbind, sid);
        });
    }

    DomainLink& link;
    const WinbindDomain& domain;
    const std::atomic<bool>& isStopped;
    FoundRows& rows;
    std::unordered_set<std::string> seen;  // names in small letters
};

}  // namespace

DWORD DomainAccounts::Search(const std::atomic<bool>& isStopped, FoundRows& rows) {
    DWORD error = CheckDomain(kLookupTime);
    if (error == ERROR_NONE_MAPPED) return ERROR_SUCCESS;
    if (error != ERROR_SUCCESS) return kDomainOffline;
    std::vector<WinbindDomain> domains = link.Domains();
    // The machine's own first.
    std::stable_partition(domains.begin(), domains.end(),
                          [](const WinbindDomain& domain) { return domain.isOwn; });
    for (const WinbindDomain& domain : domains) {
        if (domain.isLocal) continue;
        const DWORD result = DomainSearch(link, domain, isStopped, rows).Run();
        rows.HandOut();
        if (result == ERROR_OPERATION_ABORTED) return result;
        if (result != ERROR_SUCCESS) error = result;
    }
    return error;
}

}  // namespace permora::host
