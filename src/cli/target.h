// An object that was named on the command line.
#pragma once

#include <memory>
#include <string>

#include "cli/messages.h"
#include "platform/api/base.h"
#include "platform/folder_files.h"
#include "security/object_security.h"

namespace permora {

struct Target {
    std::string argument;  // as typed: how every message and listing names the object
    // As it was found when the program was started, before anything was asked about it.
    RememberedObject object;
    std::string folder;  // absolute, with a separator at its end; empty for a drive root
    // What was typed relative to the current directory is found from there, whatever that is called by then;
    // null for everything else.
    std::shared_ptr<const FolderHandle> start;
    std::string folderFromStart;  // empty: the start itself
    std::string name;             // bare, or "C:\" for a drive root
    PlaceKind place = PlaceKind::kFolder;
    bool endsWithSeparator = false;  // as typed: it must be a folder
};

// Finds out what an argument names, relative to the current directory, which is `start` (null when it cannot
// be held). Only the text is looked at: the object need not exist, and is held by RememberTarget. On failure
// `target` is untouched. Returns a system error code.
DWORD MakeTarget(const std::string& argument, const std::shared_ptr<const FolderHandle>& start,
                 Target& target);

// Holds what the target leads to, so that it is known again. When it cannot be found, FindTarget says so.
void RememberTarget(Target& target);

// Finds the object of a target that was remembered. On false the reason was printed: it cannot be found,
// another object has its name by now, or it is a link or a file with a separator behind it ("link/" means
// what the link leads to for every other program; to take the link would be another object than the one
// meant).
bool FindTarget(const Target& target, HeldObject& object, ConsoleMessages& messages);

// Opens the folder in which the target has its name. Returns a system error code.
DWORD OpenFolderOf(const Target& target, FolderHandle& folder);

// The path of something below the target, which is given with backslashes (empty: the target itself), as the
// user would have typed it.
std::string TypedPath(const Target& target, const std::string& below);

}  // namespace permora
