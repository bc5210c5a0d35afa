// What the account picker has found, what the typed text leaves of it, and in which order, without windows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "framework/list_ctrl.h"
#include "framework/list_order.h"
#include "security/account_record.h"
#include "security/distinct_names.h"

namespace permora {

// A domain may have 100,000 accounts. The texts are those of a list whose rows are numbered as shown.
class FoundAccounts : public ListTexts {
  public:
    enum Column { kName, kDomain, kType };

    void Clear();  // filter and order stay
    // Accounts that are already here are left out.
    void Add(std::vector<AccountRecord> accounts);
    // Shows the accounts that IsFoundBy `text` (security/account_search.h): all for an empty one.
    void SetFilter(const std::string& text);
    // Stable. Types are sorted by who they are: people, groups, then what the system has made.
    void SortBy(ListOrder order);
    std::optional<ListOrder> Sorting() const { return chosen; }

    int Count() const { return static_cast<int>(shown.size()); }  // of those shown
    // Where an account is shown, and the account there. Accounts are numbered as they were found.
    std::optional<std::size_t> AccountAt(int row) const;
    int RowOf(std::size_t account) const;  // -1: it is not shown
    // What the picker is to look up for an account: its name, or its SID where others are called so too.
    std::string TextFor(std::size_t account) const;

    std::string Text(std::intptr_t row, int column) const override;

  private:
    struct Found {
        AccountRecord account;
        std::string key;  // what is searched, in lower case; begins with the qualified name

        std::string_view Domain() const { return std::string_view(key).substr(0, account.domain.size()); }
        std::string_view Name() const;
    };
    class SortKey;

    using Places = std::vector<std::uint32_t>;  // in `all`

    // Without a chosen order, everything comes as it was found, and what is typed lists people first.
    bool IsAsFound() const { return !chosen && filter.empty(); }
    ListOrder PresentOrder() const { return chosen.value_or(ListOrder{kType, SortOrder::kUp}); }
    bool IsLess(std::uint32_t one, std::uint32_t other) const;
    bool IsFound(std::uint32_t place) const { return all[place].key.find(filter) != std::string::npos; }
    // Both are in the present order.
    void Merge(const Places& added, Places& places) const;
    void Show();

    std::vector<Found> all;
    std::unordered_set<std::string> known;  // the texts of their SIDs
    DistinctNames names;                    // qualified ones
    Places ordered;                         // all of them, so that typing needs no sorting
    Places shown;
    std::string filter;  // in lower case
    std::optional<ListOrder> chosen;
};

}  // namespace permora
