// Which parts of descriptors were saved or compared, as the commands tell it.
#pragma once

#include <string_view>

#include "cli/json_output.h"
#include "cli/messages.h"
#include "platform/api/security.h"

namespace permora {

// The words of the saved form, for programs.
Json PartsJson(SECURITY_INFORMATION parts);

// Says that they cannot be read of the object that the messages are about, and what follows: "they are not
// saved".
void SaySystemListsHidden(std::string_view consequence, ConsoleMessages& messages);

}  // namespace permora
