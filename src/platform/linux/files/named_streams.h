// The named streams of files on NTFS.
//
// ntfs-3g shows them, by its mount option streams_interface, as attributes "user.STREAM" (its default) or as
// files "FILE:STREAM" with the attribute ntfs.streams.list, or not at all. The kernel's
// ntfs3 shows none; its attributes "user.NAME" are extended attributes as OS/2 had them.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/files/overwritten_file.h"

namespace permora::host {

// The list of a file's streams, of those volumes alone that show them as files.
inline constexpr const char* kStreamListAttribute = "ntfs.streams.list";

enum class StreamAccess {
    kNone,        // no stream, or no way to any
    kFiles,       // as files
    kAttributes,  // as attributes, which the driver moves when it writes them
};

// The names of a file's streams as the host writes them, and how they are reached. Only to be asked on NTFS:
// elsewhere attributes are no streams. 0 or an error code.
DWORD ListStreams(const ObjectHandle& file, std::vector<std::string>& names, StreamAccess& access);

// A held file, its open folder and its name there. It owns nothing.
struct FileInFolder {
    int folder;
    const std::string& hostName;
    const ObjectHandle& file;
};

// Whether a stream can have this name. Others would lead elsewhere as a part of "FILE:STREAM".
bool IsStreamName(std::string_view stream);

// Opens the stream of a file where streams are files. `flags` are those of open(2); O_CREAT makes it. 0 or an
// errno value: EINVAL for what is no stream's name, ESTALE when the name leads to something else.
int OpenStreamFile(const FileInFolder& place, const std::string& stream, int flags, UniqueFd& opened);

// Opens a stream to be overwritten. ERROR_FILE_NOT_FOUND when there is none, ERROR_FILE_INVALID when the name
// leads to another file by now. Streams that are attributes are replaced whole, when all of one
// was written and is flushed, are on the disk when the file itself is flushed, and can have 64 KiB at most
// (ERROR_INSUFFICIENT_BUFFER).
DWORD OpenStream(const FileInFolder& place, const std::string& stream,
                 std::shared_ptr<OverwrittenFile>& opened);

}  // namespace permora::host
