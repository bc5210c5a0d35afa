// Who knows the desktop's types of files: what a name says, what a type is called, and its icon.
//
// SHGetFileInfoA and FindShellIcon ask the one that is set here. Without one, as in the terminal program, no
// type has a text or an icon. On Windows the shell knows the types itself, and this header has nothing behind
// it.
#pragma once

#include <string>

#include "platform/shell_icons.h"

namespace permora {

class FileTypes {
  public:
    virtual ~FileTypes() = default;

    // The MIME type that a file's name, in the host's bytes, says it has; empty when the name says nothing.
    // The file is not looked at: what lies in a folder that others can write is not read for its icon. Any
    // thread.
    virtual std::string TypeOfName(const std::string& hostName) const = 0;
    // What objects of the MIME type are called in the user's language; empty when nobody knows the type. Any
    // thread.
    virtual std::string TextOf(const std::string& type) const = 0;
    // The icon that the desktop has for the MIME type. User-interface thread.
    virtual ShellIcon IconOf(const std::string& type) const = 0;
};

// Sets the types (borrowed; null: none) and returns those before. They must outlive the questions asked of
// them.
const FileTypes* SetFileTypes(const FileTypes* types);

}  // namespace permora
