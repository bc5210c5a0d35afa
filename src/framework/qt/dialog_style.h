// The desktop's style, adapted to dialog templates.
#pragma once

#include <QProxyStyle>
#include <QStyleOptionGroupBox>
#include <QWidget>

namespace permora::qt {

// Pixels left and right of a text in a list's cells and headers.
inline constexpr int kCellMargin = 4;

// Check boxes with texts of several lines have their mark at the first line. Group boxes draw their frame
// through the middle of their title, since templates place controls for that. The outlines of marks, and the
// toolbar's overflow mark, are visible on a dark background. Headers are aligned with the texts of their
// columns, and disabled icons fade into every background. The menu that the arrow keys would open is marked.
// Message boxes have sharp icons, and buttons without icons. The focus is always visible. Disabled texts are
// readable, since some fields and lists are only for reading, and so are selected ones. Texts are read in the
// direction of their letters, on whichever side they stand, so that paths and the ends of sentences are not
// turned round.
class DialogStyle : public QProxyStyle {
  public:
    using QProxyStyle::polish;
    void polish(QPalette& palette) override;
    void polish(QWidget* widget) override;
    QPixmap generatedIconPixmap(QIcon::Mode mode, const QPixmap& pixmap,
                                const QStyleOption* option) const override;
    QIcon standardIcon(StandardPixmap kind, const QStyleOption* option, const QWidget* widget) const override;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* details) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    QRect subElementRect(SubElement element, const QStyleOption* option,
                         const QWidget* widget) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override;
    void drawItemText(QPainter* painter, const QRect& rect, int flags, const QPalette& palette, bool enabled,
                      const QString& text, QPalette::ColorRole textRole) const override;
};

// Puts the mark of a check box at its upper edge; the others have theirs in the middle.
void AlignToTop(QWidget& checkBox);

}  // namespace permora::qt
