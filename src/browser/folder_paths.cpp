#include "browser/folder_paths.h"

namespace permora {

std::string FolderAbove(const std::string& path) {
    const std::size_t separator = path.rfind('\\');
    if (separator == std::string::npos || separator + 1 == path.size()) return {};
    const bool isBelowRoot = path.find('\\') == separator;
    return path.substr(0, isBelowRoot ? separator + 1 : separator);
}

std::string NameInFolder(const std::string& path) {
    return path.substr(path.rfind('\\') + 1);
}

}  // namespace permora
