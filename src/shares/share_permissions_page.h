// CSharePage1: the access list of the first selected share, edited and applied to all of them.
#pragma once

#include <string>
#include <vector>

#include "editor/access_list_page.h"
#include "history/change_session.h"
#include "shares/share_security.h"

namespace permora {

// Nothing is inherited by a share, so the two boxes are never enabled.
class CSharePage1 : public AccessListPage {
  public:
    CSharePage1();

    // Set before the sheet is shown: the shares, one at least.
    std::vector<std::string> names;
    ChangeSession* changes = nullptr;  // borrowed while the sheet runs

    // Shows what Apply would do.
    void Preview();

  protected:
    bool ReadItem() override;
    bool OnApply() override;
    AccessEntryList& EditedList() override { return share.entries; }
    std::string EmptyListText() const override;

  private:
    bool ReadShare();
    Outcome WriteAsking(PACL dacl, ChangeRecorder& recorder);

    ShareSecurity share;
};

}  // namespace permora
