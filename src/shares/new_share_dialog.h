// CNewShareDlg: shares a folder; for systems without a wizard of their own.
#pragma once

#include <string>

#include "framework/dialog.h"
#include "shares/new_share.h"

namespace permora {

// DoModal returns IDOK when the folder has been shared.
class CNewShareDlg : public CDialog {
  public:
    explicit CNewShareDlg(CWnd* ownerWindow);

  protected:
    bool OnInitDialog() override;
    void OnOK() override;
    const MessageMap& GetMessageMap() const override;

  private:
    void OnChooseFolder();
    void OnUserLimit();

    NewShare Written() const;
    std::string Text(unsigned int id) const;
};

}  // namespace permora
