// Names of accounts as texts.
#pragma once

#include <string>
#include <string_view>

namespace permora::host {

enum class AccountKind { kUser, kGroup };

// True when a name can stand in a DOMAIN\name text and still mean one account: not empty, valid UTF-8, no
// backslash and no control character.
bool IsPlainAccountName(std::string_view name);

// Windows knows one letter case in names, the host two.
enum class LetterCase { kSignificant, kIgnored };
bool IsSameName(std::string_view one, std::string_view other, LetterCase letterCase);

// Of ASCII letters only: the others' case is a matter of language.
std::string InUpperCase(std::string_view text);

}  // namespace permora::host
