// Trees of objects with stored descriptors, and the plain loop over them that the benchmarks compare with.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "platform/tree_security.h"

namespace permora::bench {

// Observes a walk that must reach every object.
class SilentObserver : public TreeObserver {
  public:
    bool Begin(const char* /*name*/) override { return true; }
    void PassOver(const std::string& path, DWORD /*error*/) override { Check(false, "passed over " + path); }
};

// Folders of 100 files below `top`, `objects` in all, each of which has the two entries that it inherits and
// no others. False if something could not be made.
bool MakeSampleTree(const std::string& top, std::size_t objects);

// Reads the attribute `name` of `top` and every object below it. Returns the number of objects.
std::size_t ReadAttributes(const std::string& top, const char* name);
// Reads the attribute `name` of `top` and every object below it and writes it again with one meaningless byte
// changed, so that the file system has to store it. With an owner, the object is given to that user in
// between. Returns the number of objects.
std::size_t RewriteAttributes(const std::string& top, const char* name,
                              std::optional<uid_t> owner = std::nullopt);

// The host paths of all objects that MakeSampleTree made below `top`, folders before their files.
std::vector<std::string> SampleTreePaths(const std::string& top, std::size_t objects);

}  // namespace permora::bench
