#include <cstdio>
#include <string_view>

#include "platform/api/errors.h"
#include "platform/message_presenter.h"

namespace {

// For processes without anybody to ask.
int WriteToStandardError(const char* text, const char* caption, UINT type) {
    std::string_view line(text);
    line = line.substr(0, line.find_last_not_of("\r\n ") + 1);  // system messages end in a line break
    std::fprintf(stderr, "%s: %.*s\n", caption, static_cast<int>(line.size()), line.data());
    return permora::SafestButton(type);
}

}  // namespace

int WINAPI MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type) {
    if (permora::SafestButton(type) == 0) {
        SetLastError(ERROR_INVALID_MSGBOX_STYLE);
        return 0;
    }
    if (text == nullptr) text = "";
    if (caption == nullptr) caption = "Error";  // the SDK's title of a box without a caption
    permora::MessagePresenter* presenter = permora::thePresenters.messages;
    return presenter != nullptr ? presenter->Present(owner, text, caption, type)
                                : WriteToStandardError(text, caption, type);
}
