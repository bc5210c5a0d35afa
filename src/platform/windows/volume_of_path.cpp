#include <algorithm>
#include <string>

#include "platform/volume_question.h"

namespace permora {

// "C:", or "\\server\share" without what is below.
std::string VolumeOfPath(const std::string& path) {
    constexpr std::size_t kLetterAndColon = 2;
    std::size_t end = kLetterAndColon;
    if (path.starts_with("\\\\")) {
        end = path.find('\\', kLetterAndColon);
        if (end != path.npos) end = path.find('\\', end + 1);
    }
    return path.substr(0, std::min(end, path.size()));
}

}  // namespace permora
