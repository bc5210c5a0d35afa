// Saved texts as fuzz targets read and write them.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "saved/saved_list_reader.h"
#include "saved/saved_list_writer.h"

namespace permora {

class FuzzInput : public SavedInput {
  public:
    explicit FuzzInput(std::string_view text) : rest(text) {}
    DWORD Read(std::span<char> block, std::size_t& count) override {
        count = std::min(block.size(), rest.size());
        std::copy_n(rest.begin(), count, block.begin());
        rest.remove_prefix(count);
        return ERROR_SUCCESS;
    }

  private:
    std::string_view rest;
};

class FuzzOutput : public SavedOutput {
  public:
    DWORD Write(std::string_view bytes) override {
        text += bytes;
        return ERROR_SUCCESS;
    }
    std::string text;
};

}  // namespace permora
