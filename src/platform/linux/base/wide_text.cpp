#include "platform/linux/base/wide_text.h"

#include "platform/api/text.h"

namespace permora::host {

std::u16string ToWide(std::string_view ansi) {
    std::u16string wide(ansi.size(), u'\0');  // never more units than bytes
    const int count = MultiByteToWideChar(CP_ACP, 0, ansi.data(), static_cast<int>(ansi.size()), wide.data(),
                                          static_cast<int>(wide.size()));
    wide.resize(static_cast<std::size_t>(count));
    return wide;
}

std::string ToAnsi(std::u16string_view wide) {
    std::string ansi(3 * wide.size(), '\0');  // the most that a unit can take
    const int count = WideCharToMultiByte(CP_ACP, 0, wide.data(), static_cast<int>(wide.size()), ansi.data(),
                                          static_cast<int>(ansi.size()), nullptr, nullptr);
    ansi.resize(static_cast<std::size_t>(count));
    return ansi;
}

}  // namespace permora::host
