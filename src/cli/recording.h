// The place of a command's change in the history.
#pragma once

#include <atomic>
#include <cstdint>
#include <span>

#include "cli/command.h"
#include "history/change_session.h"

namespace permora {

// Counts what is about to be written, on its way to the history.
class CountingRecorder : public ChangeRecorder {
  public:
    explicit CountingRecorder(ChangeSession& changeSession) : session(changeSession) {}

    std::uint64_t Count() const { return count; }

    DWORD BeginTop(const ChangedTop& top, std::uint64_t& number) override;
    DWORD Record(std::uint64_t top, std::span<const DescriptorChange> batch) override;
    // Never 0, so that everything is counted.
    std::size_t BatchSize() const override;
    DWORD Error() const override;

  private:
    ChangeSession& session;
    std::atomic<std::uint64_t> count = 0;
};

// With --no-history, which its command gets. A member of each command that changes lists or owners.
class Recording {
  public:
    explicit Recording(OptionPlace place);

    // Begins the change. On false, the reason was printed and nothing may be changed: the history cannot be
    // written.
    bool Begin(ChangeKind kind, ConsoleMessages& messages);
    ChangeRecorder& Recorder() { return recorder; }
    // How many writes were announced so far. What is already so is never written.
    std::uint64_t Count() const { return recorder.Count(); }
    // Whether the history has stopped the change.
    bool IsStopped() { return Recorder().Error() != ERROR_SUCCESS; }
    // The change's number in the history; 0: it has none (yet).
    std::int64_t Number() const { return session.Number(); }
    void End(ConsoleMessages& messages);

  private:
    Flag noHistory;
    ChangeSession session;
    CountingRecorder recorder{session};
};

}  // namespace permora
