// The program's state of the desktop's clipboard.
#pragma once

#include <QMimeData>
#include <QPointer>
#include <QStringList>
#include <memory>

#include "framework/qt/selection_request.h"

namespace permora::qt {

struct ClipboardState {
    QStringList formats;                    // by number
    QPointer<const QMimeData> placed;       // what this program has put on the clipboard last
    bool isOpen = false;                    // by this program
    std::unique_ptr<ClipboardOffer> offer;  // null where the desktop is not an X server's
};

}  // namespace permora::qt
