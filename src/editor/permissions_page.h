// CPage1: the access list of the first selected item, edited and applied to all of them.
#pragma once

#include "editor/access_list_page.h"
#include "security/object_security.h"

namespace permora {

// The names stand relative to the current directory.
class CPage1 : public AccessListPage {
  public:
    CPage1();

    bool drivesMode = false;  // the items are drive roots; set before the sheet is shown

  protected:
    bool ReadItem(const char* name) override;
    bool WriteItems(PACL dacl) override;
    AccessEntryList& EditedList() override { return object.entries; }
    const MessageMap& GetMessageMap() const override;

  private:
    void OnInheritanceClicked();
    void ShowInheritance();

    ObjectSecurity object;
};

}  // namespace permora
