#include "history/change_session.h"

#include <chrono>
#include <cstddef>
#include <utility>

namespace permora {

ChangeSession::ChangeSession(std::string historyPath, const HistoryLimits& historyLimits)
    : path(std::move(historyPath)), limits(historyLimits) {}

// A history that could be opened but not written, on a full disk, would stop each change anew. The caller
// hears of it before the next one, as of a history that cannot be opened.
DWORD ChangeSession::Begin(ChangeKind kind) {
    if (isWithout) return ERROR_SUCCESS;
    if (const DWORD last = std::exchange(failure, ERROR_SUCCESS); last != ERROR_SUCCESS) return last;
    const DWORD error = History::Open(path, history);
    if (error == ERROR_SUCCESS) change = history->Begin(kind);
    return error;
}

ChangeRecorder& ChangeSession::Recorder() {
    return change ? *change : Unrecorded();
}

DWORD ChangeSession::End() {
    if (!change) return ERROR_SUCCESS;
    const DWORD stopped = change->Error();
    change->End();
    failure = change->Error();
    DWORD error = stopped == ERROR_SUCCESS ? failure : ERROR_SUCCESS;
    const bool hasGrown = change->Number() != 0;
    change.reset();
    if (hasGrown && failure == ERROR_SUCCESS) error = Shorten();
    history.reset();
    return error;
}

DWORD ChangeSession::Shorten() const {
    using std::chrono::system_clock;
    constexpr std::uint64_t kBytesOfMegabyte = 1U << 20U;
    constexpr std::int64_t kSecondsOfDay = 86'400;
    const std::int64_t oldest = system_clock::to_time_t(system_clock::now()) - limits.days * kSecondsOfDay;
    std::size_t removed = 0;
    DWORD error = ERROR_SUCCESS;
    if (limits.days != 0) error = history->PruneOlder(oldest, removed);
    if (error == ERROR_SUCCESS && limits.megabytes != 0)
        error = history->PruneLarger(limits.megabytes * kBytesOfMegabyte, removed);
    return error;
}

}  // namespace permora
