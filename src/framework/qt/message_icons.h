// The icons of message boxes, for desktops without icons of their own.
#pragma once

#include <QIcon>
#include <QStyle>

namespace permora::qt {

// Empty for what is not the icon of a message box.
QIcon MessageIcon(QStyle::StandardPixmap kind);

}  // namespace permora::qt
