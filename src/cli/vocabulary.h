// The words that a user types for rights and scopes, understood as the lists and dialogs name them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/api/base.h"

namespace permora {

// The mask of a comma-separated list of rights. Each is one of the names of kAccessRights in any of its three
// wordings (letter case does not matter, nor do blanks around a slash) or a number, hexadecimal with 0x or
// decimal. SYNCHRONIZE is left out, since it is nobody's choice. Nothing when a name is unknown, a number has
// bits that no right stands for, or no right remains; `problem` then says why, else it is untouched.
std::optional<DWORD> ParseRights(std::string_view list, std::string& problem);
// Whether such a list names full control as a whole, rather than all rights one by one or as a mask.
bool NamesFullControl(std::string_view list);

// The mask of one of kUsableCombinations given by its text; letter case does not matter.
std::optional<DWORD> ParseCombination(std::string_view text);

// The place in kInheritanceScopes of a scope given by its index or its text.
std::optional<int> ParseScope(std::string_view text);

}  // namespace permora
