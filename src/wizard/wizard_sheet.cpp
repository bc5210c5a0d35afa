#include "wizard/wizard_sheet.h"

#include "security/place_remembering.h"

namespace permora {
namespace {

constexpr const char* kWizardTitle = "Security Wizard";

}  // namespace

CWizard::CWizard(CWnd* owner, const RememberedPlace& place, const WizardSettings& settings,
                 ChangeSession& changes)
    : remembered(place), taskPage(deletionPage, permissionsPage) {
    Construct(kWizardTitle, owner);
    deletionPage.place = &remembered;
    deletionPage.askBeforeSecureDeletion = settings.askBeforeSecureDeletion;
    permissionsPage.place = &remembered;
    permissionsPage.changes = &changes;
    permissionsPage.showIntermediateInfo = settings.showIntermediateInfo;
    AddPage(taskPage);
    AddPage(permissionsPage);
    SetWizardMode();
}

bool CWizard::OnInitDialog() {
    const bool result = CPropertySheet::OnInitDialog();
    SetTitle(kWizardTitle);
    return result;
}

void RunSecurityWizard(CWnd* owner, const Place& place, const WizardSettings& settings,
                       ChangeSession& changes) {
    RunSecurityWizard(owner, RememberPlaceFor(owner, place), settings, changes);
}

void RunSecurityWizard(CWnd* owner, const RememberedPlace& place, const WizardSettings& settings,
                       ChangeSession& changes) {
    CWizard(owner, place, settings, changes).DoModal();
}

}  // namespace permora
