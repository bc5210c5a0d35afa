// The desktop's lists of files, which any program may have put on the clipboard.
#include <cstdint>
#include <span>

#include "browser/desktop_files.h"
#include "fuzz/file_transfers.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    permora::FileTransfer gnome;
    permora::RequireSound(permora::ReadGnomeFiles({data, size}, gnome), gnome);
    permora::FileTransfer list;
    permora::RequireSound(permora::ReadUriList({data, size}, {}, list), list);
    return 0;
}
