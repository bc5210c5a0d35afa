// The names in an open folder.
#pragma once

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "platform/api/errors.h"
#include "platform/linux/base/unique_fd.h"

namespace permora::host {

// Reads a block of names at a time, in the order in which the file system gives them.
class FolderListing {
  public:
    // Takes a folder that was opened for reading. `begin` is where another listing of it stood.
    explicit FolderListing(UniqueFd opened, off_t begin = 0);

    int Descriptor() const { return folder.Get(); }
    // Ends the listing and gives the folder back.
    UniqueFd Release() { return std::move(folder); }
    // Whether it is known that there are further entries.
    bool HasMore() const { return position < filled; }
    // Behind the entry that was taken last.
    off_t Position() const { return behindLast; }

    struct Entry {
        const char* name;    // as the host writes it
        unsigned char type;  // DT_ constant of readdir(3); DT_UNKNOWN where the file system does not say
    };
    // The next entry other than "." and ".."; its name lives until the next call. False at the end and on an
    // error (`error` is then not 0). A folder that is deleted in the middle has come to its end.
    bool Next(Entry& entry, DWORD& error);

  private:
    bool Fill(DWORD& error);
    Entry TakeEntry();

    static constexpr std::size_t kBlockBytes = 8192;

    UniqueFd folder;
    off_t behindLast;  // as the file system counts
    std::size_t position = 0;
    std::size_t filled = 0;
    std::array<std::uint8_t, kBlockBytes> block;
};

}  // namespace permora::host
