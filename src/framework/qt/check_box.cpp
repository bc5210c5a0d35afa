#include "framework/qt/check_box.h"

#include <QKeyEvent>

namespace permora::qt {

void CheckBox::keyPressEvent(QKeyEvent* event) {
    if (!text().isEmpty()) {
        QCheckBox::keyPressEvent(event);
        return;
    }
    switch (event->key()) {
        case Qt::Key_Up:
            return Go(0, -1);
        case Qt::Key_Down:
            return Go(0, 1);
        case Qt::Key_Left:
            return Go(-1, 0);
        case Qt::Key_Right:
            return Go(1, 0);
        default:
            QCheckBox::keyPressEvent(event);
    }
}

// To the nearest box in this direction that takes input. Exactly one of the two is not 0.
void CheckBox::Go(int right, int down) {
    CheckBox* nearest = nullptr;
    int least = 0;
    for (QObject* child : parentWidget()->children()) {
        auto* other = dynamic_cast<CheckBox*>(child);
        if (other == nullptr || !other->text().isEmpty() || !other->isEnabled() || !other->isVisible())
            continue;
        const QPoint way = other->pos() - pos();
        const int along = way.x() * right + way.y() * down;
        const int aside = way.x() * down + way.y() * right;
        if (along <= 0 || aside != 0 || (nearest != nullptr && along >= least)) continue;
        nearest = other;
        least = along;
    }
    if (nearest != nullptr) nearest->setFocus(Qt::TabFocusReason);
}

}  // namespace permora::qt
