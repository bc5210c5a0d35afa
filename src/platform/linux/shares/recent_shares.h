// What was known of the shares a moment ago.
#pragma once

#include <chrono>
#include <mutex>
#include <unordered_map>

#include "platform/linux/shares/share_provider.h"

namespace permora::host {

enum class Freshness {
    kNow,
    kRecent,  // at most two seconds old
};

// A listing of thousands of shares is followed by a call for each of them: the provider is then asked once. A
// change made through this object is seen at once. May be used by several threads.
class RecentShares {
  public:
    // The provider must outlive this object.
    explicit RecentShares(const ShareProvider& source) : provider(source) {}

    // As the provider's.
    DWORD List(std::vector<Share>& shares);
    DWORD Change(std::string_view name, const ShareChange& change);
    DWORD Add(const Share& share);
    DWORD Remove(std::string_view name);

    // Without its descriptor. NERR_NetNameNotFound.
    DWORD Find(std::string_view name, Freshness freshness, Share& share);

  private:
    using Clock = std::chrono::steady_clock;

    DWORD Refresh();
    DWORD Forget(DWORD error);

    const ShareProvider& provider;
    std::mutex guard;
    Clock::time_point end;  // of the time for which the list is believed
    std::vector<Share> known;
    std::unordered_map<std::u16string, std::size_t> places;  // in `known`
};

}  // namespace permora::host
