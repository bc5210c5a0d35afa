// Pictures in all looks that count: by day and by night, at 100 % and at 200 %.
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

// Writes "<name>-<light|dark>-<100|200>.png". Ends the program when that fails.
void Save(QWidget& widget, const std::string& name, const Series& series);

// Runs `take` once for each look, with the toolkit started. False when that failed for one of them.
bool TakeInAllLooks(const std::string& folder, const std::function<void(const Series&)>& take);

}  // namespace permora
