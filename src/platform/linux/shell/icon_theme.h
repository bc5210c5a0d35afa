// Pictures of the desktop's icon theme.
//
// Format: index.theme, as freedesktop.org describes icon themes.
#pragma once

#include <string>
#include <vector>

#include "platform/linux/shell/ini_text.h"

namespace permora::host {

class IconTheme {
  public:
    // The theme `name` with those that it inherits from, in the "icons" folders below `dataFolders`, and
    // "hicolor" after them all. A theme that is not there counts as empty.
    IconTheme(const std::string& name, const std::vector<std::string>& dataFolders);

    // That of this user's desktop, read once.
    static const IconTheme& Shared();

    // The path of the file, PNG or else a drawing (SVG), for the first of `names` that the nearest theme has,
    // in the size that is closest to `size` pixels; empty when there is none.
    std::string FindPicture(const std::vector<std::string>& names, int size) const;

  private:
    // In pixels: what the pictures are, and for which sizes they are meant.
    struct Sizes {
        int nominal;
        int smallest;
        int largest;
    };
    struct Folder {
        std::string path;  // with a slash at its end
        Sizes sizes;
    };

    // Returns the themes that it inherits from.
    std::vector<std::string> AddTheme(const std::string& name, const std::vector<std::string>& dataFolders);
    static Sizes SizesOf(const IniGroups& index, const std::string& part);
    static std::string FindIn(const std::vector<Folder>& folders, const std::string& name, int size);

    std::vector<std::vector<Folder>> themes;
};

}  // namespace permora::host
