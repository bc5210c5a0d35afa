// Saved texts in memory.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "saved/saved_list_reader.h"
#include "saved/saved_list_writer.h"

namespace permora::test {

class MemoryOutput : public SavedOutput {
  public:
    DWORD Write(std::string_view bytes) override {
        text += bytes;
        return ERROR_SUCCESS;
    }

    std::string text;
};

class MemoryInput : public SavedInput {
  public:
    // Hands over at most `step` bytes at a time.
    explicit MemoryInput(std::string_view text, std::size_t step = 4096) : rest(text), most(step) {}

    DWORD Read(std::span<char> block, std::size_t& count) override {
        count = std::min({block.size(), rest.size(), most});
        std::copy_n(rest.begin(), count, block.begin());
        rest.remove_prefix(count);
        return ERROR_SUCCESS;
    }

  private:
    std::string_view rest;
    std::size_t most;
};

// A text read to its end.
struct ReadText {
    SavedHead head;
    std::vector<SavedTop> tops;
    std::vector<SavedObject> objects;
    SavedFault fault;
};

inline ReadText Read(std::string_view text, std::size_t step = 4096) {
    ReadText read;
    MemoryInput input(text, step);
    const auto reader = SavedListReader::Open(input, read.fault);
    if (!reader) return read;
    read.head = reader->Head();
    SavedObject object;
    while (reader->Next(object, read.fault)) {
        if (reader->TopCount() > read.tops.size()) read.tops.push_back(reader->Top());
        read.objects.push_back(object);
    }
    return read;
}

}  // namespace permora::test
