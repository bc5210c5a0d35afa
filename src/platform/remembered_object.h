// Objects that are known again: a service of our own beside the system's.
//
// While somebody thinks about a question, others may give the name that it is about to something else. So the
// object is remembered before the question, and what its name leads to afterwards is compared with it.
#pragma once

#include <memory>
#include <string>

#include "platform/folder_files.h"

namespace permora {

class HeldObject;

// An object, a link itself and never what it leads to, as it was found under a name. An object that was made
// later is recognised as another one, even if it has the number of one that is gone. Copies are cheap and one
// object.
//
// On Linux each keeps its object open while half of the descriptors that the process may have suffice; those
// after that are known by what their volume calls them (number and generation, or time of creation). A file
// that is kept open keeps its space on the disk until the last copy goes.
class RememberedObject {
  public:
    RememberedObject() = default;  // nothing: no object is it
    // `path` is relative to `start`, an empty one means `start` itself; without `start` it is a path of
    // files.h. What cannot be found is remembered with the error.
    RememberedObject(std::shared_ptr<const FolderHandle> start, std::string path);

    const std::shared_ptr<const FolderHandle>& Start() const { return start; }
    const std::string& Path() const { return path; }
    // Why the object could not be found, or 0.
    DWORD Error() const;
    // Of what was found.
    FolderEntryKind Kind() const;

    // Holds what the name leads to now. ERROR_FILE_INVALID when that is another object; Error() when none was
    // found in the first place.
    DWORD Find(HeldObject& object) const;

    // ERROR_FILE_INVALID when the argument is another object, or this is none.
    DWORD Verify(const HeldObject& object) const;
    DWORD Verify(const FileHandle& file) const;
    DWORD Verify(const FolderHandle& folder) const;

  private:
    DWORD FindByName(HeldObject& object) const;

    struct Inside;
    std::shared_ptr<const FolderHandle> start;
    std::string path;
    std::shared_ptr<const Inside> inside;  // null: nothing
};

}  // namespace permora
