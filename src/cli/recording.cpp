#include "cli/recording.h"

#include "app/settings_store.h"
#include "history/history_texts.h"

namespace permora {

Recording::Recording(OptionPlace place)
    : noHistory(place, "--no-history",
                "Change it without keeping in the history what was there; this cannot be undone"),
      session(History::UsualPath(), LoadHistoryLimits()) {}

bool Recording::Begin(ChangeKind kind, ConsoleMessages& messages) {
    if (noHistory) session.GoOnWithout();
    const DWORD error = session.Begin(kind);
    if (error == ERROR_SUCCESS) return true;
    messages.SetSubject(History::UsualPath());
    messages.Say("nothing was changed: " + HistoryFailureText(error) +
                 " (--no-history changes it all the same)");
    return false;
}

void Recording::End(ConsoleMessages& messages) {
    messages.SetSubject(History::UsualPath());
    messages.Check({session.End(), Step::kEndChange});
}

}  // namespace permora
