// What the desktop's shell says about files and folders, and opening them.
#pragma once

#include <string>

#include "framework/images.h"
#include "framework/list_ctrl.h"

namespace permora {

// The shell's name for the type of an object ("Text document"); empty when it has none.
std::string ShellTypeNameOf(const std::string& path);
// The shell's icon of an object; empty when it has none.
CIcon ShellIconOf(const std::string& path, ImageListKind kind);
// Opens a file as a double click on it does.
bool OpenByShell(const std::string& path);

}  // namespace permora
