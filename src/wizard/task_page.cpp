#include "wizard/task_page.h"

#include "editor/required_control.h"
#include "framework/controls.h"
#include "resources/resource_ids.h"

namespace permora {

const MessageMap& CWizardPage1::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<CWizardPage1>(
        CPropertyPage::GetMessageMap(),
        {
            {IDC_TASK_DELETION, Notify::kClicked, &CWizardPage1::ChooseDeletion},
            {IDC_TASK_PERMISSIONS, Notify::kClicked, &CWizardPage1::ChoosePermissions},
        });
    return kMap;
}

CWizardPage1::CWizardPage1(CPropertyPage& deletion, CPropertyPage& permissions)
    : CPropertyPage(IDD_WIZARD_TASK_PAGE), deletionPage(deletion), permissionsPage(permissions) {}

// Each run begins with the same task.
bool CWizardPage1::OnInitDialog() {
    RequiredControl<CButton>(*this, IDC_TASK_PERMISSIONS).SetCheck(CheckState::kChecked);
    ChoosePermissions();
    return CPropertyPage::OnInitDialog();
}

bool CWizardPage1::OnSetActive() {
    Sheet()->SetWizardButtons(WizardButtons::kNext);
    return CPropertyPage::OnSetActive();
}

void CWizardPage1::ChooseDeletion() {
    SwapIn(deletionPage);
}

void CWizardPage1::ChoosePermissions() {
    SwapIn(permissionsPage);
}

void CWizardPage1::SwapIn(CPropertyPage& page) {
    constexpr int kTaskIndex = 1;
    Sheet()->RemovePage(kTaskIndex);
    Sheet()->AddPage(page);
}

}  // namespace permora
