// The folders that a deletion has entered, for hosts that tell where an object is.
#pragma once

#include <string>
#include <vector>

namespace permora {

class FolderTrail {
  public:
    void Enter(const std::string& name) { names.push_back(name); }
    void Leave() { names.pop_back(); }
    void Clear() { names.clear(); }

    // The path of an object of the current folder from the folder of the first name on, with backslashes.
    std::string PathOf(const std::string& name) const {
        std::string path;
        for (const std::string& each : names)
            path += each + '\\';
        return path + name;
    }

  private:
    std::vector<std::string> names;
};

}  // namespace permora
