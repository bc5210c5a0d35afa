#include "editor/security_sheet.h"

#include "editor/effective_page.h"
#include "editor/owner_page.h"
#include "editor/permissions_page.h"
#include "framework/property_sheet.h"

namespace permora {
namespace {

class CPSheet : public CPropertySheet {
  public:
    CPSheet(CWnd* owner, const RememberedPlace& place, const std::string& name, ChangeSession& changes)
        : remembered(place) {
        Construct("Security Editor - " + name, owner);
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
    EditSecurity(owner, RememberPlace(place), place.names.front(), changes);
}

void EditSecurity(CWnd* owner, const RememberedPlace& place, const std::string& name,
                  ChangeSession& changes) {
    CPSheet(owner, place, name, changes).DoModal();
}

}  // namespace permora
