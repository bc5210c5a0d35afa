// CExplanationDlg: why an account has the rights that the page of effective permissions shows.
#pragma once

#include <string>
#include <vector>

#include "framework/dialog.h"
#include "security/rights_explanation.h"

namespace permora {

class CExplanationDlg : public CDialog {
  public:
    explicit CExplanationDlg(CWnd* ownerWindow);

    // Set before the dialog is shown.
    std::string account;
    std::vector<ExplanationRow> rows;
    std::vector<std::string> remarks;  // sentences

  protected:
    bool OnInitDialog() override;
};

}  // namespace permora
