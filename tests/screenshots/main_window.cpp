// Takes pictures of the main window on a folder: permora-window-pictures SHOWN-FOLDER PICTURE-FOLDER writes
// "main-<light|dark>-<icons|details>.png". The folder shown comes first, as on the program's own command
// line. The user's settings are neither read nor changed.
#include <QApplication>
#include <QEventLoop>
#include <QTimer>
#include <QWidget>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "app/main_app.h"
#include "app/settings_store.h"
#include "framework/qt/application.h"
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

bool TakePictures(const std::string& folder) {
    const test::TemporaryFolder settings;
    setenv("XDG_CONFIG_HOME", settings.Path().c_str(), 1);
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
