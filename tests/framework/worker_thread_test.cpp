// Threads that windows wait for.
#include "framework/worker_thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "framework/window.h"

namespace permora {
namespace {

// Waiting must not block the calls for which the worker waits itself.
TEST(WorkerThread, IsServedWhileItIsWaitedFor) {
    bool isServedHere = false;
    std::atomic<bool> isDone = false;
    {
        WorkerThread worker;
        ASSERT_EQ(worker.Start([&] {
            CallOnUiThread([&] { isServedHere = IsUiThread(); });
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
            isDone = true;
        }),
                  0U);
    }
    EXPECT_TRUE(isServedHere);
    EXPECT_TRUE(isDone);
}

}  // namespace
}  // namespace permora
