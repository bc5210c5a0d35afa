#include "framework/radio_group.h"

#include <algorithm>

#include "framework/controls.h"
#include "framework/styles.h"
#include "framework/window_access.h"

namespace permora {

bool IsRadioButton(const CWnd& control) {
    const DWORD type = control.GetStyle() & BS_TYPEMASK;
    return dynamic_cast<const CButton*>(&control) != nullptr &&
           (type == BS_RADIOBUTTON || type == BS_AUTORADIOBUTTON);
}

std::vector<CWnd*> RadioGroupOf(CWnd& button) {
    const std::vector<CWnd*>& siblings = WindowAccess::Children(*button.GetParent());
    const auto startsGroup = [](const CWnd* control) { return (control->GetStyle() & WS_GROUP) != 0; };
    const auto self = std::ranges::find(siblings, &button);
    auto first = self;
    while (first != siblings.begin() && !startsGroup(*first))
        --first;
    const auto last = std::find_if(std::next(self), siblings.end(), startsGroup);

    std::vector<CWnd*> group;
    std::copy_if(first, last, std::back_inserter(group),
                 [](const CWnd* each) { return IsRadioButton(*each); });
    return group;
}

}  // namespace permora
