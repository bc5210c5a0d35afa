// The place of a command's change in the history.
#pragma once

#include "cli/command.h"
#include "history/change_session.h"

namespace permora {

// With --no-history, which its command gets. A member of each command that changes lists or owners.
class Recording {
  public:
    explicit Recording(OptionPlace place);

    // Begins the change. On false, the reason was printed and nothing may be changed: the history cannot be
    // written.
    bool Begin(ChangeKind kind, ConsoleMessages& messages);
    ChangeRecorder& Recorder() { return session.Recorder(); }
    // Whether the history has stopped the change.
    bool IsStopped() { return Recorder().Error() != ERROR_SUCCESS; }
    void End(ConsoleMessages& messages);

  private:
    Flag noHistory;
    ChangeSession session;
};

}  // namespace permora
