#include "app/program_folder.h"

#include "platform/api/files.h"
#include "platform/api/system.h"

namespace permora {

std::string HelpFileIn(const std::string& folder) {
    return folder + R"(\ZELHELP.chm)";
}

bool HoldsHelp(const std::string& folder) {
    return GetFileAttributesA(HelpFileIn(folder).c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string OwnFolderWithHelp() {
    constexpr std::size_t kRoom = 32'768;  // no path of the system is longer
    std::string path(kRoom, '\0');
    const DWORD length = GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length == 0 || length >= path.size()) return {};
    path.resize(length);
    const std::size_t separator = path.find_last_of('\\');
    if (separator == std::string::npos) return {};
    path.resize(separator);
    return HoldsHelp(path) ? path : std::string();
}

}  // namespace permora
