// CShareSheet: the security editor on the shares selected in the browser.
#pragma once

#include "framework/property_sheet.h"
#include "platform/place.h"
#include "shares/share_permissions_page.h"

namespace permora {

// One object serves the program's whole life; each DoModal reads the first share anew.
class CShareSheet : public CPropertySheet {
  public:
    // `owner` is the main frame. To be called once.
    void SetUp(CWnd* owner);
    // The shares of the next DoModal, one at least; the first gives the title.
    void SetPlace(Place shares);

  protected:
    bool OnInitDialog() override;

  private:
    CSharePage1 permissionsPage;
};

}  // namespace permora
