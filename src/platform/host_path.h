// Paths as the host's own users type them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/api/base.h"

namespace permora {

// The absolute path, in the form of platform/api/files.h, of what someone typed as an argument: a path with a
// drive letter or a leading backslash as it is, anything else as the host writes it, relative to the current
// directory. Empty (no path at all) when that directory was deleted. Text only; the object need not exist.
// Both forms of a path mean the same object.
std::string PathFromArgument(const char* argument);

// The absolute path that GetFullPathNameA makes of a path, of any length; nothing of it need exist. 0 or a
// system error code, with `full` as before.
DWORD FullPathOf(const std::string& path, std::string& full);

// What stands at `below`, names with backslashes between them, under the object that was typed as `argument`
// (empty: that object): as it is typed, with the host's own names, for other programs to find it by. Below an
// argument with a drive letter or a leading backslash the names stay as they are.
std::string PathBelowArgument(const std::string& argument, std::string_view below);

// The path that someone typed into a window: one that begins with a slash is the host's, as an argument is.
// Any other stays as it is, and relative to the current directory.
std::string PathFromTyped(const std::string& text);

// The path of an object as the host's own programs take it, by its absolute path with a drive letter: text
// only. Empty when there is no such drive, or no name of the host is shown so.
std::string HostPathFromPath(const std::string& path);

// An argument relative to the current directory, whatever that is called by then: for an argument as the host
// writes it that names this directory (empty) or something below it. Nothing for every other one.
std::optional<std::string> PathBelowCurrent(const char* argument);

// Whether the host finds something in the current directory by this name or relative path. Who can write
// there can give any names, and a shell puts them in the place of "*": of an argument that would mean
// something else than that file, nobody knows which of the two was meant.
bool IsNameHere(const char* argument);

// Whether that is so of an argument that is taken for a path with a drive letter or a leading backslash.
bool IsAmbiguousArgument(const char* argument);

}  // namespace permora
