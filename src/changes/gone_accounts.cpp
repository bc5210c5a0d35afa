#include "changes/gone_accounts.h"

#include <algorithm>

#include "changes/descriptor_edit.h"
#include "platform/api/errors.h"
#include "platform/nt/entry_effects.h"
#include "saved/tree_source.h"

namespace permora {
namespace {

// [MS-DTYP] 2.4.2.4: of a machine or a domain, and of the host's users and groups.
bool IsOfMachineOrDomain(const nt::Sid& sid) {
    constexpr std::uint64_t kNt = 5;
    constexpr std::uint64_t kHost = 22;
    constexpr std::uint32_t kDomains = 21;
    if (sid.SubAuthorityCount() == 0) return false;
    return sid.Authority() == kHost || (sid.Authority() == kNt && sid.SubAuthority(0) == kDomains);
}

}  // namespace

// The accounts of a tree.
class AccountsInLists : public TreeVisitor {
  public:
    AccountsInLists(GoneAccounts& asked, const std::function<bool(std::string_view)>& listener)
        : accounts(asked), begin(listener) {}

    bool Visit(const ReadObject& object) override {
        if (!begin(object.path)) return false;
        if (object.descriptor.empty() || std::ranges::equal(object.descriptor, last)) return true;
        last.assign(object.descriptor.begin(), object.descriptor.end());
        const auto descriptor = nt::SecurityDescriptor::FromBytes(object.descriptor);
        if (!descriptor || descriptor->daclState != nt::DaclState::kList) return true;
        for (const nt::Ace& entry : descriptor->dacl.entries)
            if (entry.sid && !IsInheritedIn(*descriptor, entry)) accounts.Ask(*entry.sid);
        return true;
    }

  private:
    GoneAccounts& accounts;
    const std::function<bool(std::string_view)>& begin;
    std::vector<std::uint8_t> last;  // most objects have what the one before has
};

bool GoneAccounts::ByBytes::operator()(const nt::Sid& one, const nt::Sid& other) const {
    return std::ranges::lexicographical_compare(one.Bytes(), other.Bytes());
}

void GoneAccounts::Ask(const nt::Sid& sid) {
    const auto [account, isNew] = met.try_emplace(sid, false);
    if (!isNew || !IsOfMachineOrDomain(sid)) return;
    const AccountStanding standing = accounts.Find(sid).standing;
    if (standing == AccountStanding::kUnasked) unasked.push_back(sid);
    const bool isForeign = standing == AccountStanding::kUnknown || standing == AccountStanding::kBroken;
    if (isForeign && kinds == Kinds::kDeleted) foreign.push_back(sid);
    account->second = standing == AccountStanding::kDeleted || (isForeign && kinds == Kinds::kForeignToo);
    if (account->second) gone.push_back(sid);
}

bool GoneAccounts::IsGone(const nt::Sid& sid) const {
    const auto account = met.find(sid);
    return account != met.end() && account->second;
}

DWORD GoneAccounts::LookThrough(const HeldObject& top,
                                const std::function<bool(std::string_view path)>& begin) {
    AccountsInLists visitor(*this, begin);
    return ReadTree(top, DACL_SECURITY_INFORMATION, visitor);
}

}  // namespace permora
