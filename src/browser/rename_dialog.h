// CRenameDlg: asks for the new name of a file or folder, and gives it.
#pragma once

#include <string>

#include "framework/dialog.h"

namespace permora {

// Set both fields before DoModal. The shell tells what fails.
class CRenameDlg : public CDialog {
  public:
    explicit CRenameDlg(CWnd* ownerWindow);

    std::string folder;  // full path
    std::string oldName;

  protected:
    bool OnInitDialog() override;
    void OnOK() override;
};

}  // namespace permora
