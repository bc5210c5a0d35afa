#include "shares/share_sheet.h"

#include "framework/property_sheet.h"
#include "shares/share_permissions_page.h"

namespace permora {
namespace {

class CShareSheet : public CPropertySheet {
  public:
    CShareSheet(CWnd* owner, const Place& shares, ChangeSession& changes) {
        Construct("Security Editor - " + shares.names.front(), owner);
        permissionsPage.names = shares.names;
        permissionsPage.changes = &changes;
        AddPage(permissionsPage);
    }

  protected:
    bool OnInitDialog() override {
        const bool result = CPropertySheet::OnInitDialog();
        SetFocus();
        return result;
    }

  private:
    CSharePage1 permissionsPage;
};

}  // namespace

void EditShareSecurity(CWnd* owner, const Place& shares, ChangeSession& changes, Size* size) {
    CShareSheet sheet(owner, shares, changes);
    if (size != nullptr) sheet.KeepSizeIn(*size);
    sheet.DoModal();
}

}  // namespace permora
