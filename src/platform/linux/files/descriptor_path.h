// The host's paths of what a descriptor holds.
#pragma once

#include <array>
#include <string>

#include "platform/api/errors.h"

namespace permora::host {

// For calls that want a path, or refuse a descriptor opened with O_PATH: the magic link that leads to the
// very object, and stops there when the object is itself a link.
class DescriptorPath {
  public:
    explicit DescriptorPath(int descriptor);
    const char* Text() const { return text.data(); }

  private:
    std::array<char, 32> text{};
};

// Where the object lies just now; a link at the end of the path stays in it. Text only: by the time that it
// is used the path may lead elsewhere. ERROR_PATH_NOT_FOUND when it has none that fits.
DWORD HostPathOf(int descriptor, std::string& hostPath);

}  // namespace permora::host
