// CWizard: the sheet of the security wizard.
#pragma once

#include "framework/property_sheet.h"
#include "wizard/deletion_page.h"
#include "wizard/permissions_page.h"
#include "wizard/security_wizard.h"
#include "wizard/task_page.h"

namespace permora {

// Begins with the choice of the task.
class CWizard : public CPropertySheet {
  public:
    // As RunSecurityWizard takes them. For one DoModal.
    CWizard(CWnd* owner, const RememberedPlace& place, const WizardSettings& settings,
            ChangeSession& changes);

  protected:
    bool OnInitDialog() override;
    void OnDestroy() override { deletionPage.StopWorker(); }

  private:
    RememberedPlace remembered;
    CWizardPage1 taskPage;
    CWizardPage2 deletionPage;
    CWizardPage3 permissionsPage;
};

}  // namespace permora
