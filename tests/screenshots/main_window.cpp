// Takes pictures of the main window on a folder, of its menus, and of the windows and the editor that it
// opens: permora-window-pictures SHOWN-FOLDER PICTURE-FOLDER [LOOK...] writes "<window>-<look>.png". The
// folder shown comes first, as on the program's own command line. The user's settings are neither read nor
// changed.
#include <QAbstractButton>
#include <QApplication>
#include <QEventLoop>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenuBar>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "app/main_app.h"
#include "app/settings_store.h"
#include "framework/qt/list_widget.h"
#include "framework/qt/widget.h"
#include "history/history.h"
#include "platform/api/errors.h"
#include "resources/resource_ids.h"
#include "tests/screenshots/looks.h"
#include "tests/support/temporary_folder.h"

namespace permora {
namespace {

// Until the program waits for its user: it greys its commands then.
void ServeEvents() {
    constexpr std::chrono::milliseconds kLongEnough(100);
    QEventLoop loop;
    QTimer::singleShot(kLongEnough, &loop, &QEventLoop::quit);
    loop.exec();
}

void TakeMenu(QWidget& window, int position, const std::string& name, const Series& series) {
    QMenu* menu = window.findChild<QMenuBar*>()->actions().at(position)->menu();
    menu->popup({0, 0});
    ServeEvents();
    Save(*menu, name, series);
    menu->hide();
}

// So that there is something to undo.
bool RecordChange() {
    std::unique_ptr<History> history;
    if (History::Open(History::UsualPath(), history) != ERROR_SUCCESS) return false;
    const std::unique_ptr<Change> change = history->Begin(ChangeKind::kPermissions);
    const std::vector<DescriptorChange> batch(3);
    std::uint64_t number = 0;
    const bool isRecorded = change->BeginTop({"C:\\", true, {1}}, number) == ERROR_SUCCESS &&
                            change->Record(number, batch) == ERROR_SUCCESS;
    change->End();
    return isRecorded;
}

// What a modal window shows that `command` opens, and then `use` has it.
void TakeDialog(CMainFrame& frame, unsigned int command, const std::string& name, const Series& series,
                const std::function<void(QWidget&)>& use) {
    QTimer timer;  // goes where none was opened
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        QWidget* window = QApplication::activeModalWidget();
        if (window == nullptr) return;
        timer.stop();
        Save(*window, name, series);
        use(*window);
    });
    timer.start(10 * kMillisecondsToShow);
    frame.RunCommand(command);
}

void ClickOk(QWidget& dialog) {
    dialog.findChild<QAbstractButton*>(QStringLiteral("control 1"))->click();
}

// The window of results that a dialog opens.
void TakeResults(CMainFrame& frame, unsigned int command, const std::string& name, const Series& series) {
    TakeDialog(frame, command, name + "-dialog", series, [](QWidget& dialog) {
        if (auto* account = dialog.findChild<QLineEdit*>(QStringLiteral("control %1").arg(IDC_FIND_ACCOUNT)))
            account->setText(QStringLiteral("Everyone"));
        ClickOk(dialog);
    });
    for (int i = 0; i < 5; ++i)
        ServeEvents();
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (!window->isVisible() || window == qt::WidgetOf(frame)->window()) continue;
        window->resize(series.width, window->height());
        ServeEvents();
        Save(*window, name, series);
        window->close();
    }
    ServeEvents();
}

// The toolkit's own search finds no classes but those that its compiler has read.
QWidget* ListIn(const QWidget& window) {
    const QList<QWidget*> widgets = window.findChildren<QWidget*>();
    const auto isList = [](QWidget* each) { return dynamic_cast<qt::ListWidget*>(each) != nullptr; };
    const auto found = std::ranges::find_if(widgets, isList);
    return found != widgets.end() ? *found : nullptr;
}

void TakeViews(CMainFrame& frame, const std::string& name, const Series& series) {
    constexpr std::pair<const char*, unsigned int> kViews[] = {{"icons", ID_VIEW_ICONS},
                                                               {"small-icons", ID_VIEW_SMALL_ICONS},
                                                               {"list", ID_VIEW_LIST},
                                                               {"details", ID_VIEW_DETAILS}};
    for (const auto& [view, command] : kViews) {
        frame.RunCommand(command);
        ServeEvents();
        Save(*qt::WidgetOf(frame)->window(), name + "-" + view, series);
    }
}

void TakePictures(const Series& series) {
    const test::TemporaryFolder settings;
    setenv("XDG_CONFIG_HOME", settings.Path().c_str(), 1);
    setenv("XDG_STATE_HOME", settings.Path().c_str(), 1);
    ProgramSettings record;
    record.windowRect = {0, 0, series.width, 480};
    const bool isReady =
        RecordChange() && StoreProgramFolder(SettingsOwner::kUser, "C:\\") == 0 && StoreSettings(record) == 0;
    CMainApp app;
    if (!isReady || !app.InitInstance()) {
        std::fprintf(stderr, "the main window cannot be opened\n");
        std::exit(EXIT_FAILURE);
    }
    auto& frame = dynamic_cast<CMainFrame&>(*app.mainWindow);
    QWidget& window = *qt::WidgetOf(frame)->window();
    TakeViews(frame, "files", series);
    TakeMenu(window, 1, "menu-edit", series);
    TakeMenu(window, 3, "menu-security", series);
    TakeResults(frame, ID_FIND, "find", series);
    TakeResults(frame, ID_REPORT, "report", series);
    QKeyEvent home(QEvent::KeyPress, Qt::Key_Home, Qt::NoModifier);
    QCoreApplication::sendEvent(ListIn(window), &home);
    TakeDialog(frame, ID_PERMISSIONS, "editor", series, [](QWidget& dialog) { dialog.close(); });
    frame.RunCommand(ID_GO_TO_ROOT);
    TakeViews(frame, "drives", series);
    // A machine whose shares cannot be asked for says so.
    TakeDialog(frame, ID_SHOW_SHARES, "shares-refused", series, [](QWidget& box) { box.close(); });
    TakeViews(frame, "shares", series);
}

}  // namespace
}  // namespace permora

int main(int argumentCount, char** arguments) {
    return permora::TakeInLooks(argumentCount, arguments, 1, {"light", "dark"}, permora::TakePictures);
}
