#include "framework/qt/elided_label.h"

#include <QStyle>
#include <QStylePainter>
#include <utility>

namespace permora::qt {

ElidedLabel::ElidedLabel(int shownLetters, QWidget* parent, QString caption)
    : QLabel(parent), letters(shownLetters), captionShown(std::move(caption)) {
    setTextFormat(Qt::PlainText);  // names of files must not be taken for markup
    setAccessibleName(captionShown);
}

void ElidedLabel::Show(const QString& whole) {
    if (whole == text()) return;
    setText(whole);
    // The toolkit guesses from the text whether a tip is markup.
    setToolTip(whole.isEmpty() ? whole
                               : QLatin1String("<qt>") + whole.toHtmlEscaped() + QLatin1String("</qt>"));
    setAccessibleDescription(whole);  // the toolkit would take the tip's markup
    // An accessible name would replace the text.
    if (!captionShown.isEmpty()) setAccessibleName(captionShown + QLatin1Char(' ') + whole);
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
