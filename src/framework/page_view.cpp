#include "framework/page_view.h"

#include "framework/page_native.h"
#include "framework/window_access.h"

namespace permora {
namespace {

NativePage* NativeOf(const CPageView& view) {
    return WindowAccess::NativeAs<NativePage>(view);
}

}  // namespace

bool CPageView::Show(const std::string& place) {
    auto* page = NativeOf(*this);
    return page != nullptr && page->Show(place);
}

void CPageView::GoBack() {
    if (auto* page = NativeOf(*this)) page->GoBack();
}

void CPageView::GoForward() {
    if (auto* page = NativeOf(*this)) page->GoForward();
}

bool CPageView::CanGoBack() const {
    const auto* page = NativeOf(*this);
    return page != nullptr && page->CanGoBack();
}

bool CPageView::CanGoForward() const {
    const auto* page = NativeOf(*this);
    return page != nullptr && page->CanGoForward();
}

}  // namespace permora
