#include "platform/windows/code_page.h"

#include <algorithm>

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
    // A name that comes back as another one would be another file: neither a replacement for half a surrogate
    // pair nor a character that only looks alike will do. The UTF-8 code page refuses the question for the
    // former, the others have a flag for the latter.
    const UINT codePage = GetACP();
    const bool isUtf8 = codePage == CP_UTF8;
    const DWORD flags = isUtf8 ? WC_ERR_INVALID_CHARS : WC_NO_BEST_FIT_CHARS;
    BOOL* asked = isUtf8 ? nullptr : &isChanged;
    const int length = WideCharToMultiByte(codePage, flags, wide.data(), size, nullptr, 0, nullptr, asked);
    if (length <= 0 || isChanged != FALSE) return ERROR_NO_UNICODE_TRANSLATION;
    text.resize(static_cast<std::size_t>(length));
    WideCharToMultiByte(codePage, flags, wide.data(), size, text.data(), length, nullptr, nullptr);
    return ERROR_SUCCESS;
}

std::string ShownText(std::wstring_view wide) {
    const int size = static_cast<int>(wide.size());
    const int length = WideCharToMultiByte(CP_ACP, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(std::max(length, 0)), '\0');
    WideCharToMultiByte(CP_ACP, 0, wide.data(), size, text.data(), length, nullptr, nullptr);
    return text;
}

}  // namespace permora
