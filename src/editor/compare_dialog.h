// CCompareAccountsDlg: what several accounts may do with the selected objects, as a table that grows by the
// accounts that the user adds.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "framework/dialog.h"
#include "framework/list_ctrl.h"
#include "framework/list_order.h"
#include "security/account_news.h"
#include "security/distinct_names.h"
#include "security/rights_comparison.h"

namespace permora {

class CCompareAccountsDlg : public CDialog {
  public:
    // `compared` has the objects, and the accounts to begin with. Borrowed.
    CCompareAccountsDlg(RightsComparison& compared, CWnd* ownerWindow);

    // Half a sentence: why some objects count as not known. Set before the dialog is shown; empty: none do.
    std::string unread;

  protected:
    bool OnInitDialog() override;
    void OnDestroy() override;
    const MessageMap& GetMessageMap() const override;

  private:
    void OnAdd();
    void OnRemove();
    void OnCopy();
    void OnSelected();
    void OnColumnClick(Notification& notification);
    // Shows all rows anew, in their order, and selects the account at `selected` of the comparison.
    void ShowRows(std::size_t selected);
    void ShowRemarks();
    std::vector<std::string> TextsOf(RightsHolder& account, const DistinctNames& names) const;
    // The account of the selected row; the number of accounts when there is none.
    std::size_t Selected() const;
    CListCtrl& Table() const;

    RightsComparison& comparison;
    ListOrder order = {0, SortOrder::kUp};
    AccountNewsWatch news;
};

}  // namespace permora
