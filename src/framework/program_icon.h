// The icon of windows that have no other.
#pragma once

#include "framework/images.h"

namespace permora {

// For all top-level windows of the program that neither have an icon nor an owner with one. Once the toolkit
// runs.
void SetProgramIcon(const CIcon& icon);

}  // namespace permora
