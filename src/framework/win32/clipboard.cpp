// The system's clipboard. A text, "text/plain" to the contract, is the system's own format for it.
#include "framework/clipboard.h"

#include <cstring>

#include "framework/clipboard_native.h"
#include "framework/win32/text.h"

namespace permora {
namespace {

// What a text is from the clipboard's bytes: up to the NUL, which other programs may have left out.
std::wstring_view TextIn(std::span<const std::uint8_t> bytes) {
    const std::wstring_view text(reinterpret_cast<const wchar_t*>(bytes.data()),
                                 bytes.size() / sizeof(wchar_t));
    return text.substr(0, text.find(L'\0'));
}

}  // namespace

unsigned int RegisterClipboardFormat(const std::string& name) {
    if (name.empty()) return 0;
    if (name == "text/plain") return CF_UNICODETEXT;
    return RegisterClipboardFormatW(win32::Wide(name).c_str());
}

bool Clipboard::IsFormatAvailable(unsigned int format) {
    return format != 0 && IsClipboardFormatAvailable(format) != 0;
}

// The system knows at once.
ClipboardAnswer AwaitNativeClipboardFormats() {
    return ClipboardAnswer::kGiven;
}

bool OpenNativeClipboard(CWnd& owner) {
    return OpenClipboard(owner.GetSafeHwnd()) != 0;
}

void CloseNativeClipboard() {
    CloseClipboard();
}

bool EmptyNativeClipboard() {
    return EmptyClipboard() != 0;
}

bool SetNativeClipboardData(unsigned int format, std::span<const std::uint8_t> bytes) {
    std::wstring text;
    if (format == CF_UNICODETEXT) {
        text = win32::Wide({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
        bytes = {reinterpret_cast<const std::uint8_t*>(text.c_str()), (text.size() + 1) * sizeof(wchar_t)};
    }
    HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, bytes.size());
    void* place = memory != nullptr ? GlobalLock(memory) : nullptr;
    if (place != nullptr) {
        std::memcpy(place, bytes.data(), bytes.size());
        GlobalUnlock(memory);
        if (SetClipboardData(format, memory) != nullptr) return true;  // the system's now
    }
    GlobalFree(memory);
    return false;
}

ClipboardAnswer NativeClipboardData(unsigned int format, std::size_t limit,
                                    std::vector<std::uint8_t>& bytes) {
    HANDLE memory = GetClipboardData(format);
    const std::size_t size = memory != nullptr ? GlobalSize(memory) : 0;
    const void* place = memory != nullptr && size <= limit ? GlobalLock(memory) : nullptr;
    if (place == nullptr) return ClipboardAnswer::kNothing;
    const std::span given(static_cast<const std::uint8_t*>(place), size);
    if (format == CF_UNICODETEXT) {
        const std::string text = win32::Utf8(TextIn(given));
        bytes.assign(text.begin(), text.end());
    } else {
        bytes.assign(given.begin(), given.end());
    }
    GlobalUnlock(memory);
    return ClipboardAnswer::kGiven;
}

}  // namespace permora
