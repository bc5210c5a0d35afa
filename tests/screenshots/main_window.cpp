// Takes pictures of the main window on a folder: permora-window-pictures SHOWN-FOLDER PICTURE-FOLDER writes
// "main-<light|dark>-<icons|details>.png" and "menu-<edit|security>-<light|dark>.png". The folder shown comes
// first, as on the program's own command line. The user's settings are neither read nor changed.
#include <QApplication>
#include <QEventLoop>
#include <QMenuBar>
#include <QTimer>
#include <QWidget>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <utility>
#include <vector>

#include "app/main_app.h"
#include "app/settings_store.h"
#include "framework/qt/application.h"
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

bool TakePicture(const QString& path) {
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (widget->isVisible()) return widget->grab().save(path);
    return false;
}

bool TakeMenu(int position, const QString& path) {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        const auto* bar = widget->isVisible() ? widget->findChild<QMenuBar*>() : nullptr;
        if (bar == nullptr) continue;
        QMenu* menu = bar->actions().at(position)->menu();
        menu->popup({0, 0});
        ServeEvents();
        const bool isSaved = menu->grab().save(path);
        menu->hide();
        return isSaved;
    }
    return false;
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

bool TakePictures(const std::string& folder) {
    const test::TemporaryFolder settings;
    setenv("XDG_CONFIG_HOME", settings.Path().c_str(), 1);
    setenv("XDG_STATE_HOME", settings.Path().c_str(), 1);
    if (!RecordChange()) return false;
    ProgramSettings record;
    record.windowRect = {0, 0, 760, 480};
    if (StoreProgramFolder(SettingsOwner::kUser, "C:\\") != 0 || StoreSettings(record) != 0) return false;
    CMainApp app;
    if (!app.InitInstance()) return false;
    auto& frame = dynamic_cast<CMainFrame&>(*app.mainWindow);
    const QPalette light = QApplication::palette();
    bool allTaken = true;
    for (const bool isDark : {false, true}) {
        QApplication::setPalette(isDark ? DarkPalette() : light);
        for (const bool isReport : {false, true}) {
            frame.RunCommand(isReport ? ID_VIEW_DETAILS : ID_VIEW_ICONS);
            ServeEvents();
            const std::string name = std::string("main-") + (isDark ? "dark-" : "light-") +
                                     (isReport ? "details" : "icons") + ".png";
            allTaken = TakePicture(QString::fromStdString(folder + "/" + name)) && allTaken;
        }
        constexpr std::pair<const char*, int> kMenus[] = {{"edit", 1}, {"security", 3}};
        for (const auto& [menu, position] : kMenus) {
            const std::string name = std::string("menu-") + menu + (isDark ? "-dark.png" : "-light.png");
            allTaken = TakeMenu(position, QString::fromStdString(folder + "/" + name)) && allTaken;
        }
    }
    return allTaken;
}

}  // namespace
}  // namespace permora

int main(int argumentCount, char** argumentTexts) {
    if (argumentCount != 3) {
        std::fprintf(stderr, "usage: permora-window-pictures SHOWN-FOLDER PICTURE-FOLDER\n");
        return EXIT_FAILURE;
    }
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    // Absolute, since the folder shown becomes the current directory.
    const std::string pictures = std::filesystem::absolute(argumentTexts[2]);
    std::filesystem::create_directories(pictures);
    const permora::QtApplication application(argumentCount, argumentTexts);
    return permora::TakePictures(pictures) ? EXIT_SUCCESS : EXIT_FAILURE;
}
