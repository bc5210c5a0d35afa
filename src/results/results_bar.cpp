#include "results/results_bar.h"

#include <algorithm>

#include "framework/dialog_controls.h"
#include "framework/resource_templates.h"
#include "resources/resource_ids.h"

namespace permora {

void ResultsBar::OnSize(Size client) {
    constexpr int kLeastChoice = 30;  // dialog units
    constexpr int kMargin = 4;        // pixels, at the end
    const auto bar = LoadDialogTemplate(IDD_RESULTS_BAR);
    CWnd* choice = GetDlgItem(IDC_RESULTS_PAGE);
    if (!bar || choice == nullptr || GetDlgItem(ID_STOP_RESULTS) == nullptr) return;
    const Rect last = DialogUnitsToPixels(bar->controls.back().rect);
    int taken = 0;
    for (const ControlTemplate& control : bar->controls) {
        CWnd* window = GetDlgItem(control.id);
        if (window == nullptr || control.id == static_cast<unsigned int>(IDC_STATIC)) continue;
        Rect place = DialogUnitsToPixels(control.rect);
        if (window == choice) {
            const int most = place.Width() - DialogUnitsToPixels({0, 0, kLeastChoice, 0}).right;
            taken = std::clamp(last.right + kMargin - client.cx, 0, most);
            place.bottom = place.top + choice->GetWindowRect().Height();  // without the list that drops down
        } else {
            place.left -= taken;
        }
        place.right -= taken;
        window->MoveWindow(place);
    }
}

}  // namespace permora
