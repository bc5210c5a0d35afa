#include "browser/start_folder.h"

namespace permora {

// The quote at the very start begins the program's path; the next one ends it.
std::string StartFolderOf(const std::string& commandLine) {
    const std::size_t programEnd = commandLine.find('"', 1);
    if (programEnd == std::string::npos) return {};
    const std::size_t opening = commandLine.find('"', programEnd + 1);
    if (opening == std::string::npos) return {};
    const std::size_t closing = commandLine.find('"', opening + 1);
    return commandLine.substr(opening + 1, closing - opening - 1);
}

}  // namespace permora
