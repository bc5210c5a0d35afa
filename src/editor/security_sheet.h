// CPSheet: the security editor on the items selected in the browser.
#pragma once

#include <span>
#include <string>
#include <vector>

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
    // The items of the next DoModal, in the order of the browser's rows; the first gives the title. The names
    // are borrowed until it returns and stand relative to the current directory. What they lead to now is
    // what the sheet is about: an item whose name leads to something else later is left alone and told.
    void SetItems(std::span<const char* const> names, bool drivesMode);

  protected:
    bool OnInitDialog() override;
    void OnDestroy() override { items.clear(); }

  private:
    std::vector<RememberedObject> items;
    CPage1 permissionsPage;
    CPage3 ownerPage;
    CPage4 effectivePage;
};

}  // namespace permora
