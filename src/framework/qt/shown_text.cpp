#include "framework/qt/shown_text.h"

#include <algorithm>

#include "platform/utf8.h"

namespace permora::qt {
namespace {

constexpr char32_t kFirstByte = 0xF001;
constexpr char32_t kLastByte = 0xF0FF;

bool IsByte(char32_t character) {
    return character >= kFirstByte && character <= kLastByte;
}

bool NeedsEscape(char32_t character) {
    return IsByte(character) || IsUnseenCharacter(character) ||
           QChar::category(character) == QChar::Other_Control;
}

QString EscapeOf(char32_t character) {
    if (!IsByte(character)) return QStringLiteral("\\u%1").arg(uint{character}, 4, 16, QLatin1Char('0'));
    const unsigned byte = character & 0xFFU;
    if (byte >= 0x20 && byte < 0x7F) return QChar(static_cast<char16_t>(byte));
    return QStringLiteral("\\x%1").arg(byte, 2, 16, QLatin1Char('0'));
}

}  // namespace

QList<TextPiece> PiecesOf(const QString& text) {
    QList<TextPiece> pieces;
    const QList<uint> characters = text.toUcs4();
    if (std::ranges::none_of(characters, NeedsEscape)) return {{text}};
    for (const char32_t character : characters) {
        const bool isEscape = NeedsEscape(character);
        if (pieces.isEmpty() || pieces.last().isEscape != isEscape) pieces.append({{}, isEscape});
        pieces.last().text += isEscape ? EscapeOf(character) : QString::fromUcs4(&character, 1);
    }
    return pieces;
}

QString ShownText(const QString& text) {
    QString shown;
    for (const TextPiece& piece : PiecesOf(text))
        shown += piece.text;
    return shown;
}

}  // namespace permora::qt
