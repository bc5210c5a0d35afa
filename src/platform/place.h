// A place and what somebody works on there, as one value: a folder that is held and names in it, drives, or
// shares. Whoever gets one needs neither the current directory nor a flag that says how to read the names.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/folder_files.h"

namespace permora {

enum class PlaceKind {
    kFolder,
    kDrives,
    kShares,
};

// Copies are cheap in what they hold: they share the folder, which stays open until the last one goes.
struct Place {
    PlaceKind kind = PlaceKind::kFolder;
    std::shared_ptr<const FolderHandle> folder;  // of kFolder, and null for the other kinds
    // Bare names in `folder`, roots of drives ("C:\"), or names of shares; in the ANSI code page.
    std::vector<std::string> names;
};

}  // namespace permora
