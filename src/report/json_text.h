// JSON for programs, as the terminal program and windows write it.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "security/access_entry_list.h"

namespace permora {

using Json = nlohmann::ordered_json;

// In ASCII, with \u escapes for all other characters, without a line break at the end. In a text that is not
// UTF-8, U+FFFD replaces the invalid bytes. If it is the member "x" of an object, the member "xBytes" after
// it holds all bytes in hexadecimal.
std::string JsonText(const Json& document);

// The form of the documents (docs/json.md). It counts up when a program that reads them must know of a
// change.
inline constexpr int kJsonVersion = 1;

// A document that is written result by result: "version", "command", "results" and further members. The parts
// together are the JsonText of the whole, and a line break.
class JsonDocumentText {
  public:
    explicit JsonDocumentText(std::string commandName) : command(std::move(commandName)) {}

    std::string Add(const Json& result);
    // `rest` has the further members.
    std::string End(const Json& rest = Json::object());

  private:
    std::string Head() const;

    const std::string command;
    bool isEmpty = true;
};

// The entries of a list, which were loaded from `dacl`: null where there is no list and everyone may do
// everything, [] where the list is empty and nobody may do anything.
Json EntriesJson(PACL dacl, const AccessEntryList& entries);

}  // namespace permora
