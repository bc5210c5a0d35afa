// Pictures in all looks that count: by day and by night, at 100 % and at 200 %; in high contrast; with large
// letters.
#pragma once

#include <QPalette>
#include <QWidget>
#include <functional>
#include <string>

namespace permora {

// The colours of a desktop by night.
QPalette DarkPalette();

// Where the pictures of one look go.
struct Series {
    std::string folder;
    std::string suffix;  // theme and scale
};

// Long enough for a window to be shown and to get the focus.
inline constexpr int kMillisecondsToShow = 60;

// Writes "<name>-<light|dark>-<100|200>.png", and contrast and letters at 100 %. Ends the program when that
// fails.
void Save(QWidget& widget, const std::string& name, const Series& series);

// What a program does whose one argument is the folder for its pictures: runs `take` once for each look, with
// the toolkit started. The program's exit code.
int TakeInAllLooks(int argumentCount, char** arguments, const std::function<void(const Series&)>& take);

}  // namespace permora
