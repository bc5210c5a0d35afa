#include "editor/security_sheet.h"

namespace permora {

void CPSheet::SetUp(CWnd* owner) {
    Construct("Security Editor", owner);
    AddPage(permissionsPage);
    AddPage(ownerPage);
    AddPage(effectivePage);
}

void CPSheet::SetItems(std::span<const char* const> names, bool drivesMode) {
    items = RememberItems(names, drivesMode ? ItemPlace::kDriveRoot : ItemPlace::kCurrentDirectory);
    SetTitle(std::string("Security Editor - ") + names.front());
    permissionsPage.names = names;
    permissionsPage.items = items;
    permissionsPage.drivesMode = drivesMode;
    ownerPage.items = items;
    effectivePage.items = items;
}

bool CPSheet::OnInitDialog() {
    const bool result = CPropertySheet::OnInitDialog();
    SetFocus();
    return result;
}

}  // namespace permora
