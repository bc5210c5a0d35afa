// Texts of lists as they are painted: names of files may hold what cannot be seen, or what no Windows name
// holds.
#pragma once

#include <QList>
#include <QString>

namespace permora::qt {

// A piece stands for what cannot be painted as it is when `isEscape` is true, and is painted dimmed then.
struct TextPiece {
    QString text;
    bool isEscape = false;
};

// What the platform layer writes by private-use characters (U+F001 to U+F0FF, a byte of the host's name each)
// becomes the character again, or "\x0a" where it has no look. Characters that turn the writing direction or
// cannot be seen become "\u202e". An ordinary text is one piece.
QList<TextPiece> PiecesOf(const QString& text);
QString ShownText(const QString& text);  // all pieces

}  // namespace permora::qt
