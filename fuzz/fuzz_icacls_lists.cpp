// Saved lists in the form of the system's tool: whatever is accepted is a relative path with a DACL.
#include <cstdint>

#include "fuzz/require.h"
#include "fuzz/saved_texts.h"
#include "saved/saved_path.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace permora;
    std::string text = "\xFF\xFE";
    text.append(reinterpret_cast<const char*>(data), size);
    FuzzInput input(text);
    SavedFault fault;
    const auto reader = SavedListReader::Open(input, fault);
    Require(reader != nullptr, "a text with this mark is in this form");
    SavedObject object;
    while (reader->Next(object, fault)) {
        Require(IsPathBelow(object.path), "a path leads below the folder");
        Require(object.descriptor && !object.descriptor->value.owner && !object.descriptor->value.group &&
                    object.descriptor->value.saclBytes.empty(),
                "a DACL and nothing else");
    }
    return 0;
}
