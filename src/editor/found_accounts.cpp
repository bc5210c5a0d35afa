#include "editor/found_accounts.h"

#include <algorithm>
#include <array>
#include <compare>
#include <iterator>
#include <numeric>
#include <utility>

#include "platform/ascii.h"
#include "security/account_search.h"

namespace permora {
namespace {

// People come before groups, and both before what every system has.
unsigned char RankOf(SID_NAME_USE use) {
    static constexpr std::array kRanks = {SidTypeUser, SidTypeGroup, SidTypeAlias, SidTypeComputer,
                                          SidTypeWellKnownGroup};
    return static_cast<unsigned char>(1 + (std::ranges::find(kRanks, use) - kRanks.begin()));
}

std::string NameOfFound(const AccountRecord& account) {
    return QualifiedAccountName(account.domain, account.name);
}

}  // namespace

std::string_view FoundAccounts::Found::Name() const {
    const std::size_t start = account.domain.empty() ? 0 : account.domain.size() + 1;
    return std::string_view(key).substr(start, account.name.size());
}

// The beginning of what an account is sorted by, as numbers: comparing the names of 100,000 accounts would
// take too long for one turn of the window.
class FoundAccounts::SortKey {
  public:
    SortKey(const Found& found, std::uint32_t placeOfIt, int column) : place(placeOfIt) {
        if (column == kType) Append(std::string(1, static_cast<char>(RankOf(found.account.use))));
        Append(column == kDomain ? found.Domain() : found.Name());
        ++used;  // a zero between the two
        Append(column == kDomain ? found.Name() : found.Domain());
    }

    std::array<std::uint64_t, 3> head{};
    std::uint32_t place;

  private:
    void Append(std::string_view text) {
        for (const char each : text) {
            if (used >= sizeof head) return;
            head[used / 8] |= std::uint64_t{static_cast<unsigned char>(each)} << (56 - 8 * (used % 8));
            ++used;
        }
    }
    std::size_t used = 0;
};

void FoundAccounts::Clear() {
    all.clear();
    known.clear();
    names = {};
    ordered.clear();
    shown.clear();
}

void FoundAccounts::Add(std::vector<AccountRecord> accounts) {
    Places added;
    for (AccountRecord& account : accounts) {
        std::string sid = account.GetSidText();
        if (known.contains(sid)) continue;
        const std::string name = NameOfFound(account);
        names.Note(name, account);
        std::string key = name;
        key.append(1, '\n').append(sid).append(1, '\n').append(AccountTypeText(account.use));
        key = InLowerCase(key);
        added.push_back(static_cast<std::uint32_t>(all.size()));
        all.push_back({std::move(account), std::move(key)});
        known.insert(std::move(sid));
    }
    if (IsAsFound()) shown.insert(shown.end(), added.begin(), added.end());
    std::ranges::sort(added, [this](std::uint32_t one, std::uint32_t other) { return IsLess(one, other); });
    Merge(added, ordered);
    if (IsAsFound()) return;
    std::erase_if(added, [this](std::uint32_t place) { return !IsFound(place); });
    Merge(added, shown);
}

// Few come at a time, so they are looked up rather than compared with all.
void FoundAccounts::Merge(const Places& added, Places& places) const {
    Places merged;
    merged.reserve(places.size() + added.size());
    auto from = places.cbegin();
    for (const std::uint32_t each : added) {
        const auto to =
            std::upper_bound(from, places.cend(), each,
                             [this](std::uint32_t one, std::uint32_t other) { return IsLess(one, other); });
        merged.insert(merged.end(), from, to);
        merged.push_back(each);
        from = to;
    }
    merged.insert(merged.end(), from, places.cend());
    places = std::move(merged);
}

void FoundAccounts::SetFilter(const std::string& text) {
    filter = InLowerCase(text);
    Show();
}

void FoundAccounts::Show() {
    shown.clear();
    if (IsAsFound()) {
        shown.resize(all.size());
        std::iota(shown.begin(), shown.end(), 0U);
        return;
    }
    std::ranges::copy_if(ordered, std::back_inserter(shown),
                         [this](std::uint32_t place) { return IsFound(place); });
}

void FoundAccounts::SortBy(ListOrder order) {
    chosen = order;
    std::vector<SortKey> keys;
    keys.reserve(all.size());
    for (std::uint32_t place = 0; place < all.size(); ++place)
        keys.emplace_back(all[place], place, order.column);
    std::ranges::sort(keys, [&](const SortKey& one, const SortKey& other) {
        if (one.head == other.head) return IsLess(one.place, other.place);
        return (one.head < other.head) == (order.direction == SortOrder::kUp);
    });
    std::ranges::transform(keys, ordered.begin(), &SortKey::place);
    Show();
}

bool FoundAccounts::IsLess(std::uint32_t one, std::uint32_t other) const {
    const ListOrder order = PresentOrder();
    const Found& left = all[one];
    const Found& right = all[other];
    const auto rank = RankOf(left.account.use) <=> RankOf(right.account.use);
    const auto domain = left.Domain() <=> right.Domain();
    const auto name = left.Name() <=> right.Name();
    auto result = order.column == kDomain ? domain : name;
    if (order.column == kType && std::is_neq(rank)) result = rank;
    if (std::is_eq(result)) result = order.column == kDomain ? name : domain;
    if (std::is_eq(result)) return one < other;
    return std::is_lt(result) == (order.direction == SortOrder::kUp);
}

std::optional<std::size_t> FoundAccounts::AccountAt(int row) const {
    if (row < 0 || row >= Count()) return std::nullopt;
    return shown[static_cast<std::size_t>(row)];
}

int FoundAccounts::RowOf(std::size_t account) const {
    const auto row = std::ranges::find(shown, static_cast<std::uint32_t>(account));
    return row == shown.end() ? -1 : static_cast<int>(row - shown.begin());
}

std::string FoundAccounts::TextFor(std::size_t account) const {
    const AccountRecord& record = all[account].account;
    std::string name = NameOfFound(record);
    return names.IsShared(name) ? record.GetSidText() : name;
}

std::string FoundAccounts::Text(std::intptr_t row, int column) const {
    const auto account = AccountAt(static_cast<int>(row));
    if (!account) return {};
    const AccountRecord& record = all[*account].account;
    if (column == kDomain) return record.domain;
    if (column == kType) return AccountTypeText(record.use);
    return names.IsShared(NameOfFound(record)) ? NameWithSid(record.name, record) : record.name;
}

}  // namespace permora
