#include "framework/qt/dialog_style.h"

#include <QImage>
#include <QLabel>
#include <QPainter>
#include <QStyleOptionButton>
#include <QStyleOptionFocusRect>
#include <QStyleOptionToolButton>
#include <QTextFormat>
#include <QVariant>
#include <algorithm>
#include <cstdlib>
#include <optional>
#include <span>

#include "framework/qt/message_icons.h"
#include "framework/qt/readable_colour.h"

namespace permora::qt {
namespace {

constexpr char kAlignedToTop[] = "permoraAlignedToTop";

bool IsRaised(const QWidget* widget) {
    return widget != nullptr && widget->property(kAlignedToTop).toBool();
}

void DrawRaisedCheckBox(QPainter& painter, const QStyle& style, const QStyleOptionButton& box,
                        const QWidget& widget) {
    const int line = box.fontMetrics.height();
    const int textHeight = static_cast<int>(box.text.count(QLatin1Char('\n')) + 1) * line;
    QStyleOptionButton part = box;
    part.rect = style.subElementRect(QStyle::SE_CheckBoxIndicator, &box, &widget);
    part.rect.moveTop(box.rect.top() + std::max(0, (line - part.rect.height() + 1) / 2));
    style.drawPrimitive(QStyle::PE_IndicatorCheckBox, &part, &painter, &widget);

    part.rect = style.subElementRect(QStyle::SE_CheckBoxContents, &box, &widget);
    part.rect.setTop(box.rect.top());
    part.rect.setHeight(textHeight);
    style.drawControl(QStyle::CE_CheckBoxLabel, &part, &painter, &widget);

    if (!box.state.testFlag(QStyle::State_HasFocus)) return;
    QStyleOptionFocusRect focus;
    focus.QStyleOption::operator=(box);
    focus.rect = part.rect;
    style.drawPrimitive(QStyle::PE_FrameFocusRect, &focus, &painter, &widget);
}

// Some styles derive a mark's outline from the window's colour, which is invisible on a dark background.
void DrawDarkOutline(QPainter& painter, const QStyleOption& option, bool isRound) {
    QColor outline = option.palette.color(QPalette::Text);
    if (outline.lightness() <= option.palette.color(QPalette::Base).lightness()) return;
    outline.setAlphaF(0.5F);
    painter.save();
    painter.setPen(outline);
    painter.setBrush(Qt::NoBrush);
    const QRect rect = option.rect.adjusted(0, 0, -1, -1);
    if (isRound) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.drawEllipse(rect);
    } else {
        painter.drawRect(rect);
    }
    painter.restore();
}

// The style makes the edges of fields, lists and buttons of the window's colour, darker. A black window, as
// in high contrast, would have none.
bool LacksEdge(QStyle::PrimitiveElement element, const QStyleOption& option) {
    if (option.palette.color(QPalette::Window) != QColor(Qt::black)) return false;
    if (element == QStyle::PE_Frame) return true;
    if (option.state.testFlag(QStyle::State_HasFocus)) return false;
    return element == QStyle::PE_FrameLineEdit || element == QStyle::PE_FrameTabWidget ||
           element == QStyle::PE_PanelButtonCommand;
}

// Gives disabled text a colour between those of text and background, unless its own differs more from both.
// Some themes do not distinguish disabled text.
void TellDisabledApart(QPalette& palette, QPalette::ColorRole textRole, QPalette::ColorRole groundRole) {
    constexpr qreal kTextShare = 0.55;
    const QColor text = palette.color(QPalette::Active, textRole);
    const QColor ground = palette.color(QPalette::Disabled, groundRole);
    // A disabled list has the window's background.
    const QColor readable = Readable(Readable(Mixed(text, ground, kTextShare), ground),
                                     palette.color(QPalette::Disabled, QPalette::Window));
    const auto distance = [&](const QColor& colour) {
        return std::abs(colour.lightness() - ground.lightness());
    };
    const QColor disabled = palette.color(QPalette::Disabled, textRole);
    if (disabled == text || distance(disabled) < distance(readable))
        palette.setColor(QPalette::Disabled, textRole, readable);
}

void DrawGroupBox(QPainter& painter, const QStyle& style, const QStyleOptionGroupBox& box) {
    constexpr int kIndent = 9;
    constexpr int kGap = 3;
    constexpr qreal kRadius = 2;
    const int line = box.fontMetrics.height();
    const int width = box.fontMetrics.size(Qt::TextShowMnemonic, box.text).width();
    const QRect title = QStyle::visualRect(box.direction, box.rect,
                                           QRect(box.rect.left() + kIndent, box.rect.top(), width, line));
    QColor outline = box.palette.color(QPalette::WindowText);
    outline.setAlphaF(0.3F);
    painter.save();
    if (!box.text.isEmpty())
        painter.setClipRegion(QRegion(box.rect) - QRegion(title.adjusted(-kGap, 0, kGap, 0)));
    painter.setPen(outline);
    painter.drawRoundedRect(box.rect.adjusted(0, line / 2, -1, -1), kRadius, kRadius);
    painter.restore();
    style.drawItemText(&painter, title, Qt::AlignLeft | Qt::TextShowMnemonic, box.palette,
                       box.state.testFlag(QStyle::State_Enabled), box.text, QPalette::WindowText);
}

// The toolkit shows the focus only after Tab has moved it. A user who opened the window by a key must see the
// focus at once.
template <class Option>
std::optional<Option> WithVisibleFocus(const QStyleOption* option) {
    const auto* known = qstyleoption_cast<const Option*>(option);
    if (known == nullptr || !known->state.testFlag(QStyle::State_HasFocus)) return std::nullopt;
    Option visible = *known;
    visible.state |= QStyle::State_KeyboardFocusChange;
    return visible;
}

// A push button with the focus would look like the default button without it, and the frame of a combo box is
// hardly visible on a dark background.
void DrawFocusInside(QPainter& painter, const QStyle& style, const QStyleOption& control,
                     const QWidget* widget) {
    constexpr int kInset = 3;
    QStyleOptionFocusRect focus;
    focus.QStyleOption::operator=(control);
    focus.rect = control.rect.adjusted(kInset, kInset, -kInset, -kInset);
    style.drawPrimitive(QStyle::PE_FrameFocusRect, &focus, &painter, widget);
}

// The picture in greys through which the background is seen, whatever its colour.
QImage Faded(const QImage& picture) {
    constexpr int kOpacity = 40;  // of 100
    QImage faded = picture.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < faded.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(faded.scanLine(y));
        for (QRgb& pixel : std::span(line, static_cast<std::size_t>(faded.width()))) {
            const int grey = qGray(pixel);
            pixel = qRgba(grey, grey, grey, qAlpha(pixel) * kOpacity / 100);
        }
    }
    return faded;
}

// The mark of a toolbar whose buttons do not all fit is dark in every theme. In a dark theme it gets the
// colour of texts.
void RecolourOverflowMark(QStyleOptionToolButton& button) {
    const QColor text = button.palette.color(QPalette::ButtonText);
    if (text.lightness() <= button.palette.color(QPalette::Button).lightness()) return;
    QPixmap mark = button.icon.pixmap(button.iconSize);
    QPainter painter(&mark);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(mark.rect(), text);
    painter.end();
    button.icon = mark;
}

}  // namespace

void DialogStyle::polish(QPalette& palette) {
    QProxyStyle::polish(palette);
    TellDisabledApart(palette, QPalette::WindowText, QPalette::Window);
    TellDisabledApart(palette, QPalette::Text, QPalette::Base);
    TellDisabledApart(palette, QPalette::ButtonText, QPalette::Button);
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive})
        palette.setColor(group, QPalette::Highlight,
                         Readable(palette.color(group, QPalette::Highlight),
                                  palette.color(group, QPalette::HighlightedText)));
}

// The toolkit's labels stand on the side on which their letters begin, away from what they belong to.
void DialogStyle::polish(QWidget* widget) {
    QProxyStyle::polish(widget);
    auto* label = qobject_cast<QLabel*>(widget);
    if (label == nullptr || !label->isRightToLeft() || !label->alignment().testFlag(Qt::AlignLeft)) return;
    label->setAlignment((label->alignment() & Qt::AlignVertical_Mask) | Qt::AlignRight | Qt::AlignAbsolute);
}

QPixmap DialogStyle::generatedIconPixmap(QIcon::Mode mode, const QPixmap& pixmap,
                                         const QStyleOption* option) const {
    if (mode != QIcon::Disabled) return QProxyStyle::generatedIconPixmap(mode, pixmap, option);
    return QPixmap::fromImage(Faded(pixmap.toImage()));
}

QIcon DialogStyle::standardIcon(StandardPixmap kind, const QStyleOption* option,
                                const QWidget* widget) const {
    const QIcon icon = MessageIcon(kind);
    return icon.isNull() ? QProxyStyle::standardIcon(kind, option, widget) : icon;
}

int DialogStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                           QStyleHintReturn* details) const {
    if (hint == SH_DialogButtonBox_ButtonsHaveIcons) return 0;
    // A dotted line around a link that has the focus is hardly seen.
    if (auto* focus = qstyleoption_cast<QStyleHintReturnVariant*>(details);
        hint == SH_TextControl_FocusIndicatorTextCharFormat && focus != nullptr && option != nullptr) {
        QTextCharFormat format;
        format.setBackground(option->palette.highlight());
        format.setForeground(option->palette.highlightedText());
        focus->variant = format;
        return 1;
    }
    return QProxyStyle::styleHint(hint, option, widget, details);
}

int DialogStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
    return metric == PM_HeaderMargin ? kCellMargin : QProxyStyle::pixelMetric(metric, option, widget);
}

void DialogStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                              const QWidget* widget) const {
    const auto* menu =
        element == CE_MenuBarItem ? qstyleoption_cast<const QStyleOptionMenuItem*>(option) : nullptr;
    if (menu != nullptr && menu->state.testFlag(State_Selected)) {
        QStyleOptionMenuItem chosen = *menu;
        chosen.state |= State_Sunken;
        QProxyStyle::drawControl(element, &chosen, painter, widget);
        return;
    }
    if (element == CE_PushButton && option->state.testFlag(State_HasFocus)) {
        QProxyStyle::drawControl(element, option, painter, widget);
        DrawFocusInside(*painter, *this, *option, widget);
        return;
    }
    if (element == CE_ProgressBarGroove) {
        QProxyStyle::drawControl(element, option, painter, widget);
        DrawDarkOutline(*painter, *option, false);
        return;
    }
    const auto* box = element == CE_CheckBox ? qstyleoption_cast<const QStyleOptionButton*>(option) : nullptr;
    if (box != nullptr && IsRaised(widget))
        DrawRaisedCheckBox(*painter, *this, *box, *widget);
    else
        QProxyStyle::drawControl(element, option, painter, widget);
}

// The style would take clicks only where it would have drawn the box.
QRect DialogStyle::subElementRect(SubElement element, const QStyleOption* option,
                                  const QWidget* widget) const {
    if (element == SE_CheckBoxClickRect && IsRaised(widget)) return option->rect;
    return QProxyStyle::subElementRect(element, option, widget);
}

void DialogStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                const QWidget* widget) const {
    const auto frame =
        element == PE_FrameFocusRect ? WithVisibleFocus<QStyleOptionFocusRect>(option) : std::nullopt;
    const auto button =
        element == PE_PanelButtonCommand ? WithVisibleFocus<QStyleOptionButton>(option) : std::nullopt;
    if (frame) option = &*frame;
    if (button) option = &*button;
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    if (element == PE_IndicatorCheckBox || element == PE_IndicatorRadioButton || LacksEdge(element, *option))
        DrawDarkOutline(*painter, *option, element == PE_IndicatorRadioButton);
}

void DialogStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                     QPainter* painter, const QWidget* widget) const {
    const auto* box =
        control == CC_GroupBox ? qstyleoption_cast<const QStyleOptionGroupBox*>(option) : nullptr;
    if (box != nullptr) {
        DrawGroupBox(*painter, *this, *box);
        return;
    }
    const auto* tool =
        control == CC_ToolButton ? qstyleoption_cast<const QStyleOptionToolButton*>(option) : nullptr;
    if (tool != nullptr && widget != nullptr && widget->inherits("QToolBarExtension")) {
        QStyleOptionToolButton button = *tool;
        RecolourOverflowMark(button);
        QProxyStyle::drawComplexControl(control, &button, painter, widget);
        return;
    }
    const auto combo = control == CC_ComboBox ? WithVisibleFocus<QStyleOptionComboBox>(option) : std::nullopt;
    QProxyStyle::drawComplexControl(control, combo ? &*combo : option, painter, widget);
    if (combo) DrawFocusInside(*painter, *this, *combo, widget);
    // It is drawn as a button is, but not as an element of its own.
    if (control == CC_ComboBox && LacksEdge(PE_PanelButtonCommand, *option))
        DrawDarkOutline(*painter, *option, false);
}

void DialogStyle::drawItemText(QPainter* painter, const QRect& rect, int flags, const QPalette& palette,
                               bool enabled, const QString& text, QPalette::ColorRole textRole) const {
    const Qt::LayoutDirection layout = painter->layoutDirection();
    const int side =
        static_cast<int>(visualAlignment(layout, Qt::Alignment(flags & Qt::AlignHorizontal_Mask)));
    // An arrow beside the text turns with the layout.
    const bool hasArrow = text.startsWith(QLatin1String("< ")) || text.endsWith(QLatin1String(" >"));
    if (!hasArrow) painter->setLayoutDirection(text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    QProxyStyle::drawItemText(painter, rect, (flags & ~Qt::AlignHorizontal_Mask) | side, palette, enabled,
                              text, textRole);
    painter->setLayoutDirection(layout);
}

void AlignToTop(QWidget& checkBox) {
    checkBox.setProperty(kAlignedToTop, true);
}

}  // namespace permora::qt
