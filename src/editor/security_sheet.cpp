#include "editor/security_sheet.h"

namespace permora {

void CPSheet::SetUp(CWnd* owner) {
    Construct("Security Editor", owner);
    AddPage(permissionsPage);
    AddPage(ownerPage);
    AddPage(effectivePage);
}

void CPSheet::SetPlace(const Place& place) {
    SetTitle("Security Editor - " + place.names.front());
    remembered = RememberPlace(place);
    permissionsPage.place = &remembered;
    ownerPage.place = &remembered;
    effectivePage.place = &remembered;
}

bool CPSheet::OnInitDialog() {
    const bool result = CPropertySheet::OnInitDialog();
    SetFocus();
    return result;
}

}  // namespace permora
