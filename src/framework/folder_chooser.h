// The desktop's dialog for choosing a folder.
#pragma once

#include <string>

#include "framework/window.h"

namespace permora {

// Lets the user choose a folder, whose path then is in `path`. False, and `path` as it was, when the user
// chose none.
[[nodiscard]] bool ChooseFolder(CWnd& owner, const std::string& title, std::string& path);

}  // namespace permora
