// Pictures in all looks that count. A look is written in words joined by '-', which are also the end of its
// pictures' names: light, dark or contrast (the colours), "x1.5" (pixels of the display for one of the
// program), "16pt" (the font), "rtl" (from right to left), "420px" (the width of main windows).
#pragma once

#include <QPalette>
#include <QWidget>
#include <functional>
#include <string>
#include <vector>

namespace permora {

// The colours of a desktop by night, and of one in high contrast. Both want the toolkit.
QPalette DarkPalette();
QPalette ContrastPalette();

// Where the pictures of one look go.
struct Series {
    std::string folder;
    std::string look;
    int width = 760;  // of main windows
};

// Long enough for a window to be shown and to get the focus.
inline constexpr int kMillisecondsToShow = 60;

// Writes "<name>-<look>.png". Ends the program when that fails.
void Save(QWidget& widget, const std::string& name, const Series& series);

// What a program does whose arguments are the folder for its pictures and the looks, or none for
// `usualLooks`: runs `take` once for each look, in a process of its own, with the toolkit started.
// `ownArguments` come before them. The program's exit code.
int TakeInLooks(int argumentCount, char** arguments, int ownArguments, std::vector<std::string> usualLooks,
                const std::function<void(const Series&)>& take);

}  // namespace permora
