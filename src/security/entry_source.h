// Where the inherited entries of an object come from.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/held_object.h"

namespace permora {

enum class SourceKind : std::uint8_t {
    kOwn,      // the entry is not inherited
    kFolder,   // the nearest folder above whose own entries hand it down
    kNobody,   // no folder above hands it down, as after a move
    kUnknown,  // the search ended at a folder that cannot be read, or at the root of the volume
};

struct EntrySource {
    SourceKind kind = SourceKind::kOwn;
    std::string folder;  // the path of kFolder, absolute
    std::string reason;  // of kUnknown, half a sentence
};

// Looks for the sources of the entries in `dacl`, as it was read from the object (ReadSecurity): one for
// each, in the list's order. Goes up folder by folder, each held as the one that holds the last, and compares
// what each hands down by the rules of inheritance, as platform/nt/entry_effects.h does. A protected list
// inherits nothing. A system error code for the object's own descriptor; `sources` is then untouched.
DWORD FindEntrySources(const HeldObject& object, PACL dacl, std::vector<EntrySource>& sources);

// "C:\\data", "no folder above hands it down", "not known: Access is denied."; empty for the object's own.
std::string SourceText(const EntrySource& source);

}  // namespace permora
