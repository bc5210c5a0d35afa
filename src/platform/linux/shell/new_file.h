// A file that has its name only when it is whole.
#pragma once

#include <string>

#include "platform/linux/shell/target_folder.h"

namespace permora::host {

enum class NewFilePlace { kFree, kReplacing };

// Unless it was published, the file goes with this object. Where it is written under a name of its own
// (unfinished_files.h), that stays when the process dies in the middle; on most volumes it has none.
class NewFile {
  public:
    NewFile() = default;
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    // Makes it in `folder`, which must outlive it, with its descriptor and nothing in it. `size` in bytes is
    // what will be written: where a file cannot be without a name, a small one that replaces nothing has its
    // final one from the beginning, since two more changes of the folder take longer than its contents. 0 or
    // an error code, ERROR_ALREADY_EXISTS when something has the name.
    DWORD Make(TargetFolder& folder, const std::string& hostName, mode_t mode, off_t size,
               NewFilePlace place);

    // Open for reading and writing.
    const ObjectHandle& Object() const { return object; }
    // The name that it has in its folder just now; empty while it has none.
    const std::string& NameNow() const { return nameNow; }

    // Gives it its name; in NewFilePlace::kReplacing what had the name is gone then. 0 or an error code,
    // ERROR_ALREADY_EXISTS when something has the name that must not be replaced.
    DWORD Publish();

  private:
    enum class FirstName { kFinal, kTemporary };

    DWORD MakeNamed(mode_t mode, FirstName first);
    DWORD TakeName(const std::string& name);

    TargetFolder* target = nullptr;
    std::string finalName;
    std::string nameNow;
    NewFilePlace newPlace = NewFilePlace::kFree;
    ObjectHandle object;
    bool isPublished = false;
};

// To be called when all is written: servers, and programs that serve a volume, may report lost writes only
// when a file is closed. 0 or an error code.
DWORD FinishWriting(const ObjectHandle& file);

}  // namespace permora::host
