#include "platform/api/threads.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>

#include "platform/api/errors.h"

namespace {

// Keeps the thread until the test lets it go.
struct Work {
    std::promise<void> release;
    std::promise<std::thread::id> done;
};

DWORD WINAPI DoWork(LPVOID parameter) {
    Work& work = *static_cast<Work*>(parameter);
    work.release.get_future().wait();
    work.done.set_value(std::this_thread::get_id());
    return 0;
}

TEST(Threads, RunOnAfterTheirHandleIsClosed) {
    Work work;
    SECURITY_ATTRIBUTES attributes{sizeof attributes, nullptr, TRUE};
    const HANDLE thread = CreateThread(&attributes, 4096, DoWork, &work, 0, nullptr);
    ASSERT_NE(thread, nullptr);
    EXPECT_TRUE(CloseHandle(thread));
    SetLastError(ERROR_SUCCESS);
    EXPECT_FALSE(CloseHandle(thread));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_FALSE(CloseHandle(nullptr));
    work.release.set_value();
    EXPECT_NE(work.done.get_future().get(), std::this_thread::get_id());
}

TEST(Threads, WhatIsNotKnownStartsNone) {
    constexpr DWORD kSuspended = 4;
    Work work;
    DWORD id = 0;
    EXPECT_EQ(CreateThread(nullptr, 0, nullptr, nullptr, 0, nullptr), nullptr);
    EXPECT_EQ(CreateThread(nullptr, 0, DoWork, &work, kSuspended, nullptr), nullptr);
    EXPECT_EQ(CreateThread(nullptr, 0, DoWork, &work, 0, &id), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

}  // namespace
