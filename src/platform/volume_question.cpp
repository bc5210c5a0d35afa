#include "platform/volume_question.h"

#include <condition_variable>
#include <map>
#include <mutex>
#include <utility>

#include "platform/api/errors.h"
#include "platform/api/threads.h"
#include "platform/resources.h"

namespace permora {
namespace {

// The questions that were given up and not answered yet, by volume.
struct SilentVolumes {
    std::mutex mutex;  // also guards what is asked
    std::map<std::string, int> questions;
};

// Outlives every thread.
SilentVolumes& TheSilentVolumes() {
    static auto& silent = *new SilentVolumes;
    return silent;
}

}  // namespace

struct VolumeQuestion::Asked {
    std::string volume;
    std::function<void()> ask;
    std::function<void()> tell;
    std::condition_variable answered;
    bool isAnswered = false;
    bool isGivenUp = false;

    // An exception ends the program, as on any thread.
    static DWORD WINAPI Run(LPVOID task) noexcept {
        const std::unique_ptr<std::shared_ptr<Asked>> own(static_cast<std::shared_ptr<Asked>*>(task));
        Asked& asked = **own;
        asked.ask();
        asked.ask = nullptr;
        asked.TakeAnswer();
        if (asked.tell) asked.tell();
        return 0;
    }

    void TakeAnswer() {
        SilentVolumes& silent = TheSilentVolumes();
        const std::lock_guard lock(silent.mutex);
        isAnswered = true;
        answered.notify_all();
        if (!isGivenUp) return;
        const auto found = silent.questions.find(volume);
        if (--found->second == 0) silent.questions.erase(found);
    }
};

DWORD VolumeQuestion::Ask(const std::string& volume, std::function<void()> ask, std::function<void()> tell) {
    GiveUp();
    SilentVolumes& silent = TheSilentVolumes();
    {
        const std::lock_guard lock(silent.mutex);
        if (silent.questions.contains(volume)) return ERROR_TIMEOUT;
    }
    auto question = std::make_shared<Asked>();
    question->volume = volume;
    question->ask = std::move(ask);
    question->tell = std::move(tell);
    auto task = std::make_unique<std::shared_ptr<Asked>>(question);
    const UniqueHandle thread(CreateThread(nullptr, 0, Asked::Run, task.get(), 0, nullptr));
    if (!thread) return GetLastError();
    static_cast<void>(task.release());  // the thread's now
    asked = std::move(question);
    return ERROR_SUCCESS;
}

bool VolumeQuestion::IsAnswered(std::chrono::milliseconds patience) {
    if (asked == nullptr) return true;
    std::unique_lock lock(TheSilentVolumes().mutex);
    return asked->answered.wait_for(lock, patience, [this] { return asked->isAnswered; });
}

void VolumeQuestion::GiveUp() {
    if (asked == nullptr) return;
    SilentVolumes& silent = TheSilentVolumes();
    const std::lock_guard lock(silent.mutex);
    asked->isGivenUp = !asked->isAnswered && !asked->volume.empty();
    if (asked->isGivenUp) ++silent.questions[asked->volume];
    asked.reset();
}

}  // namespace permora
