#include "framework/qt/paint.h"

#include <QPainter>

#include "framework/qt/widget.h"

namespace permora::qt {
namespace {

// A readable form of `colour` on `background`: lighter on a dark one, with the same hue.
QColor Readable(QColor colour, const QColor& background) {
    constexpr int kDark = 128;
    constexpr int kLightEnough = 190;
    if (background.lightness() < kDark && colour.lightness() < kLightEnough)
        colour.setHsl(colour.hslHue(), colour.hslSaturation(), kLightEnough);
    return colour;
}

class PainterContext : public CDC {
  public:
    explicit PainterContext(QWidget& widget)
        : painter(&widget), background(widget.palette().color(QPalette::Window)) {
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
        painter.setClipRect(ToQt(rect));
        painter.drawText(ToQt(rect), Qt::AlignLeft | Qt::AlignTop | Qt::TextSingleLine, ToQt(text));
        painter.restore();
    }

  private:
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
