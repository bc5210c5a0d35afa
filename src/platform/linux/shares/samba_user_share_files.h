// The files of shares that users of this machine made for themselves.
#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>
#include <vector>

#include "platform/api/errors.h"
#include "platform/linux/base/unique_fd.h"

namespace permora::host {

// A share's file, held since it was read.
struct UserShareFile {
    std::string name;
    UniqueFd file;
    struct stat status {};
    std::string text;
};

// The folder in which Samba keeps them. A share's file is called by the share's name in small letters, of all
// scripts, and belongs to its maker, who thereby vouches for the shared folder. Whoever may make such shares
// may put files of any name there; the server reaches none whose name has capitals.
//
// All return 0 or an error code; on failure outputs and files are as they were.
class UserShareFolder {
  public:
    // ERROR_FILE_READ_ONLY where users may make no shares.
    DWORD Open();

    // The names of all files that may be shares. Left out are those in the place of which the server takes
    // another file, and those that are called as no share can be.
    DWORD ListNames(std::vector<std::string>& names) const;
    // NERR_NetNameNotFound; NERR_DuplicateShare where it cannot be told which of several files it is.
    DWORD FindName(std::string_view share, std::string& name) const;
    // ERROR_ACCESS_DENIED for what is no plain file.
    DWORD Hold(const std::string& name, UserShareFile& file) const;

    // Puts a new text in the place of the file that is held. The new file belongs to the old one's owner from
    // the start. ERROR_FILE_INVALID when another file or text is there by now, ERROR_ACCESS_DENIED for a file
    // that has further names, by which it may be somebody else's too.
    DWORD Replace(const UserShareFile& held, const std::string& text) const;
    DWORD Remove(const UserShareFile& held) const;

  private:
    DWORD CheckUnchanged(const UserShareFile& held) const;

    UniqueFd folder;
};

// Writes a new file with the text, owner and group of `source` into a folder that is this process's alone.
DWORD CopyUserShareFile(const UserShareFile& source, const std::string& folder);

}  // namespace permora::host
