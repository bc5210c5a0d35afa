#include "framework/qt/image.h"

#include <QImage>

#include "framework/native.h"

namespace permora {
namespace {

QImage Decode(const PictureData& picture) {
    if (!picture.png.empty()) {
        return QImage::fromData(reinterpret_cast<const uchar*>(picture.png.data()),
                                static_cast<int>(picture.png.size()), "PNG");
    }
    constexpr int kChannels = 4;
    const QImage borrowed(picture.pixels.data(), picture.size.cx, picture.size.cy,
                          picture.size.cx * kChannels, QImage::Format_ARGB32);
    return borrowed.copy();
}

}  // namespace

std::shared_ptr<const NativeImage> MakeNativeImage(std::span<const PictureData> pictures) {
    QIcon icon;
    for (const PictureData& picture : pictures) {
        if (const QImage image = Decode(picture); !image.isNull()) icon.addPixmap(QPixmap::fromImage(image));
    }
    if (icon.isNull()) return nullptr;
    return std::make_shared<const NativeImage>(icon);
}

namespace qt {

QIcon ToQt(const CIcon& icon) {
    return icon ? icon.Native()->Icon() : QIcon();
}

QPixmap LargestPixmap(const QIcon& icon) {
    QSize largest;
    for (const QSize& size : icon.availableSizes()) {
        if (size.width() > largest.width()) largest = size;
    }
    return largest.isValid() ? icon.pixmap(largest, 1.0) : QPixmap();
}

}  // namespace qt
}  // namespace permora
