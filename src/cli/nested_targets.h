// Objects of a dry run that stand below each other.
#pragma once

#include <map>
#include <string>
#include <utility>

#include "cli/messages.h"
#include "cli/target.h"

namespace permora {

// A change of both would find what it has made of the upper one when it comes to the lower one. A dry run
// finds what is there now, and says so.
class NestedTargets {
  public:
    // Leaves the target the subject of the messages.
    void Add(const Target& target, const HeldObject& object, ConsoleMessages& messages);

  private:
    using Known = std::pair<const std::string, std::string>;
    const Known* Around(const std::string& path) const;
    const Known* Within(const std::string& path) const;

    std::map<std::string, std::string> known;  // paths as FindTop has them, and as they were typed
    bool isSaid = false;
};

}  // namespace permora
