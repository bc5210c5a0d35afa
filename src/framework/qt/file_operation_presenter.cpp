#include "framework/qt/file_operation_presenter.h"

#include <QApplication>
#include <QEventLoop>
#include <QPointer>
#include <QTimer>
#include <atomic>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "framework/modal_window.h"
#include "framework/qt/file_operation_question.h"
#include "framework/qt/file_operation_window.h"
#include "framework/qt/widget.h"
#include "framework/stoppable_work.h"
#include "framework/window.h"
#include "platform/file_operation_pace.h"

namespace permora::qt {
namespace {

constexpr int kMillisecondsBeforeWindow = 500;
constexpr int kMillisecondsBetweenDisplays = 100;

// One operation. Only the host's functions run on the worker; everything else runs on the user-interface
// thread.
class Presentation final : public FileOperationHost {
  public:
    Presentation(QWidget* owner, const std::string& windowTitle)
        : title(windowTitle),
          ownerWidget(owner),
          window(new FileOperationWindow(owner, windowTitle, [this] { isCancelled = true; })) {
        QObject::connect(&appear, &QTimer::timeout, window, [this] { window->show(); });
        QObject::connect(&display, &QTimer::timeout, window, [this] { Display(); });
        // Destroyed with its owner. Then nobody can cancel any more.
        QObject::connect(window, &QObject::destroyed, &loop, [this] { isCancelled = true; });
        appear.setSingleShot(true);
        appear.start(kMillisecondsBeforeWindow);
        display.start(kMillisecondsBetweenDisplays);
    }

    ~Presentation() override { delete window; }
    Presentation(const Presentation&) = delete;
    Presentation& operator=(const Presentation&) = delete;

    void Run(FileOperationJob& job) {
        std::thread worker;
        try {
            worker = std::thread([this, &job] {
                RunStoppably(job);
                hasEnded = true;
                QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
            });
        } catch (const std::system_error&) {
            job.Run(*this);  // no thread can be had; Report serves the windows
        }
        if (worker.joinable()) {
            Serve();
            worker.join();
        }
        if (window) window->hide();
        if (ownerWidget) ownerWidget->activateWindow();
    }

    bool Report(const FileOperationProgress& progress) override {
        if (IsUiThread()) QCoreApplication::processEvents(EventsServed());
        const std::lock_guard lock(mutex);
        reported = progress;
        return !isCancelled;
    }

    FileOperationAnswer Ask(const FileOperationQuestion& question) override {
        FileOperationAnswer answer = FileOperationAnswer::kCancel;
        if (!isCancelled) CallOnUiThread([&] { answer = AskUser(question); });
        if (answer == FileOperationAnswer::kCancel) isCancelled = true;
        return answer;
    }

  private:
    void RunStoppably(FileOperationJob& job) {
        const StoppableWork stoppable([this] { isCancelled = true; });
        job.Run(*this);
    }

    bool IsShown() const { return window && window->isVisible(); }

    // Input waits until the operation's window blocks all others.
    QEventLoop::ProcessEventsFlags EventsServed() const {
        return IsShown() ? QEventLoop::AllEvents : QEventLoop::ExcludeUserInputEvents;
    }

    void Serve() {
        while (!hasEnded && !IsShown())
            loop.processEvents(EventsServed() | QEventLoop::WaitForMoreEvents);
        if (!hasEnded) loop.exec(QEventLoop::DialogExec);
        // The program is about to end, which ends all loops.
        isCancelled = true;
        while (!hasEnded)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    void Display() {
        {
            const std::lock_guard lock(mutex);
            if (!reported) return;
            shown = *std::exchange(reported, std::nullopt);
        }
        pace.Add(std::chrono::steady_clock::now(), shown);
        window->Display(shown, pace);
    }

    FileOperationAnswer AskUser(const FileOperationQuestion& question) {
        const bool isShown = IsShown();
        appear.stop();
        display.stop();
        pace.Pause();
        const FileOperationAnswer answer =
            AskInWindow(isShown ? window.data() : ownerWidget.data(), title, question);
        display.start();
        if (!isShown) appear.start();
        return answer;
    }

    std::string title;
    // An owner that is destroyed takes the window with it.
    QPointer<QWidget> ownerWidget;
    QPointer<FileOperationWindow> window;
    QEventLoop loop;
    QTimer appear;
    QTimer display;
    FileOperationPace pace;
    FileOperationProgress shown;
    std::atomic<bool> isCancelled = false;
    std::atomic<bool> hasEnded = false;
    std::mutex mutex;
    std::optional<FileOperationProgress> reported;  // and not yet shown; guarded by `mutex`
};

}  // namespace

void FileOperationWindows::Present(HWND owner, const std::string& title, FileOperationJob& job) {
    CallOnUiThread([&] {
        QWidget* widget = LiveWidget(owner);
        const OwnerDisabler disabled(widget != nullptr ? WindowOf(*widget) : nullptr);
        Presentation(widget != nullptr ? widget->window() : nullptr, title).Run(job);
    });
}

}  // namespace permora::qt
