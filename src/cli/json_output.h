// The commands' output for programs.
#pragma once

#include <cstddef>

#include "cli/command.h"
#include "report/json_text.h"

namespace permora {

enum class JsonShape { kObjects, kArray };

// --json.
struct JsonFlag : Flag {
    JsonFlag(OptionPlace place, JsonShape shape)
        : Flag(place, "--json",
               shape == JsonShape::kArray ? "As JSON: an array of objects"
                                          : "As JSON: one object, or an array of several") {}
};

// As JsonText, with a line break.
void PrintJson(const Json& document);

// An array that is printed element by element.
class JsonArrayPrinter {
  public:
    void Add(const Json& element);
    void End();

  private:
    JsonArrayText array;
};

// One object for each path that the user gave and that could be read. For a single path, the object is not in
// an array, so that a script need not unwrap it.
void PrintJsonObjects(const Json& objects, std::size_t paths);

}  // namespace permora
