// CInfoDlg1: says, before a sheet opens on several items, which of them it shows.
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
    // Stands in place of the template's text. Empty: the template's.
    std::string text;

  protected:
    bool OnInitDialog() override;
    void OnOK() override;
    void OnCancel() override;

  private:
    void KeepChoice();
};

}  // namespace permora
