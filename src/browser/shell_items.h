// What the desktop's shell says about files and folders, and opening them.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "framework/images.h"
#include "framework/list_ctrl.h"
#include "platform/shell_icons.h"

namespace permora {

// The shell's name for the kind of an object ("Text document"); empty when it has none.
std::string ShellTypeName(const std::string& path);

// Opens a file, or an address, with the program that the shell has for it. `owner` may be null.
bool OpenByShell(HWND owner, const std::string& target);

// The shell's icons. Objects of one kind share one, so that a long list costs little.
class ShellIcons {
  public:
    // Empty when the shell has none.
    CIcon Find(const std::string& path, ImageListKind kind);

  private:
    // What was made of the shell's pictures, which live as long.
    std::map<std::shared_ptr<const ShellPicture>, CIcon> icons;
};

}  // namespace permora
