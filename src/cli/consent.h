// Asking before something that cannot be undone.
#pragma once

#include <vector>

#include "cli/messages.h"
#include "cli/target.h"

namespace permora {

struct ConsentTexts {
    const char* warning;  // what happens, for who cannot be asked: "reset removes ..."
    const char* heading;  // stands above the targets
    const char* refused;  // what to say after a no: "nothing was changed"
};

// Whether the user agrees, by typing so on a terminal. Says why when not; without a terminal the answer is
// no.
bool AskForConsent(const ConsentTexts& texts, const std::vector<Target>& targets, ConsoleMessages& messages);

}  // namespace permora
