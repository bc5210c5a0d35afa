#include "cli/setup_command.h"

#include <string>

#include "app/program_folder.h"
#include "app/settings_store.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"

namespace permora {

bool RunSetup(const Arguments& arguments, const std::vector<Target>& targets, ConsoleMessages& messages) {
    if (targets.empty()) return false;
    const Target& target = targets.front();
    messages.SetSubject(target.argument);
    const std::string folder = target.folder + target.name;
    if (!HoldsHelp(folder)) {
        messages.Say("this is not the program's folder: its help, ZELHELP.chm, is not in it");
        return false;
    }
    const SettingsOwner owner = arguments.allUsers ? SettingsOwner::kEveryUser : SettingsOwner::kUser;
    if (const DWORD error = StoreProgramFolder(owner, folder); error != ERROR_SUCCESS) {
        messages.SaySystemError(error);
        return false;
    }
    Print(std::string("Permora is set up for ") + (arguments.allUsers ? "all users" : "you") + " in " +
          PrintableText(folder) + '\n');
    return true;
}

}  // namespace permora
