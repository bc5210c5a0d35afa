#include "framework/qt/elided_label.h"

#include <QStyle>
#include <QStylePainter>

namespace permora::qt {

ElidedLabel::ElidedLabel(int shownLetters, QWidget* parent) : QLabel(parent), letters(shownLetters) {
    setTextFormat(Qt::PlainText);  // names of files must not be taken for markup
}

void ElidedLabel::Show(const QString& whole) {
    if (whole == text()) return;
    setText(whole);
    setToolTip(whole.toHtmlEscaped());
}

QSize ElidedLabel::sizeHint() const {
    return {fontMetrics().averageCharWidth() * letters, fontMetrics().height()};
}

QSize ElidedLabel::minimumSizeHint() const {
    return sizeHint();
}

void ElidedLabel::paintEvent(QPaintEvent* /*event*/) {
    QStylePainter painter(this);
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideMiddle, width());
    style()->drawItemText(&painter, rect(), static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter), palette(),
                          isEnabled(), shown, foregroundRole());
}

}  // namespace permora::qt
