#include "framework/dialog_layout.h"

#include <algorithm>

#include "framework/controls.h"
#include "framework/dialog_controls.h"
#include "framework/styles.h"
#include "framework/window_access.h"

namespace permora {
namespace {

// In dialog units.
constexpr int kRightMargin = 14;  // also that of controls in a frame
constexpr int kWidestGap = 8;     // between controls that belong together

bool IsPushButton(const CWnd& control) {
    if (dynamic_cast<const CButton*>(&control) == nullptr) return false;
    const DWORD type = control.GetStyle() & BS_TYPEMASK;
    return type == BS_PUSHBUTTON || type == BS_DEFPUSHBUTTON;
}

bool IsInOneRow(const Rect& one, const Rect& other) {
    return one.top < other.bottom && other.top < one.bottom;
}

}  // namespace

void DialogLayout::Start(CWnd& window, const DialogTemplate& dialog) {
    places.clear();
    growing = static_cast<int>(dialog.growing.size());
    if (growing == 0) return;
    const Rect client = DialogUnitsToPixels({0, 0, dialog.size.cx, dialog.size.cy});
    usual = {client.Width(), client.Height()};
    for (CWnd* child : WindowAccess::Children(window))
        places.push_back({.control = child, .rect = WindowAccess::Native(*child)->RectInParent()});
    for (const unsigned int id : dialog.growing) {
        const auto grower = std::ranges::find(places, window.GetDlgItem(id), &Place::control);
        if (grower == places.end()) continue;
        grower->grows = true;
        for (Place& place : places)
            if (place.rect.top >= grower->rect.bottom) ++place.growingAbove;
    }
    FindDirections();
}

// From the right, since what stands before a control that follows the edge follows it, too.
void DialogLayout::FindDirections() {
    const int margin = DialogUnitsToPixels({0, 0, kRightMargin, 0}).right;
    const int gap = DialogUnitsToPixels({0, 0, kWidestGap, 0}).right;
    std::vector<Place*> fromTheRight;
    for (Place& place : places)
        fromTheRight.push_back(&place);
    std::ranges::stable_sort(fromTheRight, std::ranges::greater(),
                             [](const Place* place) { return place->rect.right; });
    for (Place* place : fromTheRight) {
        const Rect& rect = place->rect;
        const bool followsEdge =
            rect.right >= usual.cx - margin || std::ranges::any_of(places, [&](const Place& next) {
                return next.across == Across::kMoves && IsInOneRow(rect, next.rect) &&
                       next.rect.left >= rect.right && next.rect.left - rect.right <= gap;
            });
        if (!followsEdge) continue;
        const bool isAtTheRight = rect.left >= usual.cx / 2;
        if (isAtTheRight)
            place->across = Across::kMoves;
        else if (!IsPushButton(*place->control))
            place->across = Across::kWidens;
    }
}

void DialogLayout::Arrange(Size client) {
    if (growing == 0) return;
    const int wider = client.cx - usual.cx;
    const int higher = client.cy - usual.cy;
    const auto share = [&](int growers) { return higher * growers / growing; };
    for (const Place& place : places) {
        Rect rect = place.rect;
        if (place.across == Across::kMoves) rect.left += wider;
        if (place.across != Across::kStays) rect.right += wider;
        rect.top += share(place.growingAbove);
        rect.bottom += share(place.growingAbove + (place.grows ? 1 : 0));
        if (place.control->HasWindow()) place.control->MoveWindow(rect);
    }
}

}  // namespace permora
