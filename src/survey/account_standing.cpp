#include "survey/account_standing.h"

#include <string_view>

#include "platform/api/security.h"
#include "platform/nt/well_known_sids.h"
#include "platform/raw_security.h"
#include "platform/resources.h"
#include "security/account_record.h"

namespace permora {
namespace {

// [MS-DTYP] 2.4.2.4. The numbers of a host's users and groups, and of those of other makers, follow them.
constexpr std::uint64_t kNt = 5;
constexpr std::uint64_t kHost = 22;
constexpr std::uint32_t kDomains = 21;
constexpr std::uint32_t kBuiltIn = 32;

bool IsPossibleNtAccount(const nt::Sid& sid) {
    constexpr std::size_t kPartsOfDomainAccount = 5;  // 21, three for the domain, one for the account
    constexpr std::size_t kPartsOfBuiltIn = 2;
    if (sid.SubAuthority(0) == kDomains) return sid.SubAuthorityCount() == kPartsOfDomainAccount;
    if (sid.SubAuthority(0) == kBuiltIn) return sid.SubAuthorityCount() == kPartsOfBuiltIn;
    return true;
}

bool IsPossibleHostAccount(const nt::Sid& sid) {
    constexpr std::size_t kParts = 2;
    return sid.SubAuthorityCount() == kParts && (sid.SubAuthority(0) == 1 || sid.SubAuthority(0) == 2);
}

}  // namespace

std::optional<Remark> RemarkOf(AccountStanding standing) {
    switch (standing) {
        case AccountStanding::kKnown:
            break;
        case AccountStanding::kDeleted:
            return Remark::kDeletedAccount;
        case AccountStanding::kUnknown:
            return Remark::kUnknownAccount;
        case AccountStanding::kBroken:
            return Remark::kBrokenSid;
        case AccountStanding::kUnasked:
            return Remark::kNameUnasked;
    }
    return std::nullopt;
}

bool IsPossibleAccount(const nt::Sid& sid) {
    if (nt::FindWellKnownSid(sid) != nullptr) return true;
    if (sid.SubAuthorityCount() == 0) return false;
    switch (sid.Authority()) {
        case kNt:
            return IsPossibleNtAccount(sid);
        case kHost:
            return IsPossibleHostAccount(sid);
        case 9:   // resource managers
        case 11:  // accounts of the maker's own services on the network
        case 12:
        case 15:  // programs
        case 16:  // integrity
        case 18:  // how somebody has proved who he is
        case 88:  // NFS clients
            return true;
        default:
            return false;
    }
}

bool IsPlaceholder(const nt::Sid& sid) {
    constexpr std::uint64_t kCreatorAuthority = 3;
    return sid.Authority() == kCreatorAuthority;
}

std::size_t SurveyedAccounts::Hash::operator()(const nt::Sid& sid) const {
    const auto bytes = sid.Bytes();
    return std::hash<std::string_view>()({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

const SurveyedAccounts::Account& SurveyedAccounts::Find(const nt::Sid& sid) {
    const auto found = accounts.find(sid);
    return found == accounts.end() ? accounts.emplace(sid, Ask(sid)).first->second : found->second;
}

std::string SurveyedAccounts::NameOf(const nt::Sid& sid) {
    const Account& account = Find(sid);
    const bool isKnown = account.standing == AccountStanding::kKnown && !account.name.name.empty();
    return isKnown ? QualifiedAccountName(account.name.domain, account.name.name) : sid.ToText();
}

SurveyedAccounts::Account SurveyedAccounts::Ask(const nt::Sid& sid) {
    if (!IsPossibleAccount(sid)) return {AccountStanding::kBroken, {}};
    Account found;
    switch (FindAccountName(sid, wait, found.name)) {
        case NameAnswer::kKnown:
            found.standing = AccountStanding::kKnown;
            break;
        case NameAnswer::kDeleted:
            found.standing = AccountStanding::kDeleted;
            break;
        case NameAnswer::kNobody:
            found.standing = IsOfThisMachine(sid) ? AccountStanding::kDeleted : AccountStanding::kUnknown;
            break;
        case NameAnswer::kNotYet:
            wait = std::chrono::milliseconds(0);
            break;
        case NameAnswer::kFailed:
            break;
    }
    return found;
}

bool SurveyedAccounts::IsOfThisMachine(const nt::Sid& sid) {
    if (sid.Authority() == kHost) return true;
    if (sid.Authority() == kNt && sid.SubAuthority(0) == kBuiltIn) return true;
    // The machine's administrator, whose SID is the machine's with one more number.
    PSID administrator = nullptr;
    if (!isMachineAsked && ConvertStringSidToSidA("LA", &administrator) != FALSE) {
        const UniqueLocal<void> owned(administrator);
        machine = SidOf(administrator);
    }
    isMachineAsked = true;
    if (!machine || machine->SubAuthorityCount() != sid.SubAuthorityCount()) return false;
    for (std::size_t i = 0; i + 1 < sid.SubAuthorityCount(); ++i)
        if (sid.SubAuthority(i) != machine->SubAuthority(i)) return false;
    return sid.Authority() == machine->Authority();
}

}  // namespace permora
