// An owned file descriptor.
#pragma once

#include <unistd.h>

#include <utility>

namespace permora::host {

// Closes its descriptor when it goes. -1: none.
class UniqueFd {
  public:
    UniqueFd() = default;
    explicit UniqueFd(int owned) : descriptor(owned) {}
    UniqueFd(UniqueFd&& other) noexcept : descriptor(std::exchange(other.descriptor, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        if (this != &other) Reset(std::exchange(other.descriptor, -1));
        return *this;
    }
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;
    ~UniqueFd() { Reset(); }

    int Get() const { return descriptor; }
    explicit operator bool() const { return descriptor >= 0; }
    void Reset(int replacement = -1) {
        if (descriptor >= 0) close(descriptor);
        descriptor = replacement;
    }

  private:
    int descriptor = -1;
};

}  // namespace permora::host
