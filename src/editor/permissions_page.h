// CPage1: the access list of the first selected item, edited and applied to all of them.
#pragma once

#include "editor/access_list_page.h"
#include "history/change_session.h"
#include "security/object_security.h"

namespace permora {

class CPage1 : public AccessListPage {
  public:
    CPage1();

    // Set before the sheet is shown, and borrowed while it runs; one item at least.
    const RememberedPlace* place = nullptr;
    ChangeSession* changes = nullptr;

  protected:
    bool ReadItem() override;
    bool OnApply() override;
    AccessEntryList& EditedList() override { return object.entries; }
    const MessageMap& GetMessageMap() const override;

  private:
    void OnInheritanceClicked();
    void ShowInheritance();
    void ResetTrees(ChangeRecorder& recorder);

    ObjectSecurity object;  // as last read, with the edits since
};

}  // namespace permora
