// Descriptors that move between machines or domains: accounts in them that others take the place of.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <vector>

#include "platform/nt/security_descriptor.h"
#include "platform/nt/sid.h"

namespace permora::nt {

enum class ExchangeResult {
    kUnchanged,  // none of the accounts is in it
    kChanged,
    // One of the accounts stands where it cannot be exchanged: in a damaged condition, a resource attribute
    // or an entry of unknown layout. Nothing was changed.
    kHidden,
};

class AccountExchange {
  public:
    // `other` takes the place of `old`. False, and nothing is added, when `old` has got another account
    // before.
    [[nodiscard]] bool Add(const Sid& old, const Sid& other);
    bool IsEmpty() const { return others.empty(); }

    // Exchanges owner, group, and the accounts of all entries of both lists and of their conditions. All at
    // once: an account that takes the place of another is not exchanged again.
    ExchangeResult Apply(SecurityDescriptor& descriptor);
    // What no descriptor has had so far.
    std::vector<Sid> Unused() const;

  private:
    using Bytes = std::span<const std::uint8_t>;
    struct Other {
        Sid sid;
        bool isUsed = false;
    };
    struct ByBytes {
        bool operator()(const Sid& one, const Sid& other) const;
    };

    ExchangeResult Exchange(Sid& sid);
    ExchangeResult Exchange(Ace& ace);
    ExchangeResult Exchange(Acl& acl);
    ExchangeResult ExchangeSystemList(std::vector<std::uint8_t>& bytes);
    bool Rewrite(Bytes tokens, std::size_t lists, std::vector<std::uint8_t>& rewritten);
    bool IsIn(Bytes bytes) const;

    std::map<Sid, Other, ByBytes> others;  // by the account that goes
};

}  // namespace permora::nt
