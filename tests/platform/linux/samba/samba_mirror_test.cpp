#include "platform/linux/samba/samba_mirror.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <future>
#include <iterator>
#include <string>
#include <thread>

#include "platform/api/base.h"
#include "tests/support/own_mounts.h"
#include "tests/support/patience.h"

// The function itself: for tests, another one stands in its place (support/process_end.cpp).
extern "C" void WINAPI __real_ExitProcess(UINT code);

namespace permora::host::test {
namespace {

using permora::test::EnterOwnMounts;
using permora::test::FolderContents;
using permora::test::HaveOwnFolder;

std::ptrdiff_t Mirrors() {
    return std::distance(std::filesystem::directory_iterator("/run"), {});
}

// A process that makes a mirror on another thread and then ends like this.
pid_t Start(const std::function<void()>& end) {
    const pid_t child = fork();
    if (child != 0) return child;
    std::promise<DWORD> made;
    std::thread([&made] {
        SambaMirror mirror;
        made.set_value(mirror.Make());
        pause();
    }).detach();
    if (made.get_future().get() == ERROR_SUCCESS) end();
    _exit(1);
}

void AwaitMirrors(std::ptrdiff_t count) {
    ASSERT_TRUE(permora::test::Await([count] { return Mirrors() == count; })) << Mirrors();
}

TEST(SambaMirror, GoesWithItsProcessAndLeavesThoseOfOthers) {
    ASSERT_EQ(EnterOwnMounts(), "");
    ASSERT_EQ(HaveOwnFolder("/run", FolderContents::kNone), "");
    for (const auto& end : {std::function<void()>([] { std::exit(0); }),
                            std::function<void()>([] { __real_ExitProcess(0); })}) {
        int status = -1;
        const pid_t child = Start(end);
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
        EXPECT_EQ(Mirrors(), 0);
    }
    const pid_t living = Start([] { pause(); });
    const pid_t killed = Start([] { pause(); });
    AwaitMirrors(2);
    kill(killed, SIGKILL);
    waitpid(killed, nullptr, 0);
    {
        SambaMirror mirror;
        ASSERT_EQ(mirror.Make(), DWORD{ERROR_SUCCESS});
        EXPECT_EQ(Mirrors(), 2);
    }
    EXPECT_EQ(Mirrors(), 1);
    kill(living, SIGKILL);
    waitpid(living, nullptr, 0);
}

}  // namespace
}  // namespace permora::host::test
