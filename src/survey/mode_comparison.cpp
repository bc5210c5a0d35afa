#include "survey/mode_comparison.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

#include "platform/api/security.h"
#include "platform/nt/ace_bits.h"
#include "platform/nt/granted_rights.h"
#include "platform/system_message.h"
#include "survey/account_standing.h"
#include "survey/survey.h"

namespace permora {
namespace {

constexpr std::uint32_t kSuperuser = 0;

struct BytesOrder {
    bool operator()(const nt::Sid& one, const nt::Sid& other) const {
        return std::ranges::lexicographical_compare(one.Bytes(), other.Bytes());
    }
};
using Sids = std::set<nt::Sid, BytesOrder>;

const nt::Sid& Everyone() {
    static const nt::Sid kSid(1, {0});
    return kSid;
}

class Comparing {
  public:
    Comparing(const nt::SecurityDescriptor& security, const HostPermissions& host,
              nt::ObjectKind kindOfObject, const ServedFolder& folder, ModeAccounts& asked)
        : descriptor(security), permissions(host), served(folder), accounts(asked) {
        const std::uint32_t enter = kindOfObject == nt::ObjectKind::kFolder ? kHostEnter : 0;
        reading = kHostRead | enter;
        writing = kHostWrite | enter;
    }

    std::vector<ModeFinding> Run() {
        if (served.by == ServedBy::kUnknown || LetsAllIn()) return {};
        if (served.user) {
            AddPerson(*served.user);
            return std::move(findings);
        }
        if (descriptor.daclState == nt::DaclState::kList)
            for (const nt::Ace& entry : descriptor.dacl.entries)
                AddEntry(entry);
        if (descriptor.daclState != nt::DaclState::kList || served.by == ServedBy::kHostAlone)
            AddAccount(Everyone());
        // Their bits may be less than everybody's.
        if (IsOfInterest(6)) AddAccount(accounts.HostOwner(permissions));
        if (IsOfInterest(3)) AddAccount(accounts.HostGroup(permissions));
        return std::move(findings);
    }

  private:
    // Nobody is kept out then, and the list counts too.
    bool LetsAllIn() const {
        constexpr std::uint32_t kThreeClasses = 0111;
        const std::uint32_t all = (reading | writing) * kThreeClasses;
        return served.by == ServedBy::kListAndHost && permissions.list.empty() &&
               (permissions.mode & all) == all;
    }

    // The class of the mode with its bits there.
    bool IsOfInterest(unsigned shift) const {
        const std::uint32_t all = reading | writing;
        return served.by == ServedBy::kHostAlone || !permissions.list.empty() ||
               (permissions.mode >> shift & all) != all;
    }

    void AddEntry(const nt::Ace& entry) {
        constexpr std::uint32_t kData = kReadingRights | kWritingRights;
        const bool isOfInterest =
            served.by == ServedBy::kHostAlone || (nt::IsAllowType(entry.type) && (entry.mask & kData) != 0);
        if (entry.sid && (entry.flags & nt::kInheritOnly) == 0 && isOfInterest) AddAccount(*entry.sid);
    }

    void AddAccount(const nt::Sid& account) {
        if (IsPlaceholder(account) || !seen.insert(account).second) return;
        const MeantPeople& meant = accounts.PeopleOf(account);
        for (const nt::Sid& person : meant.people)
            AddPerson(person);
        for (const nt::Sid& group : meant.open)
            if (seenOpen.insert(group).second) Compare(group, HostAccount(), true);
        if (meant.error != ERROR_SUCCESS) AddUnasked(account, meant.error);
    }

    void AddPerson(const nt::Sid& person) {
        if (!seenPeople.insert(person).second) return;
        HostAccount host;
        const DWORD error = accounts.FindHost(person, host);
        if (error == ERROR_NONE_MAPPED) return;  // nobody can connect as it
        if (error != ERROR_SUCCESS) return AddUnasked(person, error);
        // Lists name users by one SID or another.
        if (host.user == kSuperuser || (host.user && !seenUsers.insert(*host.user).second)) return;
        Compare(person, std::move(host), false);
    }

    // Groups of lists are asked for where they make a difference only: a domain takes its time for each.
    void Compare(const nt::Sid& account, HostAccount host, bool isOpen) {
        std::optional<bool> mayRead = HostAllows(permissions, host, reading);
        std::optional<bool> mayWrite = HostAllows(permissions, host, writing);
        if (!mayRead || !mayWrite) return AddUnasked(account, ERROR_INVALID_ACL);
        if (served.by == ServedBy::kListAndHost && *mayRead && *mayWrite) return;
        std::vector<nt::Sid> sids;
        if (const DWORD error = accounts.FindSids(account, sids); error != ERROR_SUCCESS)
            return AddUnasked(account, error);
        // The server counts groups in which the host does not know the user.
        if (std::ranges::find(sids, accounts.HostGroup(permissions)) != sids.end()) {
            host.groups.push_back(permissions.group);
            mayRead = HostAllows(permissions, host, reading);
            mayWrite = HostAllows(permissions, host, writing);
        }
        const std::uint32_t rights = descriptor.daclState == nt::DaclState::kList
                                         ? nt::GrantedRights(descriptor.dacl, sids)
                                         : kReadingRights | kWritingRights;
        const bool isToRead = (rights & kReadingRights) != 0;
        const bool isToWrite = (rights & kWritingRights) != 0;
        Add({Remark::kModeKeepsOut, account, isOpen, isToRead && !*mayRead, isToWrite && !*mayWrite});
        if (served.by == ServedBy::kHostAlone)
            Add({Remark::kModeLetsIn, account, isOpen, *mayRead && !isToRead, *mayWrite && !isToWrite});
    }

    void Add(const ModeFinding& finding) {
        if (finding.isReading || finding.isWriting) findings.push_back(finding);
    }

    void AddUnasked(const nt::Sid& account, DWORD error) {
        findings.push_back({Remark::kModeUnasked, account, false, false, false, error});
    }

    const nt::SecurityDescriptor& descriptor;
    const HostPermissions& permissions;
    const ServedFolder& served;
    ModeAccounts& accounts;
    std::uint32_t reading = 0;
    std::uint32_t writing = 0;
    std::vector<ModeFinding> findings;
    Sids seen;
    Sids seenOpen;
    Sids seenPeople;
    std::set<std::uint32_t> seenUsers;
};

std::string PersonText(const ModeFinding& finding, NameAccount* nameOf) {
    AccountRecord account;
    account.sid = finding.account;
    const std::string name = nameOf(account);
    if (finding.error != ERROR_SUCCESS) return name + ": " + SystemMessageLine(finding.error);
    const char* const rights = finding.isReading && finding.isWriting ? " (reading, writing)"
                               : finding.isReading                    ? " (reading)"
                                                                      : " (writing)";
    return (finding.isOpen ? "whoever else is " : "") + name + rights;
}

}  // namespace

std::string PeopleText(std::span<const ModeFinding* const> findings, NameAccount* nameOf) {
    constexpr std::size_t kMostNamed = 5;
    std::string text;
    for (std::size_t i = 0; i < findings.size() && i < kMostNamed; ++i)
        text += (i == 0 ? "" : ", ") + PersonText(*findings[i], nameOf);
    if (findings.size() > kMostNamed)
        text += " and " + std::to_string(findings.size() - kMostNamed) + " more";
    return text;
}

std::vector<ModeFinding> CompareWithMode(const nt::SecurityDescriptor& descriptor,
                                         const HostPermissions& permissions, nt::ObjectKind kind,
                                         const ServedFolder& served, ModeAccounts& accounts) {
    return Comparing(descriptor, permissions, kind, served, accounts).Run();
}

}  // namespace permora
