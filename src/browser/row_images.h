// The pictures of the browser's rows, large and small.
#pragma once

#include <map>
#include <memory>
#include <span>
#include <string>

#include "framework/list_ctrl.h"
#include "platform/shell_icons.h"

namespace permora {

class RowImages {
  public:
    // Begins anew with these icon resources, none of them when one cannot be loaded, and gives both image
    // lists to the list. False when an image list cannot be made.
    bool Rebuild(CListCtrl& list, std::span<const unsigned int> iconIds);
    // Adds the shell's icon for a kind of objects (ShellIconKindOf), and returns its image. Objects of one
    // kind share an icon, so a long list costs little.
    int AddShellIcon(const std::string& kind);

  private:
    using Picture = std::shared_ptr<const ShellPicture>;

    CIcon OwnIcon(unsigned int id);
    CIcon IconOf(const Picture& picture);

    CImageList largeImages;
    CImageList smallImages;
    std::map<unsigned int, CIcon> ownIcons;  // decoded once, however often the list is filled
    std::map<Picture, CIcon> shellIcons;     // what was made of the shell's pictures, which live as long
};

}  // namespace permora
