// Where links lead: a service of our own for the sheet of PropertiesPresenter.
#pragma once

#include <string>

#include "platform/api/base.h"

namespace permora {

// Where the link at `path` leads, as a full path: what its text says, whether or not anything is there. On
// Windows links are symbolic links and junctions, and a volume without a letter has a name in the place of
// one. 0 or an error code; ERROR_INVALID_FUNCTION for what is no link.
DWORD ReadLinkTarget(LPCSTR path, std::string& target);

}  // namespace permora
