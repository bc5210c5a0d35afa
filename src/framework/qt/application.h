// The toolkit of the process: exactly one, made on the thread that becomes the user-interface thread.
#pragma once

#include <QApplication>
#include <atomic>
#include <memory>
#include <thread>

#include "framework/qt/clipboard.h"
#include "framework/qt/end_signals.h"
#include "framework/qt/file_types.h"
#include "framework/qt/thread_bridge.h"
#include "platform/file_operation_presenter.h"
#include "platform/message_presenter.h"

namespace permora {

class QtApplication {
  public:
    // Starts the toolkit and shows message boxes and file operations in windows from here on. `argc` and
    // `argv` must outlive it.
    QtApplication(int& argc, char** argv);
    ~QtApplication();
    QtApplication(const QtApplication&) = delete;
    QtApplication& operator=(const QtApplication&) = delete;

    // Serves events until StopToolkit, or until a signal ends the process; all modal windows are then closed,
    // and messages go to standard error. Returns the exit code of the process.
    int Run();

    // Null while there is none. Any thread.
    static QtApplication* Current();

    // Serves the user-interface thread. Any thread.
    qt::ThreadBridge& Bridge() { return *bridge; }
    bool IsOnUiThread() const { return uiThread == std::this_thread::get_id(); }
    // User-interface thread.
    qt::ClipboardState& Clipboard() { return clipboard; }

    std::atomic<bool> isDisplayLost = false;
    bool isToEnd = false;  // a signal has come, perhaps before Run. User-interface thread

  private:
    QApplication application;
    std::thread::id uiThread = std::this_thread::get_id();
    std::unique_ptr<qt::ThreadBridge> bridge;
    qt::ClipboardState clipboard;
    qt::EndSignals endSignals;
    qt::DesktopFileTypes fileTypes;
    std::unique_ptr<MessagePresenter> presenter;
    std::unique_ptr<FileOperationPresenter> fileOperations;
    MessagePresenter* presenterBefore;
    FileOperationPresenter* fileOperationsBefore;
};

}  // namespace permora
