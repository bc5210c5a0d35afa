// Collects what is written into blocks.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "saved/saved_list_writer.h"

namespace permora {

class OutputBuffer {
  public:
    explicit OutputBuffer(SavedOutput& target) : output(target) {}

    DWORD Write(std::string_view bytes) {
        pending += bytes;
        return pending.size() < kBlockBytes ? DWORD{ERROR_SUCCESS} : Flush();
    }
    DWORD Flush() {
        const DWORD error = output.Write(pending);
        pending.clear();
        return error;
    }

  private:
    static constexpr std::size_t kBlockBytes = std::size_t{64} << 10;

    SavedOutput& output;
    std::string pending;
};

}  // namespace permora
