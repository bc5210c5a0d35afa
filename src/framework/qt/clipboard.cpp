// The desktop's clipboard. Its formats are MIME types. Its contents outlive the program if the desktop keeps
// them.
#include "framework/clipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <memory>
#include <utility>

#include "framework/clipboard_native.h"
#include "framework/qt/application.h"
#include "framework/qt/widget.h"

namespace permora {
namespace {

// The system's first number for registered formats.
constexpr unsigned int kFirstFormat = 0xC000;

qt::ClipboardState& State() {
    return QtApplication::Current()->Clipboard();
}

// Null unless the number was registered.
QString MimeTypeOf(unsigned int format) {
    return State().formats.value(static_cast<qsizetype>(format) - kFirstFormat);
}

// The data that this program put on the clipboard; null if it is no longer there.
const QMimeData* OwnData() {
    const QMimeData* placed = State().placed;
    return placed != nullptr && placed == QGuiApplication::clipboard()->mimeData() ? placed : nullptr;
}

}  // namespace

unsigned int RegisterClipboardFormat(const std::string& name) {
    if (name.empty()) return 0;
    const QString lower = qt::ToQt(name).toLower();
    const bool isMimeType = lower.contains(QLatin1Char('/'));
    const QString type = isMimeType ? lower : QStringLiteral("application/x-permora.") + lower;
    QStringList& formats = State().formats;
    if (!formats.contains(type)) formats.append(type);
    return kFirstFormat + static_cast<unsigned int>(formats.indexOf(type));
}

bool Clipboard::IsFormatAvailable(unsigned int format) {
    const QString type = MimeTypeOf(format);
    if (type.isEmpty()) return false;
    if (const QMimeData* own = OwnData()) return own->hasFormat(type);
    if (State().offer) return State().offer->Has(type.toUtf8());
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    return data != nullptr && data->hasFormat(type);
}

ClipboardAnswer AwaitNativeClipboardFormats() {
    const qt::ClipboardOffer* offer = State().offer.get();
    return OwnData() != nullptr || offer == nullptr || offer->Await() ? ClipboardAnswer::kGiven
                                                                      : ClipboardAnswer::kSilence;
}

// The desktop knows no owner of an open clipboard.
bool OpenNativeClipboard(CWnd& /*owner*/) {
    return !std::exchange(State().isOpen, true);
}

void CloseNativeClipboard() {
    State().isOpen = false;
}

bool EmptyNativeClipboard() {
    QGuiApplication::clipboard()->clear();
    return true;
}

bool SetNativeClipboardData(unsigned int format, std::span<const std::uint8_t> bytes) {
    const QString type = MimeTypeOf(format);
    if (type.isEmpty()) return false;
    QClipboard& clipboard = *QGuiApplication::clipboard();
    auto data = std::make_unique<QMimeData>();
    // Other formats stay if this program put them there.
    if (const QMimeData* own = OwnData())
        for (const QString& other : own->formats())
            data->setData(other, own->data(other));
    data->setData(
        type, QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size())));
    State().placed = data.get();
    clipboard.setMimeData(data.release());
    return Clipboard::IsFormatAvailable(format);
}

ClipboardAnswer NativeClipboardData(unsigned int format, std::size_t limit,
                                    std::vector<std::uint8_t>& bytes) {
    if (!Clipboard::IsFormatAvailable(format)) return ClipboardAnswer::kNothing;
    const QString type = MimeTypeOf(format);
    QByteArray data;
    if (OwnData() != nullptr || State().offer == nullptr) {
        data = QGuiApplication::clipboard()->mimeData()->data(type);
    } else {
        const auto request = std::make_unique<qt::SelectionRequest>(
            qt::SelectionKind::kClipboard, type.toUtf8(), static_cast<qsizetype>(limit));
        const auto state = qt::SelectionRequest::Await(request);
        if (state == qt::SelectionRequest::State::kWaiting) return ClipboardAnswer::kSilence;
        if (state == qt::SelectionRequest::State::kRefused) return ClipboardAnswer::kNothing;
        data = request->Bytes();
    }
    if (static_cast<std::size_t>(data.size()) > limit) return ClipboardAnswer::kNothing;
    bytes.assign(data.begin(), data.end());
    return ClipboardAnswer::kGiven;
}

}  // namespace permora
