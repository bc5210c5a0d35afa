// Who knows the desktop's types of files: what a name says, what a type is called, and its icon
// (platform/presenters.h).
#pragma once

#include <string>

#include "platform/presenters.h"
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

}  // namespace permora
