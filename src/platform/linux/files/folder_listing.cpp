#include "platform/linux/files/folder_listing.h"

#include <dirent.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include "platform/linux/base/host_errors.h"

namespace permora::host {

FolderListing::FolderListing(UniqueFd opened, off_t begin) : folder(std::move(opened)), behindLast(begin) {
    if (begin != 0) lseek(folder.Get(), begin, SEEK_SET);
}

bool FolderListing::Next(Entry& entry, DWORD& error) {
    for (;;) {
        if (position == filled && !Fill(error)) return false;
        const Entry taken = TakeEntry();
        if (std::string_view(taken.name) == "." || std::string_view(taken.name) == "..") continue;
        entry = taken;
        return true;
    }
}

bool FolderListing::Fill(DWORD& error) {
    const long count = syscall(SYS_getdents64, folder.Get(), block.data(), block.size());
    // A folder that was removed while it was open has no more names. EBADF: a folder that may be entered but
    // not listed is open without the right to read it.
    if (count < 0 && errno != ENOENT) error = ErrorFromErrno(errno == EBADF ? EACCES : errno);
    if (count <= 0) return false;
    filled = static_cast<std::size_t>(count);
    position = 0;
    return true;
}

FolderListing::Entry FolderListing::TakeEntry() {
    const std::uint8_t* entry = block.data() + position;
    std::uint16_t length = 0;
    std::memcpy(&length, entry + offsetof(dirent64, d_reclen), sizeof length);
    position += length;
    std::int64_t behind = 0;
    std::memcpy(&behind, entry + offsetof(dirent64, d_off), sizeof behind);
    behindLast = behind;
    return {reinterpret_cast<const char*>(entry + offsetof(dirent64, d_name)),
            entry[offsetof(dirent64, d_type)]};
}

}  // namespace permora::host
