// Asking before something that cannot be undone, or replaces much.
#pragma once

#include <string>
#include <vector>

#include "cli/command.h"
#include "cli/messages.h"
#include "cli/target.h"

namespace permora {

// --yes.
struct YesFlag : Flag {
    explicit YesFlag(OptionPlace place)
        : Flag(place, "--yes", "Do not ask; needed where nobody can be asked") {}
};

struct ConsentTexts {
    const char* warning;  // what happens, for who cannot be asked: "reset removes ..."
    const char* heading;  // stands above the targets
    const char* refused;  // what to say after a no: "nothing was changed"
};

// Whether the user agrees, by typing so on a terminal; without a terminal the answer is no. On false, the
// reason was printed. Without targets nobody is asked.
bool AskForConsent(const ConsentTexts& texts, const std::vector<Target>& targets, ConsoleMessages& messages);
// The same about what has another name than the one that was typed.
bool AskForConsent(const ConsentTexts& texts, const std::vector<std::string>& names,
                   ConsoleMessages& messages);

}  // namespace permora
