#include "framework/qt/message_box.h"

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <array>

#include "framework/native.h"
#include "framework/qt/widget.h"

namespace permora::qt {
namespace {

// The bits of a box's type.
constexpr UINT kButtonsMask = 0x0F;
constexpr UINT kIconMask = 0xF0;

struct ButtonId {
    QMessageBox::StandardButton button;
    int id;
};
constexpr std::array<ButtonId, 4> kButtonIds{{{QMessageBox::Ok, IDOK},
                                              {QMessageBox::Cancel, IDCANCEL},
                                              {QMessageBox::Yes, IDYES},
                                              {QMessageBox::No, IDNO}}};

struct ButtonSet {
    QMessageBox::StandardButtons buttons;
    // Enter or Escape on an unread box must change nothing.
    QMessageBox::StandardButton safest;
};

ButtonSet ButtonsOf(UINT type) {
    switch (type & kButtonsMask) {
        case MB_YESNOCANCEL:
            return {QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, QMessageBox::Cancel};
        case MB_YESNO:
            return {QMessageBox::Yes | QMessageBox::No, QMessageBox::No};
        default:
            return {QMessageBox::Ok, QMessageBox::Ok};
    }
}

QMessageBox::Icon IconOf(UINT type) {
    switch (type & kIconMask) {
        case MB_ICONERROR:
            return QMessageBox::Critical;
        case MB_ICONQUESTION:
            return QMessageBox::Question;
        case MB_ICONWARNING:
            return QMessageBox::Warning;
        case MB_ICONINFORMATION:
            return QMessageBox::Information;
        default:
            return QMessageBox::NoIcon;
    }
}

QString NameOf(QMessageBox::Icon icon) {
    switch (icon) {
        case QMessageBox::Critical:
            return QStringLiteral("Error");
        case QMessageBox::Question:
            return QStringLiteral("Question");
        case QMessageBox::Warning:
            return QStringLiteral("Warning");
        default:
            return QStringLiteral("Information");
    }
}

int Show(HWND owner, const char* text, const char* caption, UINT type) {
    QWidget* widget = LiveWidget(owner);
    const ButtonSet set = ButtonsOf(type);
    QMessageBox box(widget != nullptr ? widget->window() : nullptr);
    box.setTextFormat(Qt::PlainText);  // names of files must not be taken for markup
    box.setText(ToQt(text));
    box.setWindowTitle(ToQt(caption));
    box.setIcon(IconOf(type));
    // The toolkit's label of the icon, which assistive technology meets without a name.
    if (auto* icon = box.findChild<QLabel*>(QStringLiteral("qt_msgboxex_icon_label")))
        icon->setAccessibleName(NameOf(box.icon()));
    box.setStandardButtons(set.buttons);
    box.setDefaultButton(set.safest);
    box.setEscapeButton(set.safest);
    box.setWindowModality(Qt::ApplicationModal);
    // A busy window (DoLongWork) has set the waiting cursor.
    const bool isBusy = QApplication::overrideCursor() != nullptr;
    if (isBusy) QApplication::setOverrideCursor(Qt::ArrowCursor);
    const int chosen = box.exec();
    if (isBusy) QApplication::restoreOverrideCursor();
    for (const ButtonId& each : kButtonIds)
        if (each.button == chosen) return each.id;
    return 0;
}

}  // namespace

int WindowPresenter::Present(HWND owner, const char* text, const char* caption, UINT type) {
    int chosen = 0;
    CallOnUiThread([&] { chosen = Show(owner, text, caption, type); });
    return chosen;
}

}  // namespace permora::qt
