#include "framework/background_question.h"

#include <utility>

#include "framework/window.h"
#include "platform/api/errors.h"
#include "platform/api/threads.h"
#include "platform/resources.h"

namespace permora {
namespace {

struct Question {
    std::function<void()> ask;
    std::weak_ptr<std::function<void()>> use;
};

}  // namespace

DWORD BackgroundQuestion::Ask(std::function<void()> ask, std::function<void()> use) {
    auto asked = std::make_shared<std::function<void()>>([this, use = std::move(use)] {
        const auto own = std::exchange(pending, nullptr);  // what runs now
        use();
    });
    auto question = std::make_unique<Question>(Question{std::move(ask), asked});
    pending.reset();
    const UniqueHandle thread(CreateThread(nullptr, 0, Work, question.get(), 0, nullptr));
    if (!thread) return GetLastError();
    static_cast<void>(question.release());  // the thread's now
    pending = std::move(asked);
    return ERROR_SUCCESS;
}

// An exception ends the program, as on any thread.
DWORD WINAPI BackgroundQuestion::Work(LPVOID task) noexcept {
    const std::unique_ptr<Question> own(static_cast<Question*>(task));
    own->ask();
    PostToUiThread([use = own->use] {
        if (const auto asked = use.lock()) (*asked)();
    });
    return 0;
}

}  // namespace permora
