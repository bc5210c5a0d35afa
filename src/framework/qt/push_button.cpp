#include "framework/qt/push_button.h"

#include <QKeyEvent>

namespace permora::qt {

void PushButton::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QPushButton::keyPressEvent(event);
}

void ShowDefaultButton(const QWidget& window) {
    const auto* focused = dynamic_cast<const PushButton*>(window.focusWidget());
    for (QPushButton* each : window.findChildren<QPushButton*>()) {
        const auto* button = dynamic_cast<const PushButton*>(each);
        if (button != nullptr)
            each->setDefault(focused != nullptr ? button == focused : button->isTemplatesDefault);
    }
}

}  // namespace permora::qt
