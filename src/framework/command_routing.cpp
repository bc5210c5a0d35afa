#include "framework/command_routing.h"

#include "framework/resource_templates.h"

namespace permora {

bool IsCommandHandled(CCmdTarget& target, unsigned int id) {
    Notification query{.id = id, .code = Notify::kIsHandled};
    return target.OnCmdMsg(query);
}

CommandState AskCommandState(CCmdTarget& target, unsigned int id, bool checked) {
    Notification update{.id = id, .code = Notify::kUpdateCommand, .state = {.checked = checked}};
    target.OnCmdMsg(update);
    update.state.enabled = update.state.enabled && IsCommandHandled(target, id);
    return update.state;
}

bool SendCommand(CCmdTarget& target, unsigned int id) {
    // A command may have been disabled since it was shown, and keys are never shown.
    if (!AskCommandState(target, id, false).enabled) return false;
    Notification command{.id = id, .code = Notify::kCommand};
    return target.OnCmdMsg(command);
}

void UpdateMenuStates(CMenu::Items& items, CCmdTarget& target) {
    for (MenuItem& item : items.entries) {
        if (item.id == 0) continue;
        const CommandState state = AskCommandState(target, item.id, item.checked);
        item.enabled = state.enabled;
        item.checked = state.checked;
    }
}

CommandPrompt LoadCommandPrompt(unsigned int id) {
    const std::string text = LoadResourceString(id);
    const auto lineBreak = text.find('\n');
    if (lineBreak == std::string::npos) return {text, {}};
    return {text.substr(0, lineBreak), text.substr(lineBreak + 1)};
}

}  // namespace permora
