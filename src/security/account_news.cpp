#include "security/account_news.h"

#include <chrono>
#include <cstdint>
#include <utility>

#include "framework/worker_updates.h"
#include "platform/accounts.h"

namespace permora {
namespace {

constexpr std::chrono::milliseconds kInterval(500);

}  // namespace

AccountNewsWatch::AccountNewsWatch(CWnd& owner, std::function<void()> action)
    : window(owner), onNews(std::move(action)) {}

void AccountNewsWatch::Start() {
    Close();
    if (StateOfDomain().availability == DomainAvailability::kNone) return;
    isClosing = false;
    static_cast<void>(worker.Start([this] { Work(); }));
}

void AccountNewsWatch::Close() {
    {
        const std::lock_guard lock(guard);
        isClosing = true;
    }
    closing.notify_one();
    worker.Wait();
}

void AccountNewsWatch::Work() {
    std::uint64_t seen = AccountNews();
    std::unique_lock lock(guard);
    while (!closing.wait_for(lock, kInterval, [this] { return isClosing; })) {
        const std::uint64_t now = AccountNews();
        if (std::exchange(seen, now) != now) QueueWork(window, onNews);
    }
}

}  // namespace permora
