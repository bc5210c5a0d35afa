#include "platform/shell_icons.h"

#include "platform/file_types.h"
#include "platform/linux/shell/object_type.h"

namespace permora {

std::string ShellIconKindOf(LPCSTR path) {
    std::string type;
    return host::TypeOfObject(path, type) == ERROR_SUCCESS ? type : "";
}

ShellIcon FindShellIcon(const std::string& kind) {
    const FileTypes* types = thePresenters.fileTypes;
    return types != nullptr && !kind.empty() ? types->IconOf(kind) : ShellIcon();
}

std::shared_ptr<const ShellPicture> FindShieldPicture() {
    return nullptr;
}

}  // namespace permora
