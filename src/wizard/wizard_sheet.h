// CWizard: one task for all items selected in the browser, rights for accounts or deletion for good.
#pragma once

#include <cstdint>

#include "framework/property_sheet.h"
#include "wizard/deletion_page.h"
#include "wizard/permissions_page.h"
#include "wizard/task_page.h"

namespace permora {

// The user's settings for the wizard.
struct WizardSettings {
    bool askBeforeSecureDeletion = true;
    std::uint8_t* showIntermediateInfo = nullptr;  // borrowed; the setting that the notice may clear
};

// One object serves the program's whole life; each DoModal begins with the choice of the task.
class CWizard : public CPropertySheet {
  public:
    CWizard() : taskPage(deletionPage, permissionsPage) {}
    // `owner` is the main frame. To be called once.
    void SetUp(CWnd* owner);
    // The items of the next DoModal: of a folder, or drives; one at least. They are held until the wizard has
    // closed.
    void SetPlace(const Place& place, const WizardSettings& settings);

  protected:
    bool OnInitDialog() override;
    void OnDestroy() override;

  private:
    RememberedPlace remembered;
    CWizardPage1 taskPage;
    CWizardPage2 deletionPage;
    CWizardPage3 permissionsPage;
};

}  // namespace permora
