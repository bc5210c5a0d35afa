#include "editor/security_sheet.h"

#include "editor/effective_page.h"
#include "editor/owner_page.h"
#include "editor/permissions_page.h"
#include "framework/property_sheet.h"
#include "resources/resource_ids.h"
#include "security/place_remembering.h"

namespace permora {
namespace {

class CPSheet : public CPropertySheet {
  public:
    CPSheet(CWnd* owner, const RememberedPlace& place, const std::string& name, ChangeSession& changes,
            std::uint8_t* askBeforeLosses)
        : remembered(place) {
        Construct("Security Editor - " + name, owner);
        permissionsPage.place = &remembered;
        permissionsPage.changes = &changes;
        permissionsPage.askBeforeLosses = askBeforeLosses;
        ownerPage.place = &remembered;
        ownerPage.changes = &changes;
        effectivePage.place = &remembered;
        AddPage(permissionsPage);
        AddPage(ownerPage);
        AddPage(effectivePage);
        AddButton(IDC_PREVIEW, "Pre&view...");
    }

  protected:
    bool OnInitDialog() override {
        const bool result = CPropertySheet::OnInitDialog();
        SetFocus();
        return result;
    }

    const MessageMap& GetMessageMap() const override {
        static const MessageMap kMap = MakeMessageMap<CPSheet>(
            CPropertySheet::GetMessageMap(), {
                                                 {IDC_PREVIEW, Notify::kClicked, &CPSheet::OnPreview},
                                             });
        return kMap;
    }

  private:
    void OnPreview() { ownerPage.IsInFront() ? ownerPage.Preview() : permissionsPage.Preview(); }

    RememberedPlace remembered;
    CPage1 permissionsPage;
    CPage3 ownerPage;
    CPage4 effectivePage;
};

}  // namespace

void EditSecurity(CWnd* owner, const Place& place, ChangeSession& changes, const SheetSettings& settings) {
    EditSecurity(owner, RememberPlaceFor(owner, place), place.names.front(), changes, settings);
}

void EditSecurity(CWnd* owner, const RememberedPlace& place, const std::string& name, ChangeSession& changes,
                  const SheetSettings& settings) {
    CPSheet sheet(owner, place, name, changes, settings.asksBeforeLosses);
    if (settings.size != nullptr) sheet.KeepSizeIn(*settings.size);
    sheet.DoModal();
}

}  // namespace permora
