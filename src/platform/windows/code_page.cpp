#include "platform/windows/code_page.h"

#include "platform/api/errors.h"

namespace permora {

DWORD ToWide(const std::string& text, std::wstring& wide) {
    const int size = static_cast<int>(text.size());
    const int length = MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, text.data(), size, nullptr, 0);
    if (length <= 0) return ERROR_INVALID_NAME;
    wide.resize(static_cast<std::size_t>(length));
    MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, text.data(), size, wide.data(), length);
    return ERROR_SUCCESS;
}

DWORD ToAnsi(std::wstring_view wide, std::string& text) {
    const int size = static_cast<int>(wide.size());
    BOOL isChanged = FALSE;
    // The UTF-8 code page has every character, and the call fails for it.
    BOOL* asked = GetACP() == CP_UTF8 ? nullptr : &isChanged;
    const int length = WideCharToMultiByte(CP_ACP, 0, wide.data(), size, nullptr, 0, nullptr, asked);
    if (length <= 0 || isChanged != FALSE) return ERROR_NO_UNICODE_TRANSLATION;
    text.resize(static_cast<std::size_t>(length));
    WideCharToMultiByte(CP_ACP, 0, wide.data(), size, text.data(), length, nullptr, nullptr);
    return ERROR_SUCCESS;
}

}  // namespace permora
