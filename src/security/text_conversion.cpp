#include "security/text_conversion.h"

#include <cstddef>

namespace permora {

std::string WideToAnsi(LPCWSTR wide) {
    if (wide == nullptr) return {};
    // Sizes count the NUL, which std::string adds itself.
    const int size = WideCharToMultiByte(CP_ACP, 0, wide, -1, nullptr, 0, nullptr, nullptr);
    if (size <= 0) return {};
    std::string ansi(static_cast<std::size_t>(size), '\0');
    const int written = WideCharToMultiByte(CP_ACP, 0, wide, -1, ansi.data(), size, nullptr, nullptr);
    ansi.resize(written > 0 ? static_cast<std::size_t>(written) - 1 : 0);
    return ansi;
}

LPWSTR AnsiToWide(std::string_view ansi, std::basic_string<WCHAR>& buffer) {
    // In no code page does a byte become more than one UTF-16 unit.
    buffer.assign(ansi.size(), WCHAR{});
    const int count = static_cast<int>(ansi.size());
    const int written =
        count > 0 ? MultiByteToWideChar(CP_ACP, 0, ansi.data(), count, buffer.data(), count) : 0;
    buffer.resize(written > 0 ? static_cast<std::size_t>(written) : 0);
    return buffer.data();
}

}  // namespace permora
