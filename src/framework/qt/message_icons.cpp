#include "framework/qt/message_icons.h"

#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <array>

namespace permora::qt {
namespace {

// A coloured shape with a white sign, in the colours of the program's other pictures.
struct MessageLook {
    QStyle::StandardPixmap kind;
    const char* themeName;
    QRgb lightFilling;
    QRgb fullFilling;
    QRgb outline;
    char sign;
};
constexpr std::array<MessageLook, 4> kMessageLooks{{
    {QStyle::SP_MessageBoxInformation, "dialog-information", 0xFF6DB0F4, 0xFF3180DA, 0xFF2A6FC0, 'i'},
    {QStyle::SP_MessageBoxQuestion, "dialog-question", 0xFF6DB0F4, 0xFF3180DA, 0xFF2A6FC0, '?'},
    {QStyle::SP_MessageBoxWarning, "dialog-warning", 0xFFFFDF85, 0xFFF6B73C, 0xFFB0740C, '!'},
    {QStyle::SP_MessageBoxCritical, "dialog-error", 0xFFF2837B, 0xFFD8433D, 0xFFC8403B, 'x'},
}};
constexpr qreal kGrid = 32;  // what the shapes below are drawn on

void DrawShape(QPainter& painter, const MessageLook& look) {
    QLinearGradient filling(0, 0, 0, kGrid);
    filling.setColorAt(0, look.lightFilling);
    filling.setColorAt(1, look.fullFilling);
    painter.setBrush(filling);
    painter.setPen(QPen(QColor(look.outline), 1, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    if (look.kind != QStyle::SP_MessageBoxWarning) {
        painter.drawEllipse(QRectF(1.5, 1.5, kGrid - 3, kGrid - 3));
        return;
    }
    QPainterPath triangle(QPointF(14.2, 3.5));
    triangle.quadTo(16, 0.5, 17.8, 3.5);
    triangle.lineTo(30.5, 26.5);
    triangle.quadTo(31.5, 29.5, 28.5, 29.5);
    triangle.lineTo(3.5, 29.5);
    triangle.quadTo(0.5, 29.5, 1.5, 26.5);
    triangle.closeSubpath();
    painter.drawPath(triangle);
}

void DrawSign(QPainter& painter, const MessageLook& look) {
    const QColor colour = look.kind == QStyle::SP_MessageBoxWarning ? QColor(0x4A, 0x31, 0x05) : Qt::white;
    painter.setPen(QPen(colour, 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    const auto drawDot = [&](qreal y) {
        painter.save();
        painter.setPen(Qt::NoPen);
        painter.setBrush(colour);
        painter.drawEllipse(QPointF(16, y), 2, 2);
        painter.restore();
    };
    switch (look.sign) {
        case 'i':
            painter.drawLine(QPointF(16, 14.5), QPointF(16, 23.5));
            drawDot(9);
            break;
        case '!':
            painter.drawLine(QPointF(16, 11), QPointF(16, 19.5));
            drawDot(25);
            break;
        case '?': {
            QPainterPath hook(QPointF(11.5, 12));
            hook.cubicTo(11.5, 5.5, 20.5, 5.5, 20.5, 11.5);
            hook.cubicTo(20.5, 15, 16, 15, 16, 18.5);
            painter.drawPath(hook);
            drawDot(24);
            break;
        }
        default:
            painter.drawLine(QPointF(11, 11), QPointF(21, 21));
            painter.drawLine(QPointF(21, 11), QPointF(11, 21));
    }
}

// Draws in the requested size, so that large displays get sharp edges.
class MessageIconEngine : public QIconEngine {
  public:
    explicit MessageIconEngine(const MessageLook& shown) : look(shown) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State) override {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(rect.topLeft());
        painter->scale(rect.width() / kGrid, rect.height() / kGrid);
        DrawShape(*painter, look);
        DrawSign(*painter, look);
        painter->restore();
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap drawn(size);
        drawn.fill(Qt::transparent);
        QPainter painter(&drawn);
        paint(&painter, drawn.rect(), mode, state);
        return drawn;
    }
    QIconEngine* clone() const override { return new MessageIconEngine(look); }

  private:
    const MessageLook& look;
};

}  // namespace

QIcon MessageIcon(QStyle::StandardPixmap kind) {
    for (const MessageLook& look : kMessageLooks) {
        if (look.kind != kind) continue;
        const QString themeName = QString::fromLatin1(look.themeName);
        return QIcon::hasThemeIcon(themeName) ? QIcon::fromTheme(themeName)
                                              : QIcon(new MessageIconEngine(look));
    }
    return {};
}

}  // namespace permora::qt
