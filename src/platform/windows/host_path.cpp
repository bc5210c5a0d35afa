#include "platform/host_path.h"

namespace permora {

// The host is the system: it knows both kinds of separators.
std::string PathFromTyped(const std::string& text) {
    return text;
}

}  // namespace permora
