#include "framework/background_question.h"

#include <utility>

#include "framework/window.h"
#include "platform/api/errors.h"

namespace permora {

DWORD BackgroundQuestion::Ask(std::function<void()> ask, std::function<void()> use,
                              const std::string& volume) {
    Forget();
    auto asked = std::make_shared<std::function<void()>>([this, use = std::move(use)] {
        const auto own = std::exchange(pending, nullptr);  // what runs now
        use();
    });
    const auto tell = [weak = std::weak_ptr(asked)] {
        PostToUiThread([weak] {
            if (const auto waiting = weak.lock()) (*waiting)();
        });
    };
    const DWORD error = question.Ask(volume, std::move(ask), tell);
    if (error == ERROR_SUCCESS) pending = std::move(asked);
    return error;
}

}  // namespace permora
