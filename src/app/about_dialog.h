// CAboutDlg: the About box, with a link to the maker's web site.
#pragma once

#include "framework/dialog.h"

namespace permora {

class CAboutDlg : public CDialog {
  public:
    explicit CAboutDlg(CWnd* ownerWindow);

  protected:
    bool OnInitDialog() override;
    void OnPaint(CDC& dc) override;
    Handled OnMouseMove(Point client) override;
    Handled OnLButtonDown(Point client) override;

  private:
    Rect linkRect;  // client pixels
};

}  // namespace permora
