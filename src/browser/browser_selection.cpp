// The selected rows, as commands get them.
#include <cstring>

#include "browser/browser_view.h"
#include "browser/list_presentation.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

constexpr const char* kNoBuffer = "Error: Cannot allocate buffer";
constexpr const char* kCannotSelect = "Error: cannot select items";

}  // namespace

std::span<const LPCSTR> BrowserView::GetSelectedNames() {
    const auto count = static_cast<std::size_t>(list.GetSelectedCount());
    if (count == 0) return {};
    selectionHeap.reset(HeapCreate(0, 0, 0));
    if (!selectionHeap) ShowFatalErrorBox(GetSafeHwnd(), "Error: Cannot create heap");
    const auto allocate = [this](std::size_t bytes) {
        void* block = HeapAlloc(selectionHeap.get(), 0, bytes);
        if (block == nullptr) ShowFatalErrorBox(GetSafeHwnd(), kNoBuffer);
        return block;
    };
    auto* names = static_cast<LPCSTR*>(allocate(count * sizeof(LPCSTR)));
    std::size_t taken = 0;
    for (int row = list.NextSelected(0); row >= 0; row = list.NextSelected(row + 1)) {
        if (taken == count) ShowFatalErrorBox(GetSafeHwnd(), "Error: Unrecoverable error");
        const std::string name = list.GetItemText(row, kNameColumn);
        auto* copy = static_cast<char*>(allocate(name.size() + 1));
        std::memcpy(copy, name.c_str(), name.size() + 1);
        names[taken++] = copy;
    }
    return {names, count};
}

void BrowserView::ReleaseSelection() {
    selectionHeap.reset();
}

void BrowserView::SelectAll() {
    bool areAllSelected = true;
    for (int row = 0; row < list.GetItemCount(); ++row)
        areAllSelected = list.SetSelected(row, true) && areAllSelected;
    if (!areAllSelected) ShowErrorBox(GetSafeHwnd(), kCannotSelect);
}

void BrowserView::InvertSelection() {
    bool areAllInverted = true;
    for (int row = 0; row < list.GetItemCount(); ++row)
        areAllInverted = list.SetSelected(row, !list.IsSelected(row)) && areAllInverted;
    if (!areAllInverted) ShowErrorBox(GetSafeHwnd(), kCannotSelect);
}

}  // namespace permora
