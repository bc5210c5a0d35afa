#include "browser/shell_items.h"

namespace permora {

std::string ShellTypeNameOf(const std::string& /*path*/) {
    return {};
}

CIcon ShellIconOf(const std::string& /*path*/, ImageListKind /*kind*/) {
    return {};
}

bool OpenByShell(const std::string& /*path*/) {
    return false;
}

}  // namespace permora
