// WindowDriver on the Qt back end.
#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QTest>
#include <QTextEdit>
#include <QWindow>
#include <algorithm>

#include "framework/qt/widget.h"
#include "tests/support/ui_backend.h"
#include "tests/support/window_driver_qt.h"

namespace permora::test {
namespace {

using qt::FromQt;
using qt::ToQt;

const QString kControlName = QStringLiteral("control %1");
const QString kToolbarButtonName = QStringLiteral("button %1");

unsigned int ControlIdOf(const QWidget* widget) {
    for (; widget != nullptr; widget = widget->parentWidget())
        if (widget->objectName().startsWith(QLatin1String("control ")))
            return static_cast<unsigned int>(widget->objectName().section(QLatin1Char(' '), 1).toInt());
    return 0;
}

// The text of a widget as the user reads it.
QString TextOf(const QWidget& widget) {
    if (const auto* label = qobject_cast<const QLabel*>(&widget)) return label->text();
    if (const auto* edit = qobject_cast<const QLineEdit*>(&widget)) return edit->text();
    if (const auto* page = qobject_cast<const QTextEdit*>(&widget)) return page->toPlainText();
    if (const auto* combo = qobject_cast<const QComboBox*>(&widget)) return combo->currentText();
    if (const auto* box = qobject_cast<const QGroupBox*>(&widget)) return box->title();
    if (const auto* button = qobject_cast<const QAbstractButton*>(&widget))
        return button->text().replace(QLatin1Char('\n'), QLatin1Char(' '));  // the back end breaks lines
    return {};
}

// False, and a failure of the test, when a modal window keeps input from `window`.
bool TakesInput(const QWidget& window) {
    const QWidget* modal = QApplication::activeModalWidget();
    if (modal == nullptr || modal == &window || QApplication::activePopupWidget() == &window) return true;
    // What belongs to the modal window.
    if (modal->windowHandle()->isAncestorOf(window.windowHandle(), QWindow::IncludeTransients)) return true;
    ADD_FAILURE() << "\"" << FromQt(window.windowTitle()) << "\" takes no input while \""
                  << FromQt(modal->windowTitle()) << "\" is open";
    return false;
}

// Presses `key` where the keyboard is.
void PressKey(QWidget& window, QKeyCombination key) {
    if (!TakesInput(window)) return;
    QWidget* popup = QApplication::activePopupWidget();
    // After another window has closed, the keyboard comes back, as a desktop sees to.
    if (popup == nullptr) window.activateWindow();
    if (popup == nullptr && !WaitForInput(qt::HandleOf(window))) return;
    QWidget* target = popup != nullptr ? popup : &window;
    if (target->focusWidget() != nullptr) target = target->focusWidget();
    QTest::keyClick(target, key.key(), key.keyboardModifiers());
    QCoreApplication::processEvents();
}

void TypeText(QWidget& widget, const std::string& text) {
    for (const char32_t letter : ToQt(text).toUcs4())
        if (letter < 0x80)
            QTest::keyClick(&widget, static_cast<char>(letter));
        else
            QTest::sendKeyEvent(QTest::Click, &widget, Qt::Key_unknown, QString::fromUcs4(&letter, 1), {});
}

}  // namespace

QWidget* Live(HWND window) {
    QWidget* widget = qt::LiveWidget(window);
    if (widget == nullptr || !widget->isVisible()) {
        ADD_FAILURE() << "the window is not open";
        return nullptr;
    }
    return widget;
}

QWidget* FindControl(const QWidget& window, unsigned int id) {
    QList<QWidget*> all = window.findChildren<QWidget*>(kControlName.arg(static_cast<int>(id)));
    all += window.findChildren<QWidget*>(kToolbarButtonName.arg(static_cast<int>(id)));
    const auto visible = std::ranges::find_if(all, [](const QWidget* each) { return each->isVisible(); });
    if (visible != all.end()) return *visible;
    return all.empty() ? nullptr : all.front();
}

void ClickWidget(QWidget& target, const QPoint& point, Qt::MouseButton button,
                 Qt::KeyboardModifiers modifiers, Clicks clicks) {
    QWidget& window = *target.window();
    if (!TakesInput(window)) return;
    const QPoint place = target.mapTo(&window, point);
    const QWidget* hit = window.childAt(place);
    if (hit != &target && &target != &window && (hit == nullptr || !target.isAncestorOf(hit))) {
        ADD_FAILURE() << "the mouse does not reach control " << ControlIdOf(&target) << " at " << place.x()
                      << "," << place.y() << ", but "
                      << (hit != nullptr ? hit->metaObject()->className() : "nothing");
        return;
    }
    QWindow* native = window.windowHandle();
    if (clicks == Clicks::kOne)
        QTest::mouseClick(native, button, modifiers, place);
    else
        QTest::mouseDClick(native, button, modifiers, place);
    QCoreApplication::processEvents();
}

// ---- The window ----

bool WindowDriver::IsOpen() const {
    return test::IsOpen(window);
}

std::string WindowDriver::Title() const {
    const QWidget* widget = Live(window);
    return widget != nullptr
               ? FromQt(widget->windowTitle().replace(QLatin1String("[*][*]"), QLatin1String("[*]")))
               : std::string();
}

std::string WindowDriver::Describe() const {
    const QWidget* widget = qt::LiveWidget(window);
    if (widget == nullptr) return "(gone)";
    std::string all = "\"" + FromQt(widget->windowTitle()) + "\":";
    for (const QWidget* child : widget->findChildren<QWidget*>()) {
        const QString text = TextOf(*child);
        if (child->isVisibleTo(widget) && !text.isEmpty()) all += " [" + FromQt(text) + "]";
    }
    return all;
}

void WindowDriver::ClickAt(Point client) {
    if (QWidget* widget = Live(window)) ClickWidget(*widget, {client.x, client.y});
}

void WindowDriver::ClickCloseBox() {
    QWidget* widget = Live(window);
    if (widget == nullptr || !TakesInput(*widget)) return;
    EXPECT_TRUE(widget->windowFlags().testFlag(Qt::WindowCloseButtonHint)) << "the window has no close box";
    widget->close();
}

bool WindowDriver::WaitUntil(const std::function<bool()>& condition) const {
    const bool holds = ServeEventsUntil(condition);
    EXPECT_TRUE(holds) << "waited in vain in " << Describe();
    return holds;
}

// ---- Keyboard ----

void WindowDriver::Press(const std::string& key) {
    QWidget* widget = Live(window);
    const QKeySequence keys = QKeySequence::fromString(ToQt(key), QKeySequence::PortableText);
    ASSERT_TRUE(keys.count() == 1 && keys[0].key() != Qt::Key_unknown) << "no such key: " << key;
    if (widget == nullptr) return;
    PressKey(*widget, keys[0]);
    // A button that is pressed by its mnemonic stays down for a moment.
    const auto allAreUp = [this] {
        const QWidget* shown = qt::LiveWidget(window);
        return shown == nullptr || std::ranges::none_of(shown->findChildren<QAbstractButton*>(),
                                                        [](auto* button) { return button->isDown(); });
    };
    EXPECT_TRUE(ServeEventsUntil(allAreUp)) << "a button stays down";
}

unsigned int WindowDriver::FocusedControl() const {
    const QWidget* widget = Live(window);
    return widget != nullptr ? ControlIdOf(widget->focusWidget()) : 0;
}

bool WindowDriver::HasFocus(unsigned int id) const {
    const auto* control = Control(window, id);
    return control != nullptr && control->hasFocus();
}

unsigned int WindowDriver::DefaultButton() const {
    unsigned int found = 0;
    const QWidget* widget = Live(window);
    if (widget == nullptr) return found;
    for (const QPushButton* button : widget->findChildren<QPushButton*>()) {
        if (!button->isDefault() || !button->isVisible() || !button->isEnabled()) continue;
        EXPECT_EQ(found, 0U) << "two default buttons: " << ControlIdOf(button);
        found = ControlIdOf(button);
    }
    return found;
}

bool WindowDriver::ShowsFocus(unsigned int id) const {
    auto* control = Control(window, id);
    if (control == nullptr) return false;
    EXPECT_EQ(FocusedControl(), id);
    QWidget& focused = *control->window()->focusWidget();
    const QImage with = control->grab().toImage();
    focused.clearFocus();
    const QImage without = control->grab().toImage();
    focused.setFocus(Qt::OtherFocusReason);
    return with != without;
}

std::vector<unsigned int> WindowDriver::TabThrough() {
    std::vector<unsigned int> order;
    for (unsigned int id = FocusedControl(); std::ranges::find(order, id) == order.end();
         id = FocusedControl()) {
        order.push_back(id);
        Press("Tab");
    }
    return order;
}

// ---- All controls ----

bool WindowDriver::Has(unsigned int id) const {
    const QWidget* widget = Live(window);
    return widget != nullptr && FindControl(*widget, id) != nullptr;
}

std::string WindowDriver::Text(unsigned int id) const {
    const auto* control = Control(window, id);
    return control != nullptr ? FromQt(TextOf(*control)) : std::string();
}

bool WindowDriver::IsEnabled(unsigned int id) const {
    const auto* control = Control(window, id);
    return control != nullptr && control->isEnabled();
}

bool WindowDriver::IsVisible(unsigned int id) const {
    const auto* control = Control(window, id);
    return control != nullptr && control->isVisible();
}

void WindowDriver::Click(unsigned int id) {
    auto* control = Control(window, id);
    if (control == nullptr) return;
    if (!control->isVisible() || !control->isEnabled()) {
        ADD_FAILURE() << "control " << id << " cannot be clicked: it is "
                      << (control->isVisible() ? "disabled" : "hidden");
        return;
    }
    // A box or radio button may be wider than its text, and answers only on mark and text.
    constexpr int kOnTheMark = 8;
    QPoint point = control->visibleRegion().boundingRect().center();
    if (const auto* button = qobject_cast<const QAbstractButton*>(control);
        button != nullptr && button->isCheckable())
        point.setX(std::min(point.x(), kOnTheMark));
    ClickWidget(*control, point);
}

// ---- Boxes, edit fields, combo boxes ----

bool WindowDriver::IsChecked(unsigned int id) const {
    const auto* button = Control<QAbstractButton>(window, id);
    return button != nullptr && button->isChecked();
}

void WindowDriver::Type(unsigned int id, const std::string& text) {
    auto* edit = Control<QLineEdit>(window, id);
    if (edit == nullptr) return;
    Click(id);
    Press("End");
    TypeText(*edit, text);
}

void WindowDriver::SetText(unsigned int id, const std::string& text) {
    auto* edit = Control<QLineEdit>(window, id);
    if (edit == nullptr) return;
    Click(id);
    Press("Ctrl+A");
    Press("Del");
    TypeText(*edit, text);
}

std::vector<std::string> WindowDriver::ComboItems(unsigned int id) const {
    std::vector<std::string> items;
    const auto* combo = Control<QComboBox>(window, id);
    for (int i = 0; combo != nullptr && i < combo->count(); ++i)
        items.push_back(FromQt(combo->itemText(i)));
    return items;
}

void WindowDriver::SelectItem(unsigned int id, const std::string& text) {
    auto* combo = Control<QComboBox>(window, id);
    if (combo == nullptr) return;
    const int index = combo->findText(ToQt(text));
    if (index < 0 || !combo->isEnabled()) {
        ADD_FAILURE() << "item cannot be chosen: " << text;
        return;
    }
    combo->setFocus(Qt::MouseFocusReason);
    Press("Alt+Down");
    QAbstractItemView& items = *combo->view();
    ASSERT_TRUE(ServeEventsUntil([&] { return items.window()->windowHandle()->isExposed(); }));
    const QModelIndex item = combo->model()->index(index, combo->modelColumn(), combo->rootModelIndex());
    items.scrollTo(item);
    QTest::mouseClick(items.viewport(), Qt::LeftButton, Qt::NoModifier, items.visualRect(item).center());
}

}  // namespace permora::test
