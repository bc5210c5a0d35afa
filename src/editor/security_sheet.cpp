#include "editor/security_sheet.h"

#include "editor/effective_page.h"
#include "editor/owner_page.h"
#include "editor/permissions_page.h"
#include "framework/property_sheet.h"

namespace permora {
namespace {

class CPSheet : public CPropertySheet {
  public:
    CPSheet(CWnd* owner, const Place& place, ChangeSession& changes) : remembered(RememberPlace(place)) {
        Construct("Security Editor - " + place.names.front(), owner);
        permissionsPage.place = &remembered;
        permissionsPage.changes = &changes;
        ownerPage.place = &remembered;
        ownerPage.changes = &changes;
        effectivePage.place = &remembered;
        AddPage(permissionsPage);
        AddPage(ownerPage);
        AddPage(effectivePage);
    }

  protected:
    bool OnInitDialog() override {
        const bool result = CPropertySheet::OnInitDialog();
        SetFocus();
        return result;
    }

  private:
    RememberedPlace remembered;
    CPage1 permissionsPage;
    CPage3 ownerPage;
    CPage4 effectivePage;
};

}  // namespace

void EditSecurity(CWnd* owner, const Place& place, ChangeSession& changes) {
    CPSheet(owner, place, changes).DoModal();
}

}  // namespace permora
