#include "cli/setup_command.h"

#include <cstdio>

#include "app/settings_store.h"
#include "cli/target.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"
#include "platform/api/files.h"

namespace permora {

bool RunSetup(const Arguments& arguments, ConsoleMessages& messages) {
    messages.SetSubject(arguments.paths.front());
    Target target;
    DWORD error = MakeTarget(arguments.paths.front(), target);
    const std::string folder = target.folder + target.name;
    if (error == ERROR_SUCCESS) {
        const std::string helpFile = folder + R"(\ZELHELP.chm)";
        if (GetFileAttributesA(helpFile.c_str()) == INVALID_FILE_ATTRIBUTES) {
            messages.Say("this is not the program's folder: its help, ZELHELP.chm, is not in it");
            return false;
        }
        error =
            StoreProgramFolder(arguments.allUsers ? SettingsOwner::kEveryUser : SettingsOwner::kUser, folder);
    }
    if (error != ERROR_SUCCESS) {
        messages.SaySystemError(error);
        return false;
    }
    std::printf("Permora is set up for %s in %s\n", arguments.allUsers ? "all users" : "you",
                PrintableText(folder).c_str());
    return true;
}

}  // namespace permora
