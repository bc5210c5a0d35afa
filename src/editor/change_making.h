// The changes of the window and their place in the history.
#pragma once

#include <functional>

#include "framework/window.h"
#include "history/change_session.h"

namespace permora {

// Begins a change, calls `make` with its recorder, and ends it. When the history cannot be written, the user
// is asked first whether to go on without it until the program ends. On false, the change was not made, or
// only in part, and the user knows why: he does not want it without history, or the history has stopped it.
[[nodiscard]] bool MakeChangeAsking(CWnd& page, ChangeSession& session, ChangeKind kind,
                                    const std::function<void(ChangeRecorder& recorder)>& make);

}  // namespace permora
