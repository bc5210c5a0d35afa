// CSharePage1: the access list of the first selected share, edited and applied to all of them.
#pragma once

#include "editor/access_list_page.h"
#include "shares/share_security.h"

namespace permora {

// The names are those of shares. Nothing is inherited by a share, so the two boxes are never enabled.
class CSharePage1 : public AccessListPage {
  public:
    CSharePage1();

  protected:
    bool ReadItem(const char* name) override;
    bool WriteItems(PACL dacl) override;
    AccessEntryList& EditedList() override { return share.entries; }

  private:
    ShareSecurity share;
};

}  // namespace permora
