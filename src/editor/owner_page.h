// CPage3: shows the owner of the first selected item, and gives all items another one.
#pragma once

#include <optional>
#include <vector>

#include "framework/list_ctrl.h"
#include "framework/property_sheet.h"
#include "framework/styles.h"
#include "history/change_session.h"
#include "security/account_news.h"
#include "security/object_security.h"

namespace permora {

class CPage3 : public CPropertyPage {
  public:
    CPage3();

    // Set before the sheet is shown, and borrowed while it runs; one item at least.
    const RememberedPlace* place = nullptr;
    ChangeSession* changes = nullptr;

    bool IsInFront() const { return HasWindow() && (GetStyle() & WS_VISIBLE) != 0; }
    // Shows what Apply would do.
    void Preview();

  protected:
    bool OnInitDialog() override;
    void OnDestroy() override;
    bool OnApply() override;
    const MessageMap& GetMessageMap() const override;

  private:
    void OnCandidateClicked();
    void OnCandidateSelected(Notification& notification);

    void OnOtherAccount();

    void Fill();
    void OfferChanges(bool isAnyoneAllowed);
    // The account's row; one that is not yet among the candidates joins them.
    int AddCandidate(const AccountRecord& account);
    void ShowOwner();
    // Shows names that have become known.
    void RenderNames();
    // Who was chosen since the last apply; nothing: nobody.
    std::optional<AccountRecord> ChosenOwner() const;
    // False: the change was not made as a whole.
    bool Apply(PSID newOwner);

    CListCtrl& CandidateList() const;
    CEdit& OwnerField() const;
    CButton& TreeBox() const;

    std::vector<AccountRecord> candidates;  // in the order of the rows
    std::vector<AccountRecord> others;      // chosen by the user since the sheet was opened
    AccountRecord owner;                    // as last read
    bool changed = false;                   // the list was clicked since the last apply
    AccountNewsWatch news;
};

}  // namespace permora
