// A tree on a volume, read object by object in the order of saved lists.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/held_object.h"
#include "platform/read_ahead.h"
#include "saved/saved_list.h"

namespace permora {

// An object that was come to. All of it lives for the call that it is handed to.
struct ReadObject {
    std::string_view path;                     // below the top, with backslashes; empty: the top itself
    SavedKind kind;                            // kUnknown never
    std::span<const std::uint8_t> descriptor;  // empty for kMounted, kUnread and kUnlisted
    DWORD error = ERROR_SUCCESS;               // of kUnread and kUnlisted
    // Of what is on the volume, also of an object that is kUnread; not of kUnlisted, kMounted and saved ones.
    TreeObjectKind is = TreeObjectKind::kFile;
    bool isStored = true;  // as TreeObject::isStored
};

class TreeVisitor {
  public:
    virtual ~TreeVisitor() = default;
    // False ends the reading.
    virtual bool Visit(const ReadObject& object) = 0;
    // Asked after Visit: whether what is in the folder is read, too.
    virtual bool Enters(std::string_view /*folder*/) { return true; }
};

// Reads the top and everything below it: by held folders, never through a link, and nothing of what is
// mounted below. The visitor is called on this thread alone, for one object after the other: a folder before
// its contents, names sorted byte by byte. Threads that help read ahead (AheadFolder). An object that
// vanishes is left out; a folder may be told as kUnlisted behind its contents when it was moved elsewhere
// (ERROR_FILE_INVALID) or the volume is lost (IsVolumeLost). 0, or ERROR_OPERATION_ABORTED by the visitor.
DWORD ReadTree(const HeldObject& top, SECURITY_INFORMATION parts, TreeVisitor& visitor,
               std::optional<std::size_t> threads = std::nullopt);

// The same for what is in `folder`, whose path below the top is `path`.
DWORD ReadBelow(AheadFolder folder, const std::string& path, TreeVisitor& visitor);

// What an object is that TreeFolder has read with the result `error`.
ReadObject ReadResult(std::string_view path, const TreeObject& object, DWORD error);

}  // namespace permora
