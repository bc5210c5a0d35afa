// Records the reports of a change of a tree.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/tree_security.h"

namespace permora::test {

class RecordingObserver : public TreeObserver {
  public:
    bool Begin(const char* name) override {
        begun.emplace_back(name);
        return begun.size() <= limit;
    }
    void PassOver(const std::string& path, DWORD error) override { passedOver.emplace_back(path, error); }

    std::size_t limit = 1'000'000;  // of objects; before the next one the walk is stopped
    std::vector<std::string> begun;
    std::vector<std::pair<std::string, DWORD>> passedOver;
};

}  // namespace permora::test
