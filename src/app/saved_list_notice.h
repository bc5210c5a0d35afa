// What the windowed program says when it is opened on a saved list.
#pragma once

#include <string>

namespace permora {

// `argument` as typed. Empty when no readable saved list of our own form is there.
std::string SavedListNotice(const std::string& argument);

}  // namespace permora
