// CRenameDlg: asks for the new name of a file or folder, and renames it.
#pragma once

#include <functional>
#include <string>

#include "framework/dialog.h"

namespace permora {

// Set the fields before DoModal. The shell shows failures.
class CRenameDlg : public CDialog {
  public:
    explicit CRenameDlg(CWnd* ownerWindow);

    std::string folder;  // full path
    std::string oldName;
    bool isFile = false;
    std::string newName;  // as it was typed; empty when the dialog was cancelled
    // Called before the object is renamed, since the folder may have been replaced meanwhile. On false, the
    // reason has been reported.
    std::function<bool()> mayRename;

  protected:
    bool OnInitDialog() override;
    void OnOK() override;
};

}  // namespace permora
