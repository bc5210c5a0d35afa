// Visits every object below a folder, also while others change the tree.
#pragma once

#include <cstddef>

#include "platform/linux/files/object_handle.h"

namespace permora::host {

enum class WalkDecision {
    kDescend,   // visit what is below this object, if it is a folder
    kPassOver,  // leave alone what is below it
    kStop,      // end the walk
};

class TreeVisitor {
  public:
    virtual ~TreeVisitor() = default;

    // One object, before all that is below it. `name` is its bare name as the host writes it. `depth` is 0
    // for what stands directly in the walked folder and one more for each folder in between. Handle and name
    // live for the call.
    virtual WalkDecision Visit(const ObjectHandle& object, const char* name, std::size_t depth) = 0;

    // An object that was not visited (ERROR_NOT_SAME_DEVICE: something is mounted on it), or a folder that
    // was not listed to its end; the walk goes on with the next one. An empty name means the walked folder
    // itself.
    virtual void Fail(DWORD error, const char* name, std::size_t depth) = 0;

    // The walk's: where the object stands that comes next.
    void SetFolder(int descriptor) { openFolder = descriptor; }

  protected:
    // The descriptor of the folder in which the visited object stands. It lives for the call, not owned.
    int Folder() const { return openFolder; }

  private:
    int openFolder = -1;
};

// Walks by open handles: links are visited and never followed, what is mounted below (another volume, or
// another place of this one) is neither visited nor entered, and a folder that is moved or replaced by a link
// in the middle of the walk leads nowhere else. An object that vanishes is no failure. Objects come in the
// order in which the file system lists them; those that appear or move during the walk are visited or not, as
// for any listing.
//
// Costs one open descriptor and 8 KiB for each level of folders and nothing for the number of objects. The
// process's limit on open descriptors is raised as far as it may; deeper trees fail with
// ERROR_TOO_MANY_OPEN_FILES for what is below. Needs no stack to speak of. Linux 5.6 or newer.
void WalkTree(const ObjectHandle& folder, TreeVisitor& visitor);

}  // namespace permora::host
