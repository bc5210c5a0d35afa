#include "tests/screenshots/looks.h"

#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <QStyle>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <utility>

#include "framework/qt/application.h"
#include "framework/qt/widget.h"

namespace permora {
namespace {

// Of a word like "x1.5", by which the toolkit scales; empty: it is none.
std::string FactorIn(const std::string& word) {
    const std::string factor = word.substr(1);
    const bool isNumber = factor.find_first_not_of("0123456789.") == factor.npos;
    return word.starts_with('x') && isNumber && std::atof(factor.c_str()) > 0 ? factor : std::string();
}

// Shows the toolkit's windows as the words of a look say. False: one is unknown.
bool Apply(const std::string& word, Series& series) {
    const auto number = [&](const char* unit) {
        int value = 0;
        std::istringstream in(word);
        std::string rest;
        return in >> value >> rest && value > 0 && rest == unit ? value : 0;
    };
    if (!FactorIn(word).empty()) return true;  // the toolkit has it
    if (word == "light") {
        QApplication::setPalette(QApplication::style()->standardPalette());
    } else if (word == "dark") {
        QApplication::setPalette(DarkPalette());
    } else if (word == "contrast") {
        QApplication::setPalette(ContrastPalette());
    } else if (word == "rtl") {
        QApplication::setLayoutDirection(Qt::RightToLeft);
    } else if (const int points = number("pt")) {
        QFont font = QApplication::font();
        font.setPointSize(points);
        QApplication::setFont(font);
    } else if (const int width = number("px")) {
        series.width = width;
    } else {
        std::fprintf(stderr, "unknown look: %s\n", word.c_str());
        return false;
    }
    return true;
}

std::vector<std::string> WordsOf(const std::string& look) {
    std::vector<std::string> words;
    std::istringstream in(look);
    for (std::string word; std::getline(in, word, '-');)
        words.push_back(word);
    return words;
}

// In a process of its own, since the toolkit takes the scale at its start.
bool TakeInChild(Series series, const std::function<void(const Series&)>& take) {
    const pid_t child = fork();
    if (child == 0) {
        setenv("QT_QPA_PLATFORM", "offscreen", 0);  // unless a real screen is to bound the windows
        const std::vector<std::string> words = WordsOf(series.look);
        for (const std::string& word : words)
            if (const std::string factor = FactorIn(word); !factor.empty())
                setenv("QT_SCALE_FACTOR", factor.c_str(), 1);
        int argumentCount = 1;
        char name[] = "pictures";
        char* arguments[] = {name, nullptr};
        const QtApplication application(argumentCount, arguments);
        for (const std::string& word : words)
            if (!Apply(word, series)) std::exit(EXIT_FAILURE);
        take(series);
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

QPalette ContrastPalette() {
    QPalette palette(Qt::white, Qt::black, Qt::white, Qt::white, Qt::white, Qt::white, Qt::white, Qt::black,
                     Qt::black);
    palette.setColor(QPalette::Highlight, Qt::yellow);
    palette.setColor(QPalette::HighlightedText, Qt::black);
    QApplication::style()->polish(palette);
    return palette;
}

void Save(QWidget& widget, const std::string& name, const Series& series) {
    const std::string path = series.folder + "/" + name + "-" + series.look + ".png";
    if (widget.grab().save(qt::ToQt(path), "PNG")) return;
    std::perror(path.c_str());
    std::exit(EXIT_FAILURE);
}

int TakeInLooks(int argumentCount, char** arguments, int ownArguments, std::vector<std::string> usualLooks,
                const std::function<void(const Series&)>& take) {
    const int folderIndex = ownArguments + 1;
    if (argumentCount <= folderIndex) {
        std::fprintf(stderr, "usage: %s%s FOLDER [LOOK...]\n", arguments[0],
                     ownArguments > 0 ? " SHOWN-FOLDER" : "");
        return EXIT_FAILURE;
    }
    // Absolute, since some go to the folder that they show.
    const std::string folder = std::filesystem::absolute(arguments[folderIndex]);
    std::filesystem::create_directories(folder);
    std::vector<std::string> looks(arguments + folderIndex + 1, arguments + argumentCount);
    if (looks.empty()) looks = std::move(usualLooks);
    bool allTaken = true;
    for (const std::string& look : looks)
        allTaken = TakeInChild({folder, look}, take) && allTaken;
    return allTaken ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace permora
