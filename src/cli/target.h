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
    // As it was found at the start of the program, before any question.
    RememberedObject object;
    std::string folder;  // absolute, with a separator at its end; empty for a drive root
    // The held current directory, for relative paths, which stay valid when it is renamed; null for other
    // paths.
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

// The same with the reason printed: false also when a file in the current directory has a name that could be
// meant, too.
bool MakeCertainTarget(const std::string& argument, const std::shared_ptr<const FolderHandle>& start,
                       Target& target, ConsoleMessages& messages);

// The same for an argument beside those of an ObjectCommand; the target is remembered.
bool MakeNamedTarget(const std::string& argument, Target& target, ConsoleMessages& messages);

// ServerOfPaths of what the arguments name.
std::string ServerOfArguments(const std::vector<std::string>& arguments);

// Remembers the object of the target. If it cannot be found, FindTarget reports it.
void RememberTarget(Target& target);

// Finds the object of a remembered target. On false, the reason was printed: it cannot be found, another
// object has its name now, or it is a link or a file with a separator at the end. For every other program,
// "link/" means the target of the link, so the link itself would be the wrong object.
bool FindTarget(const Target& target, HeldObject& object, ConsoleMessages& messages);

// Opens the folder in which the target has its name. Returns a system error code.
DWORD OpenFolderOf(const Target& target, FolderHandle& folder);

// The path of something below the target, which is given with backslashes (empty: the target itself), as the
// user would have typed it.
std::string TypedPath(const Target& target, const std::string& below);

}  // namespace permora
