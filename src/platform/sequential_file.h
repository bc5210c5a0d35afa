// Files that are read from their beginning to their end, and files that are written so: a service of our own
// beside the system's.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "platform/api/base.h"

namespace permora {

// A file that is held open: what is read is that file, whatever becomes of its name. All calls answer with 0
// or a system error code. One thread at a time.
class SequentialFile {
  public:
    SequentialFile();
    SequentialFile(SequentialFile&& other) noexcept;
    SequentialFile& operator=(SequentialFile&& other) noexcept;
    ~SequentialFile();

    // `path` is one of files.h; links are followed. ERROR_ACCESS_DENIED for a folder. `file` is replaced only
    // on success.
    static DWORD Open(const std::string& path, SequentialFile& file);
    // Fills `block` from its beginning; `count` is how much there was, 0 at the end.
    DWORD Read(std::span<char> block, std::size_t& count);
    // The next Read begins at the file's beginning. ERROR_NOT_SUPPORTED for what can be read once only.
    DWORD Rewind();

  private:
    struct Inside;
    std::unique_ptr<Inside> inside;  // null: no file
};

// A file that gets its name when it is complete, and takes the place of the file that had the name before.
// Until then nobody finds it half written, and nothing stays of it when the program ends early; where the
// volume cannot keep a file without a name (all but Linux's own), a killed process leaves one that is called
// ".permora-new-" and 16 digits. On volumes with modes only this user may read it (0600); elsewhere it has
// what its folder hands down.
class FileReplacement {
  public:
    FileReplacement();
    FileReplacement(FileReplacement&& other) noexcept;
    FileReplacement& operator=(FileReplacement&& other) noexcept;
    ~FileReplacement();  // without Complete: nothing stays

    // The folder of `path` is held from here on. ERROR_CANT_RESOLVE_FILENAME when a link has the name,
    // ERROR_ACCESS_DENIED when a folder or a device has it: neither is followed or replaced. (One that gets
    // the name later is replaced, a link itself.)
    static DWORD Begin(const std::string& path, FileReplacement& file);
    DWORD Write(std::string_view bytes);
    // Waits until the disk has it, and gives it its name.
    DWORD Complete();

  private:
    struct Inside;
    std::unique_ptr<Inside> inside;
};

}  // namespace permora
