// Searches the accounts of the machine's domain in the background, for a window that shows them.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "framework/window.h"
#include "framework/worker_thread.h"
#include "platform/accounts.h"
#include "security/account_record.h"

namespace permora {

// One search at a time. User-interface thread only.
class DomainSearch {
  public:
    using ShowAccounts = std::function<void(const std::vector<AccountRecord>& accounts)>;
    using ShowEnd = std::function<void(const SearchOutcome& outcome)>;

    // Both are called on the user-interface thread while `window` exists, soon after Start: with some
    // accounts at a time, so that the window goes on taking input, and once after the last ones. All is
    // borrowed.
    DomainSearch(CWnd& window, ShowAccounts showAccounts, ShowEnd showEnd);
    ~DomainSearch() { Close(); }
    DomainSearch(const DomainSearch&) = delete;
    DomainSearch& operator=(const DomainSearch&) = delete;

    // Searches as FindDomainAccounts does, after a moment in which another search may take its place. A
    // search that runs ends without another call. Returns 0, or a system error code when no thread could be
    // made.
    DWORD Start(std::string text, std::vector<AccountRecord> local);
    // The search that runs ends soon, with ERROR_OPERATION_ABORTED.
    void Stop();
    // Ends the search without another call, and waits for it: a fraction of a second at most.
    void Close();

  private:
    struct Request {
        std::string text;
        std::vector<AccountRecord> local;
    };

    void Work();
    SearchOutcome Search(const Request& request, std::uint64_t ownNumber);
    void Deliver();  // on the user-interface thread

    CWnd& window;
    const ShowAccounts showAccounts;
    const ShowEnd showEnd;

    std::mutex guard;  // of the next ones
    std::condition_variable change;
    std::optional<Request> next;
    std::uint64_t number = 0;  // of the latest request; accounts of earlier ones are dropped
    bool isClosing = false;
    std::vector<AccountRecord> arrived;
    std::optional<SearchOutcome> outcome;
    bool isWorking = false;

    std::atomic<bool> isStopped = false;
    WorkerThread worker;
};

}  // namespace permora
