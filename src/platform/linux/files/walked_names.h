// Where a walk stands, in names.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace permora::host {

// The folders from below the walked one down to what is looked at; depths are those of TreeVisitor.
class WalkedNames {
  public:
    // The walk goes into the folder `name`, which has this depth itself.
    void Enter(const std::string& name, std::size_t depth) {
        folders.resize(depth);
        folders.push_back(name);
    }

    // The path of an object below the walked folder, with backslashes.
    std::string PathOf(const std::string& name, std::size_t depth) const {
        std::string path;
        for (std::size_t i = 0; i < depth; ++i)
            path += folders[i] + '\\';
        return path + name;
    }

  private:
    std::vector<std::string> folders;  // by depth
};

}  // namespace permora::host
