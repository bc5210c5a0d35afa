#include "framework/clipboard.h"

#include "framework/clipboard_native.h"
#include "framework/modal_window.h"

namespace permora {
namespace {

// More than the paths of a million files. Larger data of another program is refused.
constexpr std::size_t kLargestData = std::size_t{256} << 20U;

}  // namespace

Clipboard::Clipboard(CWnd& ownerWindow)
    : owner(ownerWindow), isOpen(owner.HasWindow() && OpenNativeClipboard(owner)) {}

Clipboard::~Clipboard() {
    if (isOpen) CloseNativeClipboard();
}

bool Clipboard::Empty() {
    return isOpen && EmptyNativeClipboard();
}

bool Clipboard::SetData(unsigned int format, std::span<const std::uint8_t> bytes) {
    return isOpen && SetNativeClipboardData(format, bytes);
}

ClipboardAnswer Clipboard::AwaitFormats() const {
    if (!isOpen) return ClipboardAnswer::kNothing;
    const OwnerDisabler disabled(&owner);
    return AwaitNativeClipboardFormats();
}

ClipboardAnswer Clipboard::GetData(unsigned int format, std::vector<std::uint8_t>& bytes) const {
    if (!isOpen) return ClipboardAnswer::kNothing;
    const OwnerDisabler disabled(&owner);
    return NativeClipboardData(format, kLargestData, bytes);
}

bool CopyText(CWnd& owner, const std::string& text) {
    Clipboard clipboard(owner);
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    return clipboard.IsOpen() && clipboard.Empty() &&
           clipboard.SetData(RegisterClipboardFormat("text/plain"), bytes);
}

}  // namespace permora
