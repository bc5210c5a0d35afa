// Where links lead: a service of our own for the sheet of PropertiesPresenter. On Windows the shell's
// sheet asks for itself, and this header has nothing behind it.
#pragma once

#include <string>

#include "platform/api/base.h"

namespace permora {

// Where the link at `path` leads, as a full path with drive letter: what its text says, whether or not
// anything is there. 0 or an error code; ERROR_INVALID_FUNCTION for what is no link.
DWORD ReadLinkTarget(LPCSTR path, std::string& target);

}  // namespace permora
