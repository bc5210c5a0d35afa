// Routing of commands: their handlers, states and prompts.
#pragma once

#include <string>

#include "framework/menu_items.h"
#include "framework/message_map.h"

namespace permora {

// Whether `target`, or an object that it routes to, handles the command.
bool IsCommandHandled(CCmdTarget& target, unsigned int id);
// The state in which to show the command. `checked` is the present state; it stays unless a handler of
// kUpdateCommand changes it.
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
