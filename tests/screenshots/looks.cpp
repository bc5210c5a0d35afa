#include "tests/screenshots/looks.h"

#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <QStyle>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "framework/qt/application.h"
#include "framework/qt/widget.h"

namespace permora {
namespace {

// One scale in a process of its own, since the toolkit takes it at its start.
bool TakeInChild(const std::string& folder, const char* scaleFactor, const char* scaleName,
                 const std::function<void(const Series&)>& take) {
    const pid_t child = fork();
    if (child == 0) {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        setenv("QT_SCALE_FACTOR", scaleFactor, 1);
        int argumentCount = 1;
        char name[] = "permora-screenshots";
        char* arguments[] = {name, nullptr};
        const QtApplication application(argumentCount, arguments);
        const QPalette light = QApplication::palette();
        for (const bool isDark : {false, true}) {
            QApplication::setPalette(isDark ? DarkPalette() : light);
            take({folder, std::string(isDark ? "-dark-" : "-light-") + scaleName});
        }
        std::exit(EXIT_SUCCESS);
    }
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}

}  // namespace

QPalette DarkPalette() {
    const QColor window(0x2D, 0x2D, 0x30);
    const QColor base(0x1E, 0x1E, 0x1E);
    const QColor text(0xE6, 0xE6, 0xE6);
    QPalette palette(text, window.lighter(120), window.lighter(160), window.darker(150), window, text,
                     Qt::white, base, window);
    palette.setColor(QPalette::Highlight, QColor(0x2A, 0x6F, 0xB8));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    QApplication::style()->polish(palette);
    return palette;
}

void Save(QWidget& widget, const std::string& name, const Series& series) {
    const std::string path = series.folder + "/" + name + series.suffix + ".png";
    if (widget.grab().save(qt::ToQt(path), "PNG")) return;
    std::perror(path.c_str());
    std::exit(EXIT_FAILURE);
}

int TakeInAllLooks(int argumentCount, char** arguments, const std::function<void(const Series&)>& take) {
    if (argumentCount != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", arguments[0]);
        return EXIT_FAILURE;
    }
    // Absolute, since some go to the folder that they show.
    const std::string folder = std::filesystem::absolute(arguments[1]);
    std::filesystem::create_directories(folder);
    const bool allTaken = TakeInChild(folder, "1", "100", take) && TakeInChild(folder, "2", "200", take);
    return allTaken ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace permora
