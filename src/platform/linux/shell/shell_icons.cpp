#include "platform/shell_icons.h"

#include "platform/file_types.h"
#include "platform/linux/shell/object_type.h"

namespace permora {

ShellIcon FindShellIcon(LPCSTR path) {
    const FileTypes* types = thePresenters.fileTypes;
    std::string type;
    if (types == nullptr || host::TypeOfObject(path, type) != ERROR_SUCCESS) return {};
    return types->IconOf(type);
}

}  // namespace permora
