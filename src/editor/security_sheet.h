// CPSheet: the security editor on the items selected in the browser.
#pragma once

#include "editor/effective_page.h"
#include "editor/owner_page.h"
#include "editor/permissions_page.h"
#include "framework/property_sheet.h"

namespace permora {

// One object serves the program's whole life; each DoModal reads the first item anew.
class CPSheet : public CPropertySheet {
  public:
    // `owner` is the main frame. To be called once.
    void SetUp(CWnd* owner);
    // The items of the next DoModal: of a folder, or drives; one at least. The first gives the title. When
    // the name of an item leads to another object later, that object is left alone and the user is informed.
    void SetPlace(const Place& place);

  protected:
    bool OnInitDialog() override;
    void OnDestroy() override { remembered.items.clear(); }

  private:
    RememberedPlace remembered;
    CPage1 permissionsPage;
    CPage3 ownerPage;
    CPage4 effectivePage;
};

}  // namespace permora
