#include <atomic>
#include <cstdio>
#include <string_view>

#include "platform/api/errors.h"
#include "platform/message_presenter.h"

namespace {

using permora::MessagePresenter;

// For processes that have nobody to ask.
class StandardErrorPresenter final : public MessagePresenter {
  public:
    int Present(HWND /*owner*/, const char* text, const char* caption, UINT type) override {
        std::string_view line(text);
        line = line.substr(0, line.find_last_not_of("\r\n ") + 1);  // system messages end in a line break
        std::fprintf(stderr, "%s: %.*s\n", caption, static_cast<int>(line.size()), line.data());
        return permora::SafestButton(type);
    }
};

StandardErrorPresenter standardError;
std::atomic<MessagePresenter*> currentPresenter = nullptr;

}  // namespace

namespace permora {

MessagePresenter* SetMessagePresenter(MessagePresenter* presenter) {
    return currentPresenter.exchange(presenter);
}

}  // namespace permora

int WINAPI MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type) {
    if (permora::SafestButton(type) == 0) {
        SetLastError(ERROR_INVALID_MSGBOX_STYLE);
        return 0;
    }
    MessagePresenter* presenter = currentPresenter.load();
    if (presenter == nullptr) presenter = &standardError;
    // Without a caption the SDK titles a box "Error".
    return presenter->Present(owner, text != nullptr ? text : "", caption != nullptr ? caption : "Error",
                              type);
}
