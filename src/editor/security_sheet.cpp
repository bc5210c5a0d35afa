#include "editor/security_sheet.h"

namespace permora {

void CPSheet::SetUp(CWnd* owner) {
    Construct("Security Editor", owner);
    AddPage(permissionsPage);
    AddPage(ownerPage);
    AddPage(effectivePage);
}

void CPSheet::SetItems(std::span<const char* const> names, bool drivesMode) {
    SetTitle(std::string("Security Editor - ") + names.front());
    permissionsPage.names = names;
    permissionsPage.drivesMode = drivesMode;
    ownerPage.names = names;
    effectivePage.objectName = names.front();
}

bool CPSheet::OnInitDialog() {
    const bool result = CPropertySheet::OnInitDialog();
    SetFocus();
    return result;
}

}  // namespace permora
