#include "framework/qt/application.h"

#include <QFontMetrics>
#include <QLocale>
#include <QTimer>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <utility>

#include "framework/native.h"
#include "framework/qt/dialog_accessible.h"
#include "framework/qt/dialog_style.h"
#include "framework/qt/file_operation_presenter.h"
#include "framework/qt/message_box.h"
#include "framework/stoppable_work.h"

namespace permora {
namespace {

std::atomic<QtApplication*> theToolkit = nullptr;

// The toolkit calls exit() at any moment when the display server goes away. Windows can no longer be
// destroyed in order, but unfinished work on a disk can be put in order.
void EndWithoutDisplay(int exitCode, void* /*argument*/) {
    constexpr std::chrono::seconds kLimit{5};
    QtApplication* toolkit = theToolkit;
    if (toolkit == nullptr) return;
    toolkit->isDisplayLost = true;
    thePresenters.messages = nullptr;
    StopAllWork(kLimit);
    std::fflush(nullptr);
    std::_Exit(exitCode);
}

// That of the user's language, although the texts are English: who reads to the left is used to windows that
// go to the left. The toolkit's option -reverse turns it.
Qt::LayoutDirection DirectionOfUser() {
    const bool isToTheLeft = QLocale::system().textDirection() == Qt::RightToLeft;
    return isToTheLeft != QApplication::isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight;
}

// Ends all loops, also those of windows that refuse to be closed. The callers of the loops wait for their
// workers.
void EndToolkit() {
    thePresenters.messages = nullptr;
    StopAllWork(std::chrono::milliseconds(0));
    theToolkit.load()->isToEnd = true;
    QCoreApplication::exit(0);
}

}  // namespace

QtApplication::QtApplication(int& argc, char** argv)
    : application(argc, argv),
      bridge(std::make_unique<qt::ThreadBridge>()),
      endSignals(EndToolkit),
      presenter(std::make_unique<qt::WindowPresenter>()),
      fileOperations(std::make_unique<qt::FileOperationWindows>()) {
    // Closing the frame ends the program; closing a dialog without a frame does not.
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setStyle(new qt::DialogStyle);  // the application owns it
    QApplication::setLayoutDirection(DirectionOfUser());
    qt::InstallDialogAccessibility();
    if (qt::HasSelections()) clipboard.offer = std::make_unique<qt::ClipboardOffer>();
    theToolkit = this;
    [[maybe_unused]] static const int kRegistered = on_exit(EndWithoutDisplay, nullptr);
    presenterBefore = thePresenters.messages.exchange(presenter.get());
    fileOperationsBefore = thePresenters.fileOperations.exchange(fileOperations.get());
}

QtApplication::~QtApplication() {
    thePresenters.fileOperations = fileOperationsBefore;
    thePresenters.messages = presenterBefore;
    theToolkit = nullptr;
}

QtApplication* QtApplication::Current() {
    return theToolkit;
}

int QtApplication::Run() {
    return isToEnd ? 0 : QApplication::exec();
}

int RunToolkit(int argc, char** argv, const std::function<bool()>& start,
               const std::function<void()>& finish) {
    constexpr int kStartFailed = 1;
    QtApplication application(argc, argv);
    const int exitCode = start() ? application.Run() : kStartFailed;
    finish();
    return exitCode;
}

void StopToolkit() {
    QApplication::quit();
}

bool IsModalWindowOpen() {
    return QApplication::activeModalWidget() != nullptr;
}

bool IsUiThread() {
    const QtApplication* toolkit = theToolkit;
    return toolkit == nullptr || toolkit->IsOnUiThread();
}

void PostToUiThread(std::function<void()> work) {
    if (QtApplication* toolkit = theToolkit) toolkit->Bridge().Post(std::move(work));
}

void CallOnUiThread(const std::function<void()>& work) {
    QtApplication* toolkit = theToolkit;
    if (toolkit == nullptr || toolkit->IsOnUiThread()) {
        work();
    } else if (!toolkit->isDisplayLost) {
        auto task = std::make_shared<std::packaged_task<void()>>([&work]() noexcept { work(); });
        const std::future<void> end = task->get_future();
        // The bridge alone owns the task, so the wait also ends when the bridge is destroyed without having
        // run it.
        toolkit->Bridge().Post([own = std::move(task)] { (*own)(); });
        end.wait();
    }
}

void PostLater(int milliseconds, std::function<void()> work) {
    if (QtApplication* toolkit = theToolkit)
        QTimer::singleShot(milliseconds, Qt::PreciseTimer, &toolkit->Bridge(), std::move(work));
}

void ServeWorkers() {
    if (QtApplication* toolkit = theToolkit) toolkit->Bridge().Serve();
}

Size DialogBaseUnits() {
    const QFontMetrics metrics(QApplication::font());
    constexpr int kLetters = 26;
    const int width =
        metrics.horizontalAdvance(QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"));
    return {(width / kLetters + 1) / 2, metrics.height()};
}

}  // namespace permora
