// CRenameDlg: asks for the new name of a file or folder, and gives it.
#pragma once

#include <functional>
#include <string>

#include "framework/dialog.h"

namespace permora {

// Set the fields before DoModal. The shell tells what fails.
class CRenameDlg : public CDialog {
  public:
    explicit CRenameDlg(CWnd* ownerWindow);

    std::string folder;  // full path
    std::string oldName;
    // Asked before the name is given, since the folder may have been replaced while the user thought. It
    // tells why not.
    std::function<bool()> mayRename;

  protected:
    bool OnInitDialog() override;
    void OnOK() override;
};

}  // namespace permora
