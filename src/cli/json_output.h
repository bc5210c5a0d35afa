// The commands' output for programs.
#pragma once

#include <string>
#include <utility>

#include "cli/command.h"
#include "report/json_text.h"

namespace permora {

// --json.
struct JsonFlag : Flag {
    explicit JsonFlag(OptionPlace place)
        : Flag(place, "--json", "As JSON for programs: one object with \"results\"") {}
};

// A document that is printed result by result.
class JsonPrinter {
  public:
    // The name of the command that prints it.
    explicit JsonPrinter(std::string command) : document(std::move(command)) {}

    void Add(const Json& result);
    // With further members.
    void End(const Json& rest = Json::object());

  private:
    JsonDocumentText document;
};

// A document with these results, an array.
void PrintJson(const std::string& command, const Json& results, const Json& rest = Json::object());

}  // namespace permora
