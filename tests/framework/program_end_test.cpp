// What becomes of a file operation when the program has to end in its middle. Each case runs in a process of
// its own.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <thread>
#include <utility>

#include "framework/window.h"
#include "platform/file_operation_presenter.h"

namespace permora {
namespace {

using testing::ExitedWithCode;

// Works when the program is told to end, and must be allowed to finish in order.
class UnendingJob : public FileOperationJob {
  public:
    explicit UnendingJob(std::function<void()> end) : endProgram(std::move(end)) {}

    void Run(FileOperationHost& host) override {
        endProgram();
        while (host.Report({}))
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        // The reader of its output may be gone already.
        int pipeEnds[2] = {};
        ASSERT_EQ(pipe(pipeEnds), 0);
        close(pipeEnds[0]);
        EXPECT_LT(write(pipeEnds[1], "x", 1), 0);
        std::fputs("in order again", stderr);
    }

  private:
    std::function<void()> endProgram;
};

void Present(std::function<void()> endProgram) {
    FileOperationPresenter* windows = thePresenters.fileOperations;
    UnendingJob job(std::move(endProgram));
    windows->Present(nullptr, "Copying", job);
}

TEST(ProgramEndDeathTest, LetsFileOperationsPutInOrderWhatTheyHaveBegun) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            Present([] { kill(getpid(), SIGTERM); });
            std::_Exit(3);
        },
        ExitedWithCode(3), "in order again")
        << "a signal";
    // As the toolkit does when the display's server is gone.
    EXPECT_EXIT(Present([] { PostToUiThread([] { std::exit(7); }); }), ExitedWithCode(7), "in order again")
        << "the display";
}

}  // namespace
}  // namespace permora
