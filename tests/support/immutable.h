// Objects of Linux file systems that not even root can change.
#pragma once

#include <string>

namespace permora::test {

// While it lives, the file or folder at a host path keeps its attributes, owner and mode; what is in a folder
// can still be changed, but not made, renamed or removed.
class Immutable {
  public:
    explicit Immutable(std::string hostPath);
    ~Immutable();
    Immutable(const Immutable&) = delete;
    Immutable& operator=(const Immutable&) = delete;

    // False where the file system has no such thing.
    explicit operator bool() const { return isSet; }

  private:
    bool Set(bool immutable) const;

    const std::string path;
    const bool isSet;
};

}  // namespace permora::test
