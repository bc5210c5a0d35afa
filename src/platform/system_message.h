// What the system says of its error codes.
#pragma once

#include <string>

#include "platform/api/base.h"

namespace permora {

// The text of an error code as the system gives it, usually with a line break at its end; empty when it has
// none. Network codes (2100 to 2999) are looked up in the network message library too.
std::string GetSystemMessageText(DWORD code);

// The same for a place in a text of our own: without the line break, and "system error N" when there is none.
std::string SystemMessageLine(DWORD code);

}  // namespace permora
