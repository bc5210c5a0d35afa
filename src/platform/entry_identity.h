// What tells an entry of a folder from every other one: a service of our own beside the system's.
//
// While somebody thinks about a question, others may give the name that it is about to something else. So the
// object is remembered before the question, and what its name leads to afterwards is compared with it.
#pragma once

#include <memory>

namespace permora {

// An object as it was found under a name (FolderHandle::Identify). One that was made later is told from it,
// also where it got the number of the object that is gone. Any number of them may live at once: on Linux each
// keeps its object open for as long as a quarter of the descriptors that the process may have are enough, and
// those after that are known by what their volume calls them (number and generation, or time of creation).
class EntryIdentity {
  public:
    EntryIdentity();
    EntryIdentity(EntryIdentity&& other) noexcept;
    EntryIdentity& operator=(EntryIdentity&& other) noexcept;
    ~EntryIdentity();

  private:
    friend class FileHandle;
    friend class FolderHandle;
    struct Inside;
    std::unique_ptr<Inside> inside;  // null: of no object
};

}  // namespace permora
