#include "framework/qt/image.h"

#include <QBuffer>
#include <QDataStream>
#include <QImage>
#include <QImageReader>
#include <QTransform>
#include <span>
#include <utility>

#include "framework/native.h"
#include "framework/resource_file.h"
#include "framework/resource_templates.h"

namespace permora {
namespace {

QByteArray Borrowed(std::span<const std::byte> bytes) {
    return QByteArray::fromRawData(reinterpret_cast<const char*>(bytes.data()),
                                   static_cast<qsizetype>(bytes.size()));
}

// Resources hold the pictures of files without the files' headers, so each file is assembled again.
// Formats: "BITMAPFILEHEADER" and "Icons" in the Windows SDK's documentation.
QDataStream& StartFile(QDataStream& stream) {
    stream.setByteOrder(QDataStream::LittleEndian);
    return stream;
}

QByteArray IconFile(const std::vector<IconGroupEntry>& group) {
    constexpr quint16 kIconType = 1;
    constexpr quint32 kHeaderSize = 6;
    constexpr quint32 kEntrySize = 16;
    QByteArray header;
    QByteArray pictures;
    QDataStream stream(&header, QIODevice::WriteOnly);
    StartFile(stream) << quint16{0} << kIconType << static_cast<quint16>(group.size());
    const quint32 start = kHeaderSize + kEntrySize * static_cast<quint32>(group.size());
    for (const IconGroupEntry& entry : group) {
        const QByteArray picture = Borrowed(FindProgramResource(ResourceType::kIcon, entry.iconId));
        // A side of 256 pixels is written as 0. Colours, planes and depth are in the picture itself.
        stream << static_cast<quint8>(entry.size.cx) << static_cast<quint8>(entry.size.cy) << quint16{0}
               << quint16{1} << quint16{32} << static_cast<quint32>(picture.size())
               << start + static_cast<quint32>(pictures.size());
        pictures += picture;
    }
    return header + pictures;
}

QByteArray BitmapFile(std::span<const std::byte> resource) {
    constexpr quint32 kHeaderSize = 14;
    QByteArray header;
    QDataStream stream(&header, QIODevice::WriteOnly);
    StartFile(stream).writeRawData("BM", 2);
    // The picture's own header gives the start of the pixels.
    stream << kHeaderSize + static_cast<quint32>(resource.size()) << quint32{0} << quint32{0};
    return header + Borrowed(resource);
}

// All pictures in a file of the given format, which is not guessed.
std::shared_ptr<const NativeImage> ReadImage(QByteArray file, const char* format) {
    QBuffer buffer(&file);
    QImageReader reader(&buffer, format);
    reader.setAutoDetectImageFormat(false);
    QIcon icon;
    do {
        if (const QImage image = reader.read(); !image.isNull()) icon.addPixmap(QPixmap::fromImage(image));
    } while (reader.jumpToNextImage());
    return icon.isNull() ? nullptr : std::make_shared<const NativeImage>(std::move(icon));
}

}  // namespace

std::shared_ptr<const NativeImage> LoadNativeIcon(unsigned int id) {
    const auto group = ParseIconGroup(FindProgramResource(ResourceType::kIconGroup, id));
    return group ? ReadImage(IconFile(*group), "ico") : nullptr;
}

std::shared_ptr<const NativeImage> LoadNativeBitmap(unsigned int id) {
    const std::span<const std::byte> resource = FindProgramResource(ResourceType::kBitmap, id);
    return resource.empty() ? nullptr : ReadImage(BitmapFile(resource), "bmp");
}

std::shared_ptr<const NativeImage> MakeNativeImage(Size size, std::span<const std::uint8_t> pixels) {
    constexpr int kChannels = 4;
    const QImage borrowed(pixels.data(), size.cx, size.cy, size.cx * kChannels, QImage::Format_ARGB32);
    return std::make_shared<const NativeImage>(QIcon(QPixmap::fromImage(borrowed.copy())));
}

namespace qt {

QIcon ToQt(const CIcon& icon) {
    return icon ? icon.Native()->Icon() : QIcon();
}

QIcon Turned(const QIcon& icon) {
    QIcon turned;
    for (const QSize& size : icon.availableSizes())
        turned.addPixmap(icon.pixmap(size, 1.0).transformed(QTransform::fromScale(-1, 1)));
    return turned;
}

QPixmap LargestPixmap(const QIcon& icon) {
    QSize largest;
    for (const QSize& size : icon.availableSizes())
        if (size.width() > largest.width()) largest = size;
    return largest.isValid() ? icon.pixmap(largest, 1.0) : QPixmap();
}

}  // namespace qt
}  // namespace permora
