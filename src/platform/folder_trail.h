// Where a walk stands, in names.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace permora {

// The folders from below the walked one down to what is looked at. The depth of an object is the number of
// folders between the walked one and the object.
class FolderTrail {
  public:
    // The walk goes into the folder `name`, which has this depth itself.
    void Enter(std::string name, std::size_t depth) {
        folders.resize(depth);
        folders.push_back(std::move(name));
    }
    // What comes next has this depth.
    void LeaveTo(std::size_t depth) { folders.resize(depth); }

    // The path of an object below the walked folder, with backslashes. Without a depth: of one in the folder
    // that was entered last.
    std::string PathOf(const std::string& name, std::size_t depth) const {
        std::string path;
        for (std::size_t i = 0; i < depth; ++i)
            path += folders[i] + '\\';
        return path + name;
    }
    std::string PathOf(const std::string& name) const { return PathOf(name, folders.size()); }

  private:
    std::vector<std::string> folders;  // by depth
};

}  // namespace permora
