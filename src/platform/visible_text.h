// Texts from a disk or an account database, made fit for people to read.
#pragma once

#include <string>
#include <string_view>

namespace permora {

// `text` as UTF-8 in which everything can be seen: control characters, what turns the writing direction or
// cannot be seen, and the private-use characters by which the platform layer writes what no Windows name
// holds become \u{202e}, bytes that are no UTF-8 \x9f.
std::string VisibleText(std::string_view text);

}  // namespace permora
