// The icons of message boxes, for desktops without icons of their own.
#pragma once

#include <QIcon>
#include <QStyle>

namespace permora::qt {

// Empty for other icons than those of message boxes.
QIcon MessageIcon(QStyle::StandardPixmap kind);

}  // namespace permora::qt
