#include "framework/qt/paint.h"

#include <QPainter>

#include "framework/qt/widget.h"

namespace permora::qt {
namespace {

class PainterContext : public CDC {
  public:
    explicit PainterContext(QWidget& widget) : painter(&widget) {
        painter.setPen(widget.palette().color(QPalette::WindowText));
    }
    void SetTextColor(Colour colour) override {
        painter.setPen(QColor(colour.red, colour.green, colour.blue));
    }
    void DrawText(const std::string& text, const Rect& rect, TextStyle style) override {
        QFont font = painter.font();
        font.setUnderline(style == TextStyle::kUnderlined);
        painter.setFont(font);
        painter.save();
        painter.setClipRect(ToQt(rect));
        painter.drawText(ToQt(rect), Qt::AlignLeft | Qt::AlignTop | Qt::TextSingleLine, ToQt(text));
        painter.restore();
    }

  private:
    QPainter painter;
};

}  // namespace

void PaintWith(QWidget& widget, const std::function<void(CDC&)>& paint) {
    if (!paint) return;
    PainterContext context(widget);
    paint(context);
}

}  // namespace permora::qt
