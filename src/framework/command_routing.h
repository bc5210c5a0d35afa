// Commands on their way: whether somebody handles them, how they are shown, and what is said about them.
#pragma once

#include <string>

#include "framework/menu_items.h"
#include "framework/message_map.h"

namespace permora {

// Would `target`, with whatever it routes to, handle the command?
bool IsCommandHandled(CCmdTarget& target, unsigned int id);
// The state in which the command is to be shown: `checked` as it is shown now, unless a handler of
// kUpdateCommand decides.
CommandState AskCommandState(CCmdTarget& target, unsigned int id, bool checked);
// Runs the command unless its state is disabled; true when a handler took it.
bool SendCommand(CCmdTarget& target, unsigned int id);
// Brings the entries of a menu (not those of its pop-ups) up to date.
void UpdateMenuStates(CMenu::Items& items, CCmdTarget& target);

// The string resource of a command's id: the status line's text and, after a line break, the tool tip.
struct CommandPrompt {
    std::string status;
    std::string tip;
};
CommandPrompt LoadCommandPrompt(unsigned int id);

}  // namespace permora
