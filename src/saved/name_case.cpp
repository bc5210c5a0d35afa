#include "saved/name_case.h"

#include <algorithm>
#include <vector>

#include "platform/api/text.h"
#include "platform/ascii.h"

namespace permora {

std::string InCapitals(const std::string& name) {
    if (name.empty()) return name;
    const int bytes = static_cast<int>(name.size());
    std::vector<WCHAR> wide(name.size());
    const int units = MultiByteToWideChar(CP_ACP, 0, name.data(), bytes, wide.data(), bytes);
    if (units <= 0) return name;
    CharUpperBuffW(wide.data(), static_cast<DWORD>(units));
    std::string capitals(wide.size() * 3, '\0');
    const int length = WideCharToMultiByte(CP_ACP, 0, wide.data(), units, capitals.data(),
                                           static_cast<int>(capitals.size()), nullptr, nullptr);
    if (length <= 0) return name;
    capitals.resize(static_cast<std::size_t>(length));
    return capitals;
}

}  // namespace permora
