// Pictures of this back end.
#pragma once

#include <QIcon>
#include <QPixmap>

#include "framework/images.h"

namespace permora {

// The back end's half of CIcon.
class NativeImage {
  public:
    explicit NativeImage(QIcon made) : icon(std::move(made)) {}
    const QIcon& Icon() const { return icon; }

  private:
    QIcon icon;
};

namespace qt {

// The icon with all its sizes; a null icon for an empty one.
QIcon ToQt(const CIcon& icon);
// What points to the right points to the left then.
QIcon Turned(const QIcon& icon);
// The largest picture that the icon has, in its own pixels.
QPixmap LargestPixmap(const QIcon& icon);

}  // namespace qt
}  // namespace permora
