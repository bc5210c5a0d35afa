// CWizardPage1: the user chooses the task, whose page follows.
#pragma once

#include "framework/property_sheet.h"

namespace permora {

class CWizardPage1 : public CPropertyPage {
  public:
    // The pages of the tasks; the sheet has one of them at a time, after this page.
    CWizardPage1(CPropertyPage& deletion, CPropertyPage& permissions);

  protected:
    bool OnInitDialog() override;
    bool OnSetActive() override;
    const MessageMap& GetMessageMap() const override;

  private:
    void ChooseDeletion();
    void ChoosePermissions();
    void SwapIn(CPropertyPage& page);

    CPropertyPage& deletionPage;
    CPropertyPage& permissionsPage;
};

}  // namespace permora
