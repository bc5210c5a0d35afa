// What the accounts in the lists of a survey may do there.
#include <algorithm>
#include <string>
#include <unordered_map>

#include "platform/nt/granted_rights.h"
#include "survey/survey.h"

namespace permora {
namespace {

using nt::DaclState;
using nt::SecurityDescriptor;
using nt::Sid;

std::string KeyOf(const Sid& sid) {
    const auto bytes = sid.Bytes();
    return {bytes.begin(), bytes.end()};
}

// The groups of an account, as far as they are in the lists: the others make no difference.
struct Holder {
    std::vector<Sid> sids;
    bool isKnown = false;
};

class Summing {
  public:
    Summing(const std::deque<DistinctSecurity>& all, SurveyedAccounts& names,
            const std::atomic<bool>& stopped, bool anyOfServer, std::vector<AccountSummary>& result)
        : distinct(all), accounts(names), isStopped(stopped), isAnyOfServer(anyOfServer), summaries(result) {}

    DWORD Run(const Survey::FurtherAccounts& further) {
        if (!ForEach([this](const SecurityDescriptor& each, std::size_t count) { AddAccounts(each, count); }))
            return ERROR_OPERATION_ABORTED;
        if (further)
            for (const Sid& sid : further(summaries))
                Find(sid);
        for (AccountSummary& summary : summaries) {
            if (isStopped) return ERROR_OPERATION_ABORTED;
            holders.push_back(FindHolder(summary));
        }
        const bool isDone =
            ForEach([this](const SecurityDescriptor& each, std::size_t count) { AddRights(each, count); });
        return isDone ? ERROR_SUCCESS : ERROR_OPERATION_ABORTED;
    }

  private:
    template <typename Work>
    bool ForEach(Work work) const {
        for (const DistinctSecurity& each : distinct) {
            if (isStopped) return false;
            if (each.objects > 0) work(each.Descriptor(), each.objects);
        }
        return true;
    }

    // Null for a placeholder.
    AccountSummary* Find(const Sid& sid) {
        if (IsPlaceholder(sid)) return nullptr;
        const auto [place, isNew] = places.emplace(KeyOf(sid), summaries.size());
        if (isNew) {
            summaries.push_back({.sid = sid, .account = accounts.Find(sid), .groups = {}});
            lastCounted.push_back(0);
        }
        return &summaries[place->second];
    }

    void AddAccounts(const SecurityDescriptor& descriptor, std::size_t count) {
        ++current;
        if (descriptor.owner)
            if (AccountSummary* const owner = Find(*descriptor.owner)) owner->owned += count;
        for (const nt::Ace& entry : descriptor.dacl.entries) {
            AccountSummary* const named = entry.sid ? Find(*entry.sid) : nullptr;
            if (named == nullptr) continue;
            // Once for each list, however many entries it has there.
            std::size_t& counted = lastCounted[static_cast<std::size_t>(named - summaries.data())];
            if (counted != current) named->listed += count;
            counted = current;
        }
    }

    Holder FindHolder(AccountSummary& summary) {
        if (isAnyOfServer) {
            summary.groupsError = ERROR_NONE_MAPPED;
            return {};
        }
        std::string domain = KeyOf(summary.sid);
        domain.resize(domain.size() - std::min(domain.size(), sizeof(std::uint32_t)));
        AccountGroups groups;
        const auto silent = silentDomains.find(domain);
        summary.groupsError = silent == silentDomains.end()
                                  ? FindAccountGroups(summary.sid, GroupsRequest::kUsual, groups)
                                  : silent->second;
        if (summary.groupsError == kDomainOffline || summary.groupsError == kNameNotYet)
            silentDomains.emplace(domain, summary.groupsError);
        if (summary.groupsError != ERROR_SUCCESS) return {};
        summary.origin = groups.origin;
        summary.groups = groups.sids;
        std::erase_if(groups.sids, [this](const Sid& sid) { return !places.contains(KeyOf(sid)); });
        return {std::move(groups.sids), true};
    }

    void AddRights(const SecurityDescriptor& descriptor, std::size_t count) {
        for (std::size_t i = 0; i < holders.size(); ++i) {
            if (!holders[i].isKnown) continue;
            const std::uint32_t rights = descriptor.daclState == DaclState::kList
                                             ? nt::GrantedRights(descriptor.dacl, holders[i].sids)
                                             : kReadingRights | kWritingRights;
            if ((rights & kReadingRights) != 0) summaries[i].readable += count;
            if ((rights & kWritingRights) != 0) summaries[i].writable += count;
        }
    }

    const std::deque<DistinctSecurity>& distinct;
    SurveyedAccounts& accounts;
    const std::atomic<bool>& isStopped;
    const bool isAnyOfServer;
    std::vector<AccountSummary>& summaries;
    std::unordered_map<std::string, std::size_t> places;
    std::vector<std::size_t> lastCounted;  // for each account the descriptor that was counted last
    std::size_t current = 0;
    std::vector<Holder> holders;
    std::unordered_map<std::string, DWORD> silentDomains;
};

}  // namespace

DWORD Survey::Summarise(const std::atomic<bool>& isStopped, SurveySummary& summary,
                        const FurtherAccounts& further) {
    summary = counts;
    summary.distinctLists = static_cast<std::size_t>(
        std::ranges::count_if(distinct, [](const DistinctSecurity& each) { return each.objects > 0; }));
    return Summing(distinct, accounts, isStopped, isAnyOfServer, summary.accounts).Run(further);
}

}  // namespace permora
