#include "framework/qt/image.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>

#include "framework/native.h"

namespace permora {
namespace {

// Of all that the toolkit could read only these two are tried.
QImage DecodeFile(const PictureData& picture) {
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(picture.file.data()),
                                                     static_cast<qsizetype>(picture.file.size()));
    QBuffer buffer;
    buffer.setData(bytes);
    const bool isPng = bytes.startsWith("\x89PNG");
    QImageReader reader(&buffer, isPng ? "png" : "svg");
    reader.setAutoDetectImageFormat(false);
    if (!isPng)
        reader.setScaledSize(reader.size().scaled(picture.size.cx, picture.size.cy, Qt::KeepAspectRatio));
    return reader.read();
}

QImage Decode(const PictureData& picture) {
    if (!picture.file.empty()) return DecodeFile(picture);
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
