// The contents of the properties dialog, gathered and put into texts without a window.
#pragma once

#include <string>

#include "platform/api/base.h"
#include "platform/tree_size.h"

namespace permora {

enum class ObjectSort { kFile, kFolder, kLink, kDrive };

// A fact that cannot be read is "Unknown".
struct ObjectFacts {
    ObjectSort sort = ObjectSort::kFile;
    std::string name;  // bare; a drive's root and label
    std::string kind;
    std::string hostPath;  // as other programs of this machine take it
    std::string location;  // the folder that holds it; empty for drives
    std::string target;    // kLink: where it leads
    // In the machine's time zone; empty for drives.
    std::string created;
    std::string modified;
    std::string accessed;
    std::string attributes;  // empty for drives
    // kDrive
    std::string fileSystem;
    std::string capacity;
    std::string used;
    std::string free;
    int usedPercent = 0;
};

// Reads the facts of the object at a full path. Returns 0, or an error code, and `facts` is then unchanged.
// May wait for the disk, but reads no other object.
DWORD ReadObjectFacts(const std::string& path, ObjectFacts& facts);

// The name of the owner, or the error that prevents reading it.
std::string OwnerText(const std::string& path);

// "1 KB (1,536 bytes)".
std::string SizeText(ULONGLONG bytes);

// "2 files, 1 folder", and the objects that were not counted.
std::string ContentsText(const TreeSize& size);

}  // namespace permora
