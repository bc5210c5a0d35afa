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

constexpr int kLargeLetters = 16;  // points

QPalette ContrastPalette() {
    QPalette palette(Qt::white, Qt::black, Qt::white, Qt::white, Qt::white, Qt::white, Qt::white, Qt::black,
                     Qt::black);
    palette.setColor(QPalette::Highlight, Qt::yellow);
    palette.setColor(QPalette::HighlightedText, Qt::black);
    QApplication::style()->polish(palette);
    return palette;
}

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
        const auto takeWith = [&](const char* theme, const QPalette& palette) {
            QApplication::setPalette(palette);
            take({folder, std::string("-") + theme + "-" + scaleName});
        };
        takeWith("light", light);
        takeWith("dark", DarkPalette());
        if (std::string(scaleFactor) == "1") {
            takeWith("contrast", ContrastPalette());
            QFont letters = QApplication::font();
            letters.setPointSize(kLargeLetters);
            QApplication::setFont(letters);
            takeWith("letters", light);
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
