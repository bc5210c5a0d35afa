// What the browser's columns tell about an object's security.
#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "platform/place.h"

namespace permora {

enum class SecurityColumn { kOwner, kInherits, kOwnEntries, kMode };
inline constexpr std::size_t kSecurityColumnCount = 4;

const char* HeaderOf(SecurityColumn column);

// By the columns. What cannot be read has the reason in its place.
using SecurityTexts = std::array<std::string, kSecurityColumnCount>;

// Of the object called `name` in a folder or among the drives: the owner, whether its list takes entries over
// from the folder above ("Yes", "No"), how many entries are its own, and the host's mode ("rwxr-x---", with
// "+" where a POSIX access list stands behind it; empty where the host has none). A link is an object of its
// own. May wait for the disk and for a domain. One thread at a time for each folder.
SecurityTexts ReadSecurityTexts(const Place& place, const std::string& name);

}  // namespace permora
