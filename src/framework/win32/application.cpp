#include "framework/win32/application.h"

#include <objbase.h>

#include <atomic>
#include <future>
#include <memory>
#include <utility>

#include "framework/native.h"
#include "framework/stoppable_work.h"
#include "framework/styles.h"
#include "framework/win32/frame.h"

namespace permora {
namespace {

std::atomic<Win32Application*> theToolkit = nullptr;

}  // namespace

Win32Application::Win32Application() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
    const INITCOMMONCONTROLSEX classes{
        sizeof classes, ICC_STANDARD_CLASSES | ICC_LISTVIEW_CLASSES | ICC_TAB_CLASSES | ICC_PROGRESS_CLASS |
                            ICC_BAR_CLASSES | ICC_COOL_CLASSES | ICC_TREEVIEW_CLASSES};
    InitCommonControlsEx(&classes);
    theToolkit = this;
}

Win32Application::~Win32Application() {
    theToolkit = nullptr;
    CoUninitialize();
}

Win32Application* Win32Application::Current() {
    return theToolkit;
}

int Win32Application::Run() {
    while (ServeMessage()) {
    }
    // What has ended this loop would end those of what comes now.
    MSG quit;
    PeekMessageW(&quit, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE);
    // Work on a disk is put in order before the windows go.
    StopAllWork(std::chrono::milliseconds(0));
    return 0;
}

bool Win32Application::ServeMessage() {
    MSG message;
    if (PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE) == 0) Current()->Idle();
    if (GetMessageW(&message, nullptr, 0, 0) <= 0) {
        PostQuitMessage(0);  // for the loops around this one
        return false;
    }
    Dispatch(message);
    return true;
}

void Win32Application::Dispatch(const MSG& message) {
    win32::TopWindow* top = win32::TopWindow::Around(message.hwnd);
    if (top != nullptr && top->UseMessage(message)) return;
    TranslateMessage(&message);
    DispatchMessageW(&message);
}

void Win32Application::Idle() const {
    for (win32::FrameWindow* frame : frames)
        frame->OnIdle();
}

int RunToolkit(int /*argc*/, char** /*argv*/, const std::function<bool()>& start,
               const std::function<void()>& finish) {
    constexpr int kStartFailed = 1;
    Win32Application application;
    const int exitCode = start() ? application.Run() : kStartFailed;
    finish();
    return exitCode;
}

void StopToolkit() {
    PostQuitMessage(0);
}

bool IsModalWindowOpen() {
    const Win32Application* toolkit = theToolkit;
    return toolkit != nullptr && toolkit->ModalCount() != 0;
}

bool IsUiThread() {
    const Win32Application* toolkit = theToolkit;
    return toolkit == nullptr || toolkit->IsOnUiThread();
}

void PostToUiThread(std::function<void()> work) {
    if (Win32Application* toolkit = theToolkit) toolkit->Bridge().Post(std::move(work));
}

void CallOnUiThread(const std::function<void()>& work) {
    Win32Application* toolkit = theToolkit;
    if (toolkit == nullptr || toolkit->IsOnUiThread()) {
        work();
        return;
    }
    auto task = std::make_shared<std::packaged_task<void()>>([&work]() noexcept { work(); });
    const std::future<void> end = task->get_future();
    // The bridge alone owns the task, so the wait also ends when the bridge is destroyed without having run
    // it.
    toolkit->Bridge().Post([own = std::move(task)] { (*own)(); });
    end.wait();
}

void PostLater(int milliseconds, std::function<void()> work) {
    if (Win32Application* toolkit = theToolkit) toolkit->Bridge().PostLater(milliseconds, std::move(work));
}

void ServeWorkers() {
    if (Win32Application* toolkit = theToolkit) toolkit->Bridge().Serve();
}

}  // namespace permora
