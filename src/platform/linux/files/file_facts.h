// What the system's structures for files and folders say, of what the host says.
#pragma once

#include <sys/stat.h>

#include "platform/api/base.h"
#include "platform/linux/base/time.h"

namespace permora::host {

// Fills the fields that WIN32_FIND_DATAA and WIN32_FILE_ATTRIBUTE_DATA have in common, but for the time of
// creation, which fstatat does not give. `facts` must be empty.
template <typename Facts>
void FillFacts(const struct stat& status, DWORD attributes, Facts& facts) {
    facts.dwFileAttributes = attributes;
    facts.ftLastAccessTime = FileTimeOf(status.st_atim);
    facts.ftLastWriteTime = FileTimeOf(status.st_mtim);
    if (!S_ISREG(status.st_mode)) return;
    const auto size = static_cast<ULONGLONG>(status.st_size);
    facts.nFileSizeHigh = static_cast<DWORD>(size >> 32);
    facts.nFileSizeLow = static_cast<DWORD>(size & 0xFFFFFFFF);
}

}  // namespace permora::host
