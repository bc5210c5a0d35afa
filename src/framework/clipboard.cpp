#include "framework/clipboard.h"

#include "framework/clipboard_native.h"

namespace permora {
namespace {

// More than the paths of a million files; what another program offers beyond that is not taken.
constexpr std::size_t kLargestData = std::size_t{256} << 20U;

bool isHeld = false;  // by this program

}  // namespace

Clipboard::Clipboard(CWnd& owner) : isOpen(!isHeld && owner.HasWindow() && OpenNativeClipboard(owner)) {
    if (isOpen) isHeld = true;
}

Clipboard::~Clipboard() {
    if (!isOpen) return;
    CloseNativeClipboard();
    isHeld = false;
}

bool Clipboard::Empty() {
    return isOpen && EmptyNativeClipboard();
}

bool Clipboard::SetData(unsigned int format, std::span<const std::uint8_t> bytes) {
    return isOpen && SetNativeClipboardData(format, bytes);
}

std::optional<std::vector<std::uint8_t>> Clipboard::GetData(unsigned int format) const {
    if (!isOpen) return std::nullopt;
    return NativeClipboardData(format, kLargestData);
}

}  // namespace permora
