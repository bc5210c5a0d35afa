// CWizard: one task for all items selected in the browser, rights for accounts or deletion for good.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "framework/property_sheet.h"
#include "wizard/deletion_page.h"
#include "wizard/permissions_page.h"
#include "wizard/task_page.h"

namespace permora {

// What one DoModal works on. All is borrowed until it returns.
struct WizardItems {
    // In the order of the browser's rows, relative to the current directory.
    std::span<const char* const> names;
    bool drivesMode = false;  // they are drive roots
    bool askBeforeSecureDeletion = true;
    std::uint8_t* showIntermediateInfo = nullptr;  // the setting that the notice may clear
};

// One object serves the program's whole life; each DoModal begins with the choice of the task.
class CWizard : public CPropertySheet {
  public:
    CWizard() : taskPage(deletionPage, permissionsPage) {}
    // `owner` is the main frame. To be called once.
    void SetUp(CWnd* owner);
    // The items are held for the deletion from here on, until this is called without any.
    void SetItems(const WizardItems& items);

  protected:
    bool OnInitDialog() override;
    void OnDestroy() override { objects.clear(); }

  private:
    std::vector<RememberedObject> objects;  // what the names lead to when the wizard is opened
    CWizardPage1 taskPage;
    CWizardPage2 deletionPage;
    CWizardPage3 permissionsPage;
};

}  // namespace permora
