#include "framework/keyboard.h"

#include <QGuiApplication>

namespace permora {

bool IsControlKeyDown() {
    return QGuiApplication::keyboardModifiers().testFlag(Qt::ControlModifier);
}

}  // namespace permora
