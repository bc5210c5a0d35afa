// The main window's commands on the history of changes: Undo, History, and the notice after a change that was
// cut off.
#pragma once

#include <functional>
#include <string>

#include "framework/window.h"
#include "history/history.h"

namespace permora {

class HistoryCommands {
  public:
    // `showAnew` is called after something was taken back. Both outlive this object.
    HistoryCommands(CWnd& ownerWindow, std::function<void()> showAnew);

    // Takes back the last change, as the user confirms.
    void Undo();
    // Shows the history.
    void Show();
    // The entry of the Edit menu, which names the change that Undo would take back: "Undo permissions of 3
    // items", and the key. Reads the history.
    std::string UndoEntry(bool& isEnabled) const;
    // Tells once of the last change that was cut off, and offers to take it back.
    void TellOfInterruption();

  private:
    DWORD FindLast(ChangeFacts& change) const;

    CWnd& owner;
    std::function<void()> showAnew;
    std::string path;  // of the history
};

}  // namespace permora
