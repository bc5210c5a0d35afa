#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QKeyEvent>
#include <QPainter>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QStyleOptionFocusRect>

#include "framework/list_native.h"
#include "framework/qt/dialog_style.h"
#include "framework/qt/image.h"
#include "framework/qt/line_edit.h"
#include "framework/qt/push_button.h"
#include "framework/qt/static_controls.h"
#include "framework/qt/tabs.h"
#include "framework/qt/widget.h"
#include "framework/styles.h"

namespace permora {
namespace {

using qt::FromQt;
using qt::LineEdit;
using qt::PushButton;
using qt::ToQt;
using qt::WidgetWindow;

// A push button that shows pictures. It keeps the push button's role for assistive technology.
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
        painter.drawPixmap(rect(), Picture());
        if (hasFocus() && focused.isNull()) {
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

// The arrow keys go through a group in the template's order; the toolkit would go by where the buttons stand.
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

// The toolkit's boxes and buttons do not wrap their texts: breaks are put in where the width asks for them.
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

// The keyboard enters a group of radio buttons at the one that is checked.
void MakeTabStop(const QButtonGroup& group, const QAbstractButton& checked) {
    for (QAbstractButton* each : group.buttons())
        each->setFocusPolicy(each == &checked ? Qt::StrongFocus : Qt::ClickFocus);
}

class ButtonWindow final : public WidgetWindow<NativeButton> {
  public:
    ButtonWindow(CWnd& window, std::unique_ptr<QAbstractButton> made, const ControlSpec& spec)
        : WidgetWindow(window, std::move(made)), wraps((spec.style & BS_MULTILINE) != 0) {
        QObject::connect(&Button(), &QAbstractButton::clicked, &Button(),
                         [this] { ReportNotification(Notify::kClicked); });
        if (wraps) qt::AlignToTop(Button());
        SetText(spec.text);
        ShowDefault(spec.style);
    }

    void SetText(const std::string& newText) override {
        text = newText;
        Button().setText(wraps ? WrapText(ToQt(text), Button().fontMetrics(), TextWidth()) : ToQt(text));
        if (wraps) Button().setAccessibleName(ToQt(text));
    }
    std::string Text() const override { return text; }
    void Move(const Rect& rect) override {
        WidgetWindow::Move(rect);
        if (wraps) SetText(text);
    }

    CheckState Check() const override {
        return Button().isChecked() ? CheckState::kChecked : CheckState::kClear;
    }
    void SetCheck(CheckState state) override {
        // A group keeps one of its buttons checked; the program may clear it nevertheless.
        QButtonGroup* group = Button().group();
        if (group != nullptr) group->setExclusive(false);
        Button().setChecked(state == CheckState::kChecked);
        if (group != nullptr) group->setExclusive(true);
        if (group != nullptr && state == CheckState::kChecked) MakeTabStop(*group, Button());
    }
    void Click() override { Button().click(); }
    void StyleChanged(DWORD /*before*/) override { ShowDefault(style); }
    void SetPictures(const CIcon& normal, const CIcon& pressed, const CIcon& focused,
                     const CIcon& disabled) override {
        auto* picture = dynamic_cast<PictureButton*>(&Button());
        if (picture == nullptr) return;
        picture->normal = qt::LargestPixmap(ToQt(normal));
        picture->pressed = qt::LargestPixmap(ToQt(pressed));
        picture->focused = qt::LargestPixmap(ToQt(focused));
        picture->disabled = qt::LargestPixmap(ToQt(disabled));
        picture->update();
    }

  private:
    QAbstractButton& Button() const { return static_cast<QAbstractButton&>(Widget()); }
    void ShowDefault(DWORD newStyle) {
        auto* push = dynamic_cast<PushButton*>(&Button());
        if (push == nullptr) return;
        push->isTemplatesDefault = (newStyle & BS_TYPEMASK) == BS_DEFPUSHBUTTON;
        qt::ShowDefaultButton(*push->window());
    }
    int TextWidth() const {
        const QStyle& look = *Button().style();
        return Button().width() - look.pixelMetric(QStyle::PM_IndicatorWidth, nullptr, &Button()) -
               look.pixelMetric(QStyle::PM_CheckBoxLabelSpacing, nullptr, &Button());
    }

    std::string text;
    bool wraps;
};

class GroupBoxWindow final : public WidgetWindow<NativeWindow> {
  public:
    GroupBoxWindow(CWnd& window, std::unique_ptr<QGroupBox> made) : WidgetWindow(window, std::move(made)) {
        Widget().setAttribute(Qt::WA_TransparentForMouseEvents);
    }
    void SetText(const std::string& text) override { Box().setTitle(ToQt(text)); }
    std::string Text() const override { return FromQt(Box().title()); }

  private:
    QGroupBox& Box() const { return static_cast<QGroupBox&>(Widget()); }
};

class EditWindow final : public WidgetWindow<NativeEdit> {
  public:
    EditWindow(CWnd& window, std::unique_ptr<QLineEdit> made, const ControlSpec& spec)
        : WidgetWindow(window, std::move(made)) {
        Edit().setReadOnly((spec.style & ES_READONLY) != 0);
        if ((spec.style & WS_BORDER) == 0) LookLikeText();
        SetText(spec.text);
        QObject::connect(&Edit(), &QLineEdit::textChanged, &Edit(),
                         [this] { ReportNotification(Notify::kTextChanged); });
    }
    void SetText(const std::string& text) override {
        Edit().setText(ToQt(text));
        Edit().setCursorPosition(0);  // the beginning of a long text is what one reads first
    }
    std::string Text() const override { return FromQt(Edit().text()); }
    void StyleChanged(DWORD /*before*/) override { Edit().setReadOnly((style & ES_READONLY) != 0); }
    void SelectAll() override { Edit().selectAll(); }

  private:
    // Without a border a field is a text that can be selected.
    void LookLikeText() {
        Edit().setFrame(false);
        QPalette colours;
        colours.setBrush(QPalette::Base, Qt::transparent);
        Edit().setPalette(colours);
    }
    QLineEdit& Edit() const { return static_cast<QLineEdit&>(Widget()); }
};

class ComboBoxWindow final : public WidgetWindow<NativeComboBox> {
  public:
    ComboBoxWindow(CWnd& window, std::unique_ptr<QComboBox> made) : WidgetWindow(window, std::move(made)) {
        QObject::connect(&Combo(), &QComboBox::currentIndexChanged, &Combo(),
                         [this] { ReportNotification(Notify::kSelectionChanged); });
    }
    void SetText(const std::string& text) override { Select(Combo().findText(ToQt(text))); }
    std::string Text() const override { return FromQt(Combo().currentText()); }
    int AddString(const std::string& text) override {
        const QSignalBlocker noNotification(Combo());
        Combo().addItem(ToQt(text));
        // The toolkit selects the first item by itself.
        if (Combo().count() == 1) Combo().setCurrentIndex(-1);
        return Combo().count() - 1;
    }
    int Count() const override { return Combo().count(); }
    int Selection() const override { return Combo().currentIndex(); }
    void Select(int index) override {
        const QSignalBlocker noNotification(Combo());
        Combo().setCurrentIndex(index);
        Combo().update();
    }

  private:
    QComboBox& Combo() const { return static_cast<QComboBox&>(Widget()); }
};

// Makes a widget of a control's size, hidden until the shared half shows it.
template <class Kind>
std::unique_ptr<Kind> NewWidget(CWnd& parent, const ControlSpec& spec) {
    auto widget = std::make_unique<Kind>(qt::WidgetOf(parent));
    widget->setVisible(false);
    widget->setGeometry(ToQt(spec.rect));
    qt::SetIdentity(*widget, "control", spec.id);
    return widget;
}

template <class Kind>
std::unique_ptr<NativeWindow> MakeButton(CWnd& window, CWnd& parent, const ControlSpec& spec) {
    auto button = NewWidget<Kind>(parent, spec);
    qt::ApplyTabStop(*button, spec.style);
    return std::make_unique<ButtonWindow>(window, std::move(button), spec);
}

// The template's groups decide which buttons exclude each other, see GroupRadioButtons. They have no tab stop
// of their own.
std::unique_ptr<NativeWindow> MakeRadioButton(CWnd& window, CWnd& parent, const ControlSpec& spec) {
    return std::make_unique<ButtonWindow>(window, NewWidget<RadioButton>(parent, spec), spec);
}

std::unique_ptr<NativeWindow> MakeGroupBox(CWnd& window, CWnd& parent, const ControlSpec& spec) {
    auto box = std::make_unique<GroupBoxWindow>(window, NewWidget<QGroupBox>(parent, spec));
    box->SetText(spec.text);
    return box;
}

std::unique_ptr<NativeWindow> MakeEdit(CWnd& window, CWnd& parent, const ControlSpec& spec) {
    auto edit = NewWidget<LineEdit>(parent, spec);
    qt::ApplyTabStop(*edit, spec.style);
    return std::make_unique<EditWindow>(window, std::move(edit), spec);
}

std::unique_ptr<NativeWindow> MakeComboBox(CWnd& window, CWnd& parent, const ControlSpec& spec) {
    auto combo = NewWidget<QComboBox>(parent, spec);
    qt::ApplyTabStop(*combo, spec.style);
    return std::make_unique<ComboBoxWindow>(window, std::move(combo));
}

}  // namespace

std::unique_ptr<NativeWindow> MakeNativeControl(CWnd& window, CWnd& parent, const ControlSpec& spec) {
    switch (spec.kind) {
        case ControlKind::kPushButton:
            return MakeButton<PushButton>(window, parent, spec);
        case ControlKind::kCheckBox:
            return MakeButton<QCheckBox>(window, parent, spec);
        case ControlKind::kRadioButton:
            return MakeRadioButton(window, parent, spec);
        case ControlKind::kGroupBox:
            return MakeGroupBox(window, parent, spec);
        case ControlKind::kBitmapButton:
            return MakeButton<PictureButton>(window, parent, spec);
        case ControlKind::kEdit:
            return MakeEdit(window, parent, spec);
        case ControlKind::kComboBox:
            return MakeComboBox(window, parent, spec);
        case ControlKind::kStaticText:
        case ControlKind::kStaticPicture:
        case ControlKind::kEtchedFrame:
        case ControlKind::kProgressBar:
            return qt::MakeStatic(window, parent, spec);
        case ControlKind::kListView:
            return MakeNativeListView(window, parent, spec);
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
