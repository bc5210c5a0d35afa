// From the system's paths to objects of the host, and from host names to the names that are shown.
#pragma once

#include <string>
#include <string_view>

#include "platform/linux/files/object_handle.h"

namespace permora::host {

// One component of a host path as the program shows it. Bytes that a Windows name cannot hold (control
// characters, \ : * ? " < > |, a trailing dot or blank, bytes that are not UTF-8) become private-use code
// points from U+F001 to U+F0FF, one to one: EncodeName never gives two host names the same text, and
// DecodeName undoes it.
std::string EncodeName(std::string_view hostName);
// The host name of a shown component. False for texts that no host name shows as (an empty one, a separator
// or NUL in disguise, a code point that EncodeName would not have produced); `hostName` is then unchanged.
bool DecodeName(std::string_view name, std::string& hostName);

struct ResolvedObject {
    ObjectHandle object;
    ObjectHandle parent;  // the folder that holds it; empty for the root of a volume or drive
};

// Finds the object that a path of files.h names. Intermediate components are followed as the kernel does; the
// last one is never followed. 0 or an error code; `resolved` is replaced only on success.
DWORD ResolvePath(const char* path, ResolvedObject& resolved);

// The path with drive letter of an absolute host path ("/mnt/usb/a" is "D:\a" when the volume at /mnt/usb is
// D:).
std::string PathFromHost(std::string_view hostPath);

}  // namespace permora::host
