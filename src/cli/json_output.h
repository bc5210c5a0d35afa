// What the commands print for programs.
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>

namespace permora {

using Json = nlohmann::ordered_json;

// Texts that are no UTF-8 are repaired.
void PrintJson(const Json& document);

// One object for each path that the user gave and that could be read. Of one path the object stands for
// itself, so that a script need not unwrap it.
void PrintJsonObjects(const Json& objects, std::size_t paths);

}  // namespace permora
