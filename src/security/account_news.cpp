#include "security/account_news.h"

#include <chrono>
#include <utility>

#include "platform/accounts.h"

namespace permora {

void AccountNewsWatch::Start(std::function<void()> show) {
    constexpr std::chrono::milliseconds kPause(500);
    seen = AccountNews();
    timer.Start(kPause, [this, show = std::move(show)] {
        const std::uint64_t now = AccountNews();
        if (std::exchange(seen, now) != now) show();
    });
}

}  // namespace permora
