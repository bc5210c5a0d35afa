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

void CWizard::SetPlace(const Place& place, const WizardSettings& settings) {
    remembered = RememberPlace(place);
    permissionsPage.place = &remembered;
    permissionsPage.showIntermediateInfo = settings.showIntermediateInfo;
    deletionPage.place = &remembered;
    deletionPage.askBeforeSecureDeletion = settings.askBeforeSecureDeletion;
}

void CWizard::OnDestroy() {
    deletionPage.StopWorker();
    remembered.items.clear();
}

bool CWizard::OnInitDialog() {
    const bool result = CPropertySheet::OnInitDialog();
    SetTitle(kWizardTitle);
    return result;
}

}  // namespace permora
