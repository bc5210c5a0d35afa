// A registry file on the disk.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "platform/api/errors.h"
#include "platform/linux/registry/registry_document.h"

namespace permora::host {

enum class RegistryAudience {
    kOwner,     // the file can be read by its owner only
    kEveryone,  // and by everyone else; the owner alone can change it
};

// The file "registry.reg" in a folder of its own. It is replaced whole, so whoever reads sees the old file or
// the new one, and a change is made under a lock, so none is lost. The folder's last component and the files
// in it are never links, and they belong to the user or to root; anything else is ERROR_ACCESS_DENIED.
class RegistryStore {
  public:
    // An empty folder name: there is no store, and everything fails with ERROR_PATH_NOT_FOUND.
    RegistryStore(std::string folderPath, RegistryAudience readers)
        : path(std::move(folderPath)), audience(readers) {}

    // A folder or file that is missing is an empty document. ERROR_BADDB when the file is no registry file.
    DWORD Read(RegistryDocument& document) const;

    // Hands the document as it is now to `change` and stores what it made of it, unless it answers with an
    // error. ERROR_BUSY when others hold the lock for longer than five seconds. On failure the file is as it
    // was.
    DWORD Change(const std::function<DWORD(RegistryDocument&)>& change) const;

  private:
    std::string path;
    RegistryAudience audience;
};

}  // namespace permora::host
