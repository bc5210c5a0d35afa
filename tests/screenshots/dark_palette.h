// The colours of a desktop by night.
#pragma once

#include <QPalette>

namespace permora {

inline QPalette DarkPalette() {
    const QColor window(0x2D, 0x2D, 0x30);
    const QColor base(0x1E, 0x1E, 0x1E);
    const QColor text(0xE6, 0xE6, 0xE6);
    const QColor disabled(0x80, 0x80, 0x80);
    QPalette palette(text, window.lighter(120), window.lighter(160), window.darker(150), window, text,
                     Qt::white, base, window);
    palette.setColor(QPalette::Highlight, QColor(0x2A, 0x6F, 0xB8));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, disabled);
    return palette;
}

}  // namespace permora
