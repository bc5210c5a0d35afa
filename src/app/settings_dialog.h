// CSettingsDlg: the settings dialog.
#pragma once

#include <array>

#include "app/settings_record.h"
#include "framework/dialog.h"

namespace permora {

// Edits `block`: set it before DoModal, read it after IDOK. Cancel leaves it as it was.
class CSettingsDlg : public CDialog {
  public:
    explicit CSettingsDlg(CWnd* ownerWindow);

    SettingsBlock block;
    // Beside the block, likewise.
    bool asksBeforeLosses = true;

  protected:
    bool OnInitDialog() override;
    void OnOK() override;

  private:
    // The four views, then the boxes of the flags. Null while there is no window.
    std::array<CButton*, 9> controls{};
};

}  // namespace permora
