// The objects that a change of a tree left as they were, told in one order whatever the order of the walk.
#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "platform/tree_security.h"

namespace permora {

class PassedOverObjects {
  public:
    void Add(std::string path, DWORD error) { objects.emplace_back(std::move(path), error); }
    // In the order of their paths.
    void Tell(TreeObserver& observer) {
        std::sort(objects.begin(), objects.end());
        for (const auto& [path, error] : objects)
            observer.PassOver(path, error);
    }

  private:
    std::vector<std::pair<std::string, DWORD>> objects;
};

}  // namespace permora
