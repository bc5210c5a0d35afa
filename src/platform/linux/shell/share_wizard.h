// Running the wizard for new shares (platform/share_wizard.h).
#pragma once

#include <string_view>

#include "platform/api/base.h"

namespace permora::host {

// What the system calls its wizard.
inline constexpr std::string_view kShareWizardName = "shrpubw";

// ERROR_FILE_NOT_FOUND where none is set.
DWORD RunShareWizard();

}  // namespace permora::host
