// Mounts that belong to one test process alone.
#pragma once

#include <string>

namespace permora::test {

// From here on nobody else's mounting is seen by this process and what it starts, nor theirs by others; so
// drive letters stay as they are. The volumes of other tests are let go of: a second hold on them would keep
// their file systems from ending. Needs root. What went wrong; empty when all is well.
std::string EnterOwnMounts();

// In such mounts: from here on a folder is this process's own, a copy of what it was or empty. What went
// wrong; empty when all is well.
enum class FolderContents { kCopied, kNone };
std::string HaveOwnFolder(const std::string& folder, FolderContents contents);

}  // namespace permora::test
