#include <QButtonGroup>
#include <QComboBox>
#include <QGroupBox>
#include <QKeyEvent>
#include <QPainter>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QStyleOptionFocusRect>

#include "framework/qt/check_box.h"
#include "framework/qt/dialog_style.h"
#include "framework/qt/image.h"
#include "framework/qt/line_edit.h"
#include "framework/qt/list_widget.h"
#include "framework/qt/page_view.h"
#include "framework/qt/push_button.h"
#include "framework/qt/static_controls.h"
#include "framework/qt/tabs.h"
#include "framework/qt/tree_widget.h"
#include "framework/qt/widget.h"
#include "framework/styles.h"

namespace permora {
namespace {

using qt::FromQt;
using qt::LineEdit;
using qt::NewControl;
using qt::PushButton;
using qt::ToQt;
using qt::WidgetWindow;

// A push button that shows pictures, which are turned with the layout as everything drawn in a window is. It
// keeps the push button's role for assistive technology.
class PictureButton : public PushButton {
  public:
    using PushButton::PushButton;
    QPixmap normal;
    QPixmap pressed;
    QPixmap focused;
    QPixmap disabled;

    QSize sizeHint() const override { return normal.size(); }

  protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.save();
        if (isRightToLeft()) {
            painter.translate(width(), 0);
            painter.scale(-1, 1);
        }
        painter.drawPixmap(rect(), Picture());
        painter.restore();
        if (hasFocus()) {  // also with a picture for that, which may be the normal one
            QStyleOptionFocusRect option;
            option.initFrom(this);
            style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
        }
    }

  private:
    const QPixmap& Picture() const {
        if (!isEnabled() && !disabled.isNull()) return disabled;
        if (isDown() && !pressed.isNull()) return pressed;
        if (hasFocus() && !focused.isNull()) return focused;
        return normal;
    }
};

// The arrow keys move through a group in the template's order; the toolkit's order would be by position.
class RadioButton : public QRadioButton {
  public:
    using QRadioButton::QRadioButton;

  protected:
    void keyPressEvent(QKeyEvent* event) override {
        switch (event->key()) {
            case Qt::Key_Up:
            case Qt::Key_Left:
                Go(-1);
                return;
            case Qt::Key_Down:
            case Qt::Key_Right:
                Go(1);
                return;
            default:
                QRadioButton::keyPressEvent(event);
        }
    }

  private:
    void Go(qsizetype direction) {
        if (group() == nullptr) return;
        const QList<QAbstractButton*> buttons = group()->buttons();
        const qsizetype count = buttons.size();
        for (qsizetype i = buttons.indexOf(this) + direction, tried = 1; tried < count;
             i += direction, ++tried) {
            QAbstractButton* button = buttons[(i + count) % count];
            if (!button->isEnabled() || !button->isVisible()) continue;
            button->setFocus(Qt::TabFocusReason);
            button->click();
            return;
        }
    }
};

// The toolkit's boxes and buttons do not wrap their texts, so line breaks are inserted for the width.
QString WrapText(const QString& text, const QFontMetrics& metrics, int width) {
    QString wrapped;
    QString line;
    for (const QString& word : text.split(QLatin1Char(' '))) {
        const QString longer = line.isEmpty() ? word : line + QLatin1Char(' ') + word;
        if (!line.isEmpty() && metrics.horizontalAdvance(longer) > width) {
            wrapped += line + QLatin1Char('\n');
            line = word;
        } else {
            line = longer;
        }
    }
    return wrapped + line;
}

// The keyboard enters a group of radio buttons at the checked one.
void MakeTabStop(const QButtonGroup& group, const QAbstractButton& checked) {
    for (QAbstractButton* each : group.buttons())
        each->setFocusPolicy(each == &checked ? Qt::StrongFocus : Qt::ClickFocus);
}

class ButtonWindow final : public WidgetWindow<NativeButton, QAbstractButton> {
  public:
    ButtonWindow(CWnd& window, std::unique_ptr<QAbstractButton> made, const ControlSpec& spec)
        : WidgetWindow(window, std::move(made)), wraps((spec.style & BS_MULTILINE) != 0) {
        QObject::connect(&Widget(), &QAbstractButton::clicked, &Widget(),
                         [this] { ReportNotification(Notify::kClicked); });
        // Radio buttons have the tab stop of their group, see GroupRadioButtons.
        if (spec.kind != ControlKind::kRadioButton) qt::ApplyTabStop(Widget(), spec.style);
        if (wraps) qt::AlignToTop(Widget());
        SetText(spec.text);
        ShowDefault(spec.style);
    }

    void SetText(const std::string& text) override {
        WidgetWindow::SetText(text);
        Widget().setText(wraps ? WrapText(ToQt(text), Widget().fontMetrics(), TextWidth()) : ToQt(text));
        if (wraps) Widget().setAccessibleName(ToQt(text));
    }
    void Move(const Rect& rect) override {
        WidgetWindow::Move(rect);
        if (wraps) SetText(Text());
    }

    CheckState Check() const override {
        return Widget().isChecked() ? CheckState::kChecked : CheckState::kClear;
    }
    void SetCheck(CheckState state) override {
        // A group keeps one of its buttons checked; the program may clear it nevertheless.
        QButtonGroup* group = Widget().group();
        if (group != nullptr) group->setExclusive(false);
        Widget().setChecked(state == CheckState::kChecked);
        if (group != nullptr) group->setExclusive(true);
        if (group != nullptr && state == CheckState::kChecked) MakeTabStop(*group, Widget());
    }
    void Click() override { Widget().click(); }
    void StyleChanged(DWORD /*before*/) override { ShowDefault(style); }
    void SetPictures(const CIcon& normal, const CIcon& pressed, const CIcon& focused,
                     const CIcon& disabled) override {
        auto* picture = dynamic_cast<PictureButton*>(&Widget());
        if (picture == nullptr) return;
        picture->normal = qt::LargestPixmap(ToQt(normal));
        picture->pressed = qt::LargestPixmap(ToQt(pressed));
        picture->focused = qt::LargestPixmap(ToQt(focused));
        picture->disabled = qt::LargestPixmap(ToQt(disabled));
        picture->update();
    }

  private:
    void ShowDefault(DWORD newStyle) {
        auto* push = dynamic_cast<PushButton*>(&Widget());
        if (push == nullptr) return;
        push->isTemplatesDefault = (newStyle & BS_TYPEMASK) == BS_DEFPUSHBUTTON;
        qt::ShowDefaultButton(*push->window());
    }
    int TextWidth() const {
        const QStyle& look = *Widget().style();
        return Widget().width() - look.pixelMetric(QStyle::PM_IndicatorWidth, nullptr, &Widget()) -
               look.pixelMetric(QStyle::PM_CheckBoxLabelSpacing, nullptr, &Widget());
    }

    bool wraps;
};

class GroupBoxWindow final : public WidgetWindow<NativeWindow, QGroupBox> {
  public:
    GroupBoxWindow(CWnd& window, std::unique_ptr<QGroupBox> made, const ControlSpec& spec)
        : WidgetWindow(window, std::move(made)) {
        Widget().setAttribute(Qt::WA_TransparentForMouseEvents);
        SetText(spec.text);
    }
    void SetText(const std::string& text) override {
        WidgetWindow::SetText(text);
        Widget().setTitle(ToQt(text));
    }
};

class EditWindow final : public WidgetWindow<NativeEdit, QLineEdit> {
  public:
    EditWindow(CWnd& window, std::unique_ptr<QLineEdit> made, const ControlSpec& spec)
        : WidgetWindow(window, std::move(made)) {
        qt::ApplyTabStop(Widget(), spec.style);
        Widget().setReadOnly((spec.style & ES_READONLY) != 0);
        if ((spec.style & WS_BORDER) == 0) LookLikeText();
        SetText(spec.text);
        QObject::connect(&Widget(), &QLineEdit::textChanged, &Widget(),
                         [this] { ReportNotification(Notify::kTextChanged); });
    }
    void SetText(const std::string& text) override {
        Widget().setText(ToQt(text));
        Widget().setCursorPosition(0);  // the beginning of a long text is what one reads first
    }
    std::string Text() const override { return FromQt(Widget().text()); }
    void StyleChanged(DWORD /*before*/) override { Widget().setReadOnly((style & ES_READONLY) != 0); }
    void SelectAll() override { Widget().selectAll(); }
    void SelectStart(const std::string& start) override {
        Widget().setSelection(0, static_cast<int>(ToQt(start).size()));
    }

  private:
    // Without a border a field is a text that can be selected.
    void LookLikeText() {
        Widget().setFrame(false);
        if (Widget().isRightToLeft()) Widget().setAlignment(Qt::AlignRight | Qt::AlignAbsolute);
        QPalette colours;
        colours.setBrush(QPalette::Base, Qt::transparent);
        Widget().setPalette(colours);
    }
};

class ComboBoxWindow final : public WidgetWindow<NativeComboBox, QComboBox> {
  public:
    ComboBoxWindow(CWnd& window, std::unique_ptr<QComboBox> made, const ControlSpec& spec)
        : WidgetWindow(window, std::move(made)) {
        qt::ApplyTabStop(Widget(), spec.style);
        QObject::connect(&Widget(), &QComboBox::currentIndexChanged, &Widget(),
                         [this] { ReportNotification(Notify::kSelectionChanged); });
    }
    void SetText(const std::string& text) override { Select(Widget().findText(ToQt(text))); }
    std::string Text() const override { return FromQt(Widget().currentText()); }
    int AddString(const std::string& text) override {
        const QSignalBlocker noNotification(Widget());
        Widget().addItem(ToQt(text));
        // The toolkit selects the first item by itself.
        if (Widget().count() == 1) Widget().setCurrentIndex(-1);
        return Widget().count() - 1;
    }
    int Count() const override { return Widget().count(); }
    int Selection() const override { return Widget().currentIndex(); }
    void Select(int index) override {
        const QSignalBlocker noNotification(Widget());
        Widget().setCurrentIndex(index);
        Widget().update();
    }
};

// A control of the class `Window` with a widget of the class `Own`.
template <class Window, class Own>
std::unique_ptr<NativeWindow> Make(CWnd& window, CWnd& parent, const ControlSpec& spec) {
    return std::make_unique<Window>(window, NewControl<Own>(parent, spec), spec);
}

}  // namespace

std::unique_ptr<NativeWindow> MakeNativeControl(CWnd& window, CWnd& parent, const ControlSpec& spec) {
    switch (spec.kind) {
        case ControlKind::kPushButton:
            return Make<ButtonWindow, PushButton>(window, parent, spec);
        case ControlKind::kCheckBox:
            return Make<ButtonWindow, qt::CheckBox>(window, parent, spec);
        case ControlKind::kRadioButton:
            return Make<ButtonWindow, RadioButton>(window, parent, spec);
        case ControlKind::kGroupBox:
            return Make<GroupBoxWindow, QGroupBox>(window, parent, spec);
        case ControlKind::kBitmapButton:
            return Make<ButtonWindow, PictureButton>(window, parent, spec);
        case ControlKind::kEdit:
            return Make<EditWindow, LineEdit>(window, parent, spec);
        case ControlKind::kComboBox:
            return Make<ComboBoxWindow, QComboBox>(window, parent, spec);
        case ControlKind::kStaticText:
        case ControlKind::kStaticPicture:
        case ControlKind::kEtchedFrame:
        case ControlKind::kProgressBar:
            return qt::MakeStatic(window, parent, spec);
        case ControlKind::kListView:
            return qt::MakeListView(dynamic_cast<CListCtrl&>(window), parent, spec);
        case ControlKind::kPageView:
            return qt::MakePageView(dynamic_cast<CPageView&>(window), parent, spec);
        case ControlKind::kTreeView:
            return qt::MakeTreeView(dynamic_cast<CTreeCtrl&>(window), parent, spec);
        case ControlKind::kTabs:
            return qt::MakeTabs(window, parent, spec);
    }
    return nullptr;
}

void GroupRadioButtons(std::span<CWnd* const> buttons) {
    auto* group = new QButtonGroup(qt::WidgetOf(*buttons.front()->GetParent()));
    for (CWnd* button : buttons)
        group->addButton(static_cast<QAbstractButton*>(qt::WidgetOf(*button)));
}

}  // namespace permora
