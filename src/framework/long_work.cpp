#include "framework/long_work.h"

#include <chrono>

#include "framework/modal_window.h"
#include "framework/native.h"
#include "framework/worker_thread.h"
#include "platform/api/errors.h"

namespace permora {

void DoLongWork(CWnd& window, const std::function<void()>& work) {
    constexpr std::chrono::milliseconds kBetweenPaintings{5};
    const OwnerDisabler disabled(&window);
    WorkerThread worker;
    const bool isOnWorker = worker.Start(work) == ERROR_SUCCESS;
    ServeBusyWindowsUntil([&] {
        if (!isOnWorker) work();
        return !isOnWorker || worker.HasEnded(kBetweenPaintings);
    });
}

}  // namespace permora
