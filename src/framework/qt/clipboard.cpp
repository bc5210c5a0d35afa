// The desktop's clipboard. Its formats are MIME types; what it holds outlives the program where the desktop
// keeps it.
#include "framework/clipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QPointer>
#include <memory>

#include "framework/clipboard_native.h"
#include "framework/qt/widget.h"

namespace permora {
namespace {

// Where the system begins to number registered formats.
constexpr unsigned int kFirstFormat = 0xC000;

QStringList& Formats() {
    static QStringList formats;
    return formats;
}

// Null for a number that was never handed out.
QString MimeTypeOf(unsigned int format) {
    return Formats().value(static_cast<qsizetype>(format) - kFirstFormat);
}

}  // namespace

unsigned int RegisterClipboardFormat(const std::string& name) {
    if (name.empty()) return 0;
    const QString lower = qt::ToQt(name).toLower();
    const bool isMimeType = lower.contains(QLatin1Char('/'));
    const QString type = isMimeType ? lower : QStringLiteral("application/x-permora.") + lower;
    if (!Formats().contains(type)) Formats().append(type);
    return kFirstFormat + static_cast<unsigned int>(Formats().indexOf(type));
}

bool Clipboard::IsFormatAvailable(unsigned int format) {
    const QString type = MimeTypeOf(format);
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    return !type.isEmpty() && data != nullptr && data->hasFormat(type);
}

// The desktop knows no owner of an open clipboard.
bool OpenNativeClipboard(CWnd& /*owner*/) {
    return true;
}

void CloseNativeClipboard() {}

bool EmptyNativeClipboard() {
    QGuiApplication::clipboard()->clear();
    return true;
}

bool SetNativeClipboardData(unsigned int format, std::span<const std::uint8_t> bytes) {
    const QString type = MimeTypeOf(format);
    if (type.isEmpty()) return false;
    QClipboard& clipboard = *QGuiApplication::clipboard();
    auto data = std::make_unique<QMimeData>();
    // What is there in other formats stays if it is this program's own.
    static QPointer<const QMimeData> placed;
    if (placed != nullptr && placed == clipboard.mimeData()) {
        for (const QString& other : placed->formats())
            data->setData(other, placed->data(other));
    }
    data->setData(
        type, QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size())));
    placed = data.get();
    clipboard.setMimeData(data.release());
    return Clipboard::IsFormatAvailable(format);
}

std::optional<std::vector<std::uint8_t>> NativeClipboardData(unsigned int format, std::size_t limit) {
    if (!Clipboard::IsFormatAvailable(format)) return std::nullopt;
    const QByteArray data = QGuiApplication::clipboard()->mimeData()->data(MimeTypeOf(format));
    if (static_cast<std::size_t>(data.size()) > limit) return std::nullopt;
    return std::vector<std::uint8_t>(data.begin(), data.end());
}

}  // namespace permora
