#include "shares/share_sheet.h"

#include "framework/property_sheet.h"
#include "resources/resource_ids.h"
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
        AddButton(IDC_PREVIEW, "Pre&view...");
    }

  protected:
    bool OnInitDialog() override {
        const bool result = CPropertySheet::OnInitDialog();
        SetFocus();
        return result;
    }

    const MessageMap& GetMessageMap() const override {
        static const MessageMap kMap = MakeMessageMap<CShareSheet>(
            CPropertySheet::GetMessageMap(), {
                                                 {IDC_PREVIEW, Notify::kClicked, &CShareSheet::OnPreview},
                                             });
        return kMap;
    }

  private:
    void OnPreview() { permissionsPage.Preview(); }

    CSharePage1 permissionsPage;
};

}  // namespace

void EditShareSecurity(CWnd* owner, const Place& shares, ChangeSession& changes, Size* size) {
    CShareSheet sheet(owner, shares, changes);
    if (size != nullptr) sheet.KeepSizeIn(*size);
    sheet.DoModal();
}

}  // namespace permora
