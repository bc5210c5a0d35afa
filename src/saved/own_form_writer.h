// Our own text form of saved lists, written.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "saved/output_buffer.h"
#include "saved/saved_list_writer.h"
#include "saved/sha256.h"

namespace permora {

class OwnFormWriter : public SavedListWriter {
  public:
    explicit OwnFormWriter(SavedOutput& output) : buffer(output) {}

    DWORD Begin(const SavedHead& head) override;
    DWORD BeginTop(const SavedTop& top) override;
    DWORD Add(std::string_view path, SavedKind kind, std::span<const std::uint8_t> descriptor) override;
    DWORD AddGap(std::string_view path, SavedKind kind, DWORD error) override;
    DWORD MarkIncomplete() override;
    DWORD End() override;

  private:
    DWORD WriteLine();
    DWORD FindId(std::string_view descriptor, std::string_view& id);
    DWORD Forget();

    OutputBuffer buffer;
    Sha256 hash;
    std::string line;                                    // its capacity is reused
    std::unordered_map<std::string, std::string> known;  // descriptors and their names in the text
    std::unordered_map<std::string, const std::string*> names;
    std::size_t knownBytes = 0;
    std::uint64_t objects = 0;
    bool isIncomplete = false;
};

}  // namespace permora
