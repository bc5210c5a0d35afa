// Drives the program's frame as a user does: its menu bar, its toolbar and its status bar.
#pragma once

#include <string>

#include "tests/support/window_driver.h"

namespace permora::testing {

// What a menu or toolbar shows of a command.
struct ShownCommand {
    bool enabled = false;
    bool checked = false;  // a toolbar button: pressed
    std::string text;      // without mnemonic and key; a toolbar button: its tip
};

// Asking for a command that is not there fails the test and answers with nothing.
class FrameDriver : public WindowDriver {
  public:
    explicit FrameDriver(const WindowDriver& frame) : WindowDriver(frame) {}

    // Opens the menu that has the command, as a user would to look at it, and closes it again.
    ShownCommand LookAtMenu(unsigned int command) const;
    // Chooses the command in its menu and serves events until it has run. Fails the test when it is grey.
    void ChooseMenu(unsigned int command);

    ShownCommand LookAtToolBar(unsigned int command) const;
    void ClickToolBar(unsigned int command);  // as ChooseMenu

    // The text of a status bar's pane, as shown.
    std::string StatusText(int pane) const;
};

}  // namespace permora::testing
