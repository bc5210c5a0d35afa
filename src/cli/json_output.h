// The commands' output for programs.
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>

#include "cli/command.h"
#include "security/access_entry_list.h"

namespace permora {

using Json = nlohmann::ordered_json;

enum class JsonShape { kObjects, kArray };

// --json.
struct JsonFlag : Flag {
    JsonFlag(OptionPlace place, JsonShape shape)
        : Flag(place, "--json",
               shape == JsonShape::kArray ? "As JSON: an array of objects"
                                          : "As JSON: one object, or an array of several") {}
};

// In ASCII, with \u escapes for all other characters. In a text that is not UTF-8, U+FFFD replaces the
// invalid bytes. If it is the member "x" of an object, the member "xBytes" after it holds all bytes in
// hexadecimal.
void PrintJson(const Json& document);

// An array that is printed element by element, as PrintJson would print the whole.
class JsonArrayPrinter {
  public:
    void Add(const Json& element);
    void End();

  private:
    bool isEmpty = true;
};

// The entries of a list, which were loaded from `dacl`: null where there is no list and everyone may do
// everything, [] where the list is empty and nobody may do anything.
Json EntriesJson(PACL dacl, const AccessEntryList& entries);

// One object for each path that the user gave and that could be read. For a single path, the object is not in
// an array, so that a script need not unwrap it.
void PrintJsonObjects(const Json& objects, std::size_t paths);

}  // namespace permora
