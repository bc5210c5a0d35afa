#include "framework/qt/paint.h"

#include <QPainter>
#include <QStyle>

#include "framework/qt/readable_colour.h"
#include "framework/qt/widget.h"

namespace permora::qt {
namespace {

class PainterContext : public CDC {
  public:
    explicit PainterContext(QWidget& painted)
        : widget(painted), painter(&widget), background(widget.palette().color(QPalette::Window)) {
        painter.setPen(widget.palette().color(QPalette::WindowText));
    }
    void SetTextColor(Colour colour) override {
        painter.setPen(Readable(QColor(colour.red, colour.green, colour.blue), background));
    }
    void DrawText(const std::string& text, const Rect& rect, TextStyle style) override {
        QFont font = painter.font();
        font.setUnderline(style == TextStyle::kUnderlined);
        painter.setFont(font);
        painter.save();
        const QRect place = Mirrored(widget, ToQt(rect));
        painter.setClipRect(place);
        widget.style()->drawItemText(&painter, place,
                                     static_cast<int>(Qt::AlignLeft | Qt::AlignTop) | Qt::TextSingleLine,
                                     widget.palette(), true, ToQt(text));
        painter.restore();
    }

  private:
    QWidget& widget;
    QPainter painter;
    QColor background;
};

}  // namespace

void PaintWith(QWidget& widget, const std::function<void(CDC&)>& paint) {
    if (!paint) return;
    PainterContext context(widget);
    paint(context);
}

}  // namespace permora::qt
