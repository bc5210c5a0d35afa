// CNewFolderDlg: asks for the name of a new folder.
#pragma once

#include <string>

#include "framework/dialog.h"

namespace permora {

class CNewFolderDlg : public CDialog {
  public:
    explicit CNewFolderDlg(CWnd* ownerWindow);

    std::string folderName = "New Folder";  // what was typed, after IDOK; never empty

  protected:
    bool OnInitDialog() override;
    void OnOK() override;
};

}  // namespace permora
