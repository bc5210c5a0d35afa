#include "framework/qt/static_controls.h"

#include <QAbstractButton>
#include <QHelpEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QProgressBar>
#include <QStyle>
#include <QToolTip>

#include "framework/qt/image.h"
#include "framework/qt/widget.h"
#include "framework/styles.h"

namespace permora {
namespace qt {
namespace {

int TextFlags(DWORD style) {
    int flags = Qt::AlignTop | Qt::TextExpandTabs;
    flags |= (style & SS_NOPREFIX) != 0 ? 0 : Qt::TextShowMnemonic;
    switch (style & SS_TYPEMASK) {
        case SS_CENTER:
            return flags | Qt::AlignHCenter | Qt::TextWordWrap;
        case SS_RIGHT:
            return flags | Qt::AlignRight | Qt::TextWordWrap;
        case SS_LEFTNOWORDWRAP:
            return flags | Qt::AlignLeft;
        default:
            return flags | Qt::AlignLeft | Qt::TextWordWrap;
    }
}

// Draws tabs and mnemonics by the template's style, which the toolkit's label cannot. Assistive technology
// and the keyboard use the toolkit's label. With SS_NOTIFY the mouse reaches it: it shows the tip of the
// button that it labels, and a click presses that.
class TextLabel : public QLabel {
  public:
    TextLabel(QWidget* parent, DWORD style) : QLabel(parent), flags(TextFlags(style)) {
        setTextFormat(Qt::PlainText);
    }

  protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        style()->drawItemText(&painter, rect(), flags, palette(), isEnabled(), text(), foregroundRole());
    }
    bool event(QEvent* event) override {
        if (event->type() != QEvent::ToolTip || buddy() == nullptr) return QLabel::event(event);
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), buddy()->toolTip(), this);
        return true;
    }
    void mousePressEvent(QMouseEvent* event) override { event->accept(); }
    void mouseReleaseEvent(QMouseEvent* event) override {
        auto* button = dynamic_cast<QAbstractButton*>(buddy());
        const bool isClick = event->button() == Qt::LeftButton && rect().contains(event->pos());
        if (button == nullptr || !isClick || !button->isEnabled()) return;
        button->setFocus(Qt::MouseFocusReason);
        button->click();
    }

  private:
    int flags;
};

// Draws its picture as large as fits, sharp on every display.
class PictureLabel : public QLabel {
  public:
    PictureLabel(QWidget* parent, QIcon shown) : QLabel(parent), icon(std::move(shown)) {
        setPixmap(LargestPixmap(icon));  // tells assistive technology that this is a picture
    }

  protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        if (icon.availableSizes().size() > 1) {
            icon.paint(&painter, rect());
            return;
        }
        const QPixmap picture = LargestPixmap(icon);
        QRect area(QPoint(0, 0), picture.size().scaled(size(), Qt::KeepAspectRatio));
        area.moveCenter(rect().center());
        painter.drawPixmap(area, picture);
    }

  private:
    QIcon icon;
};

// A control without input: the mouse reaches the window behind it, unless it is a text with SS_NOTIFY.
class StaticWindow final : public WidgetWindow<NativeWindow> {
  public:
    StaticWindow(CWnd& window, std::unique_ptr<QFrame> made, const ControlSpec& spec)
        : WidgetWindow(window, std::move(made)) {
        const bool takesMouse = spec.kind == ControlKind::kStaticText && (spec.style & SS_NOTIFY) != 0;
        Widget().setAttribute(Qt::WA_TransparentForMouseEvents, !takesMouse);
        SetText(spec.text);
    }
    void SetText(const std::string& text) override {
        WidgetWindow::SetText(text);
        if (auto* label = dynamic_cast<TextLabel*>(&Widget())) label->setText(ToQt(text));
    }
};

class ProgressBarWindow final : public WidgetWindow<NativeProgressBar, QProgressBar> {
  public:
    ProgressBarWindow(CWnd& window, std::unique_ptr<QProgressBar> made, const ControlSpec& spec)
        : WidgetWindow(window, std::move(made)) {
        ShowMotion(spec.style);
        Widget().setTextVisible(spec.rect.Height() >= Widget().fontMetrics().height());
    }
    std::string Text() const override { return FromQt(Widget().text()); }  // the position
    void StyleChanged(DWORD /*before*/) override { ShowMotion(style); }
    void SetPosition(int percent) override { Widget().setValue(percent); }

  private:
    void ShowMotion(DWORD styles) { Widget().setRange(0, (styles & PBS_MARQUEE) != 0 ? 0 : 100); }
};

}  // namespace

std::unique_ptr<NativeWindow> MakeStatic(CWnd& window, CWnd& parent, const ControlSpec& spec) {
    if (spec.kind == ControlKind::kProgressBar)
        return std::make_unique<ProgressBarWindow>(window, NewControl<QProgressBar>(parent, spec), spec);
    if (spec.kind == ControlKind::kStaticPicture) {
        const CIcon picture = (spec.style & SS_TYPEMASK) == SS_ICON ? CIcon::Load(spec.pictureId)
                                                                    : CIcon::FromBitmap(spec.pictureId);
        return std::make_unique<StaticWindow>(window, NewControl<PictureLabel>(parent, spec, ToQt(picture)),
                                              spec);
    }
    if (spec.kind == ControlKind::kEtchedFrame) {
        auto frame = NewControl<QFrame>(parent, spec);
        frame->setFrameStyle(static_cast<int>(QFrame::Box) | static_cast<int>(QFrame::Sunken));
        return std::make_unique<StaticWindow>(window, std::move(frame), spec);
    }
    return std::make_unique<StaticWindow>(window, NewControl<TextLabel>(parent, spec, spec.style), spec);
}

}  // namespace qt

void SetLabelTarget(CWnd& label, CWnd& target) {
    if (auto* widget = dynamic_cast<QLabel*>(qt::WidgetOf(label))) widget->setBuddy(qt::WidgetOf(target));
}

}  // namespace permora
