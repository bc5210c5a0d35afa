#include "wizard/wizard_sheet.h"

namespace permora {
namespace {

constexpr const char* kWizardTitle = "Security Wizard";

}  // namespace

void CWizard::SetUp(CWnd* owner) {
    Construct(kWizardTitle, owner);
    AddPage(taskPage);
    AddPage(permissionsPage);
    SetWizardMode();
}

void CWizard::SetItems(const WizardItems& items) {
    objects =
        RememberItems(items.names, items.drivesMode ? ItemPlace::kDriveRoot : ItemPlace::kCurrentDirectory);
    permissionsPage.items = objects;
    // Drives are refused when the page is shown.
    deletionPage.SetNames(items.names);
    deletionPage.drivesMode = items.drivesMode;
    deletionPage.askBeforeSecureDeletion = items.askBeforeSecureDeletion;
    permissionsPage.showIntermediateInfo = items.showIntermediateInfo;
}

bool CWizard::OnInitDialog() {
    const bool result = CPropertySheet::OnInitDialog();
    SetTitle(kWizardTitle);
    return result;
}

}  // namespace permora
