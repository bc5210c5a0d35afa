#include "editor/domain_search.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <iterator>
#include <utility>

#include "framework/worker_updates.h"
#include "platform/api/errors.h"
#include "security/account_search.h"

namespace permora {
namespace {

constexpr std::chrono::milliseconds kTypingPause(250);
constexpr std::size_t kAccountsAtOnce = 500;

}  // namespace

DomainSearch::DomainSearch(CWnd& owner, ShowAccounts accounts, ShowEnd end)
    : window(owner), showAccounts(std::move(accounts)), showEnd(std::move(end)) {}

DWORD DomainSearch::Start(std::string text, std::vector<AccountRecord> local) {
    {
        const std::lock_guard lock(guard);
        next = Request{std::move(text), std::move(local)};
        ++number;
        arrived.clear();
        outcome.reset();
        isStopped = true;
        if (std::exchange(isWorking, true)) {
            change.notify_one();
            return ERROR_SUCCESS;
        }
        isClosing = false;
    }
    const DWORD error = worker.Start([this] { Work(); });
    if (error != ERROR_SUCCESS) isWorking = false;
    return error;
}

void DomainSearch::Stop() {
    const std::lock_guard lock(guard);
    isStopped = true;
}

void DomainSearch::Close() {
    {
        const std::lock_guard lock(guard);
        isClosing = true;
        isStopped = true;
        ++number;
        arrived.clear();
        outcome.reset();
    }
    change.notify_one();
    worker.Wait();
    isWorking = false;
}

// The thread waits for the next search until Close.
void DomainSearch::Work() {
    std::unique_lock lock(guard);
    for (;;) {
        change.wait(lock, [this] { return next || isClosing; });
        if (isClosing) return;
        const std::uint64_t ownNumber = number;
        if (change.wait_for(lock, kTypingPause, [&] { return number != ownNumber; })) continue;
        const Request request = *std::exchange(next, std::nullopt);
        isStopped = false;
        lock.unlock();
        const SearchOutcome end = Search(request, ownNumber);
        lock.lock();
        if (number != ownNumber) continue;
        outcome = end;
        QueueWork(window, [this] { Deliver(); });
    }
}

SearchOutcome DomainSearch::Search(const Request& request, std::uint64_t ownNumber) {
    return FindDomainAccounts(request.text, request.local, isStopped,
                              [&](std::vector<AccountRecord> accounts) {
                                  const std::lock_guard lock(guard);
                                  if (number != ownNumber) return;
                                  std::ranges::move(accounts, std::back_inserter(arrived));
                                  QueueWork(window, [this] { Deliver(); });
                              });
}

void DomainSearch::Deliver() {
    std::vector<AccountRecord> shown;
    std::optional<SearchOutcome> end;
    {
        const std::lock_guard lock(guard);
        const auto last =
            arrived.begin() + static_cast<std::ptrdiff_t>(std::min(arrived.size(), kAccountsAtOnce));
        shown.assign(std::make_move_iterator(arrived.begin()), std::make_move_iterator(last));
        arrived.erase(arrived.begin(), last);
        if (arrived.empty())
            end = std::exchange(outcome, std::nullopt);
        else
            QueueWork(window, [this] { Deliver(); });
    }
    if (!shown.empty()) showAccounts(shown);
    if (end) showEnd(*end);
}

}  // namespace permora
