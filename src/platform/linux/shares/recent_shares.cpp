#include "platform/linux/shares/recent_shares.h"

#include <utility>

namespace permora::host {

namespace {

constexpr std::chrono::seconds kLifetime{2};

}  // namespace

DWORD RecentShares::Refresh() {
    std::vector<Share> listed;
    const DWORD error = provider.List(listed);
    if (error != ERROR_SUCCESS) return error;
    known = std::move(listed);
    places.clear();
    for (std::size_t i = 0; i < known.size(); ++i)
        places.emplace(ShareKey(known[i].name), i);
    end = Clock::now() + kLifetime;
    return ERROR_SUCCESS;
}

// The known shares may be out of date, even after a change that failed.
DWORD RecentShares::Forget(DWORD error) {
    const std::lock_guard lock(guard);
    end = {};
    return error;
}

DWORD RecentShares::List(std::vector<Share>& shares) {
    const std::lock_guard lock(guard);
    const DWORD error = Refresh();
    if (error == ERROR_SUCCESS) shares = known;
    return error;
}

DWORD RecentShares::Find(std::string_view name, Freshness freshness, Share& share) {
    const std::lock_guard lock(guard);
    if (freshness == Freshness::kNow || Clock::now() >= end) {
        if (const DWORD error = Refresh(); error != ERROR_SUCCESS) return error;
    }
    const auto place = places.find(ShareKey(name));
    if (place == places.end()) return NERR_NetNameNotFound;
    share = known[place->second];
    return ERROR_SUCCESS;
}

DWORD RecentShares::Change(std::string_view name, const ShareChange& change) {
    return Forget(provider.Change(name, change));
}

DWORD RecentShares::Add(const Share& share) {
    return Forget(provider.Add(share));
}

DWORD RecentShares::Remove(std::string_view name) {
    return Forget(provider.Remove(name));
}

}  // namespace permora::host
