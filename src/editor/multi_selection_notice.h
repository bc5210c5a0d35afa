// CInfoDlg1: the notice before a sheet opens on several items.
#pragma once

#include <cstdint>
#include <string>

#include "framework/dialog.h"

namespace permora {

class CInfoDlg1 : public CDialog {
  public:
    explicit CInfoDlg1(CWnd* ownerWindow = nullptr);

    // The setting that "Do not show this message again" clears. Borrowed; null: nothing is kept.
    std::uint8_t* showIntermediateInfo = nullptr;
    // Replaces the template's text unless it is empty.
    std::string text;

  protected:
    bool OnInitDialog() override;
    void OnOK() override;
    void OnCancel() override;

  private:
    void KeepChoice();
};

}  // namespace permora
