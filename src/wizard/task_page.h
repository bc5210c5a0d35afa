// CWizardPage1: the user picks the task; its page follows.
#pragma once

#include "framework/property_sheet.h"

namespace permora {

class CWizardPage1 : public CPropertyPage {
  public:
    // The pages of the tasks, of which the sheet has one at a time, behind this one.
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
