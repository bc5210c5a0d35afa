#include "framework/repeated_work.h"

#include <utility>

#include "framework/native.h"

namespace permora {

void RepeatedWork::Start(std::chrono::milliseconds pause, std::function<void()> work) {
    repeated = std::make_shared<const Repeated>(Repeated{pause, std::move(work)});
    RunLater(repeated);
}

void RepeatedWork::RunLater(const std::shared_ptr<const Repeated>& repeated) {
    PostLater(static_cast<int>(repeated->pause.count()), [weak = std::weak_ptr(repeated)] {
        const auto due = weak.lock();
        if (!due) return;
        due->work();
        // Alone here: it was stopped by the work, or replaced.
        if (due.use_count() > 1) RunLater(due);
    });
}

}  // namespace permora
