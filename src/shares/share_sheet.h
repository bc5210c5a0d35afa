// CShareSheet: the security editor on the shares selected in the browser.
#pragma once

#include <span>

#include "framework/property_sheet.h"
#include "shares/share_permissions_page.h"

namespace permora {

// One object serves the program's whole life; each DoModal reads the first share anew.
class CShareSheet : public CPropertySheet {
  public:
    // `owner` is the main frame. To be called once.
    void SetUp(CWnd* owner);
    // The shares of the next DoModal, in the order of the browser's rows; the first gives the title. The
    // names are borrowed until it returns.
    void SetShares(std::span<const char* const> names);

  protected:
    bool OnInitDialog() override;

  private:
    CSharePage1 permissionsPage;
};

}  // namespace permora
