// CPage4: the rights that an account has by the first selected item's access list.
#pragma once

#include <string>

#include "framework/background_question.h"
#include "framework/list_ctrl.h"
#include "framework/property_sheet.h"
#include "platform/accounts.h"
#include "security/account_news.h"
#include "security/object_security.h"

namespace permora {

class CPage4 : public CPropertyPage {
  public:
    CPage4();

    // Set before the sheet is shown, and borrowed while it runs; one item at least, which is read.
    const RememberedPlace* place = nullptr;

  protected:
    bool OnInitDialog() override;
    void OnDestroy() override;
    const MessageMap& GetMessageMap() const override;

  private:
    struct Inquiry;

    void OnChangeAccount();
    void OnAskExactly();
    void OnExplain();
    void OnCompare();
    void StopAsking();
    // On false, nothing has changed, and a message box has been shown.
    bool ReadList(Inquiry& inquiry);
    bool ShowAnswer(Inquiry& inquiry);
    void ShowRemarks(const std::string& text);
    // For an account whose groups may be known better.
    void OfferExactGroups(GroupsOrigin origin);
    CButton& ExactButton() const;

    CListCtrl& RightsList() const;
    CListCtrl& NetworkList() const;
    CEdit& AccountField() const;

    AccountRecord account;                          // whose marks are shown
    GroupsRequest request = GroupsRequest::kUsual;  // by which they were found
    std::string remarks;                            // on them
    BackgroundQuestion exactly;                     // while it is asked, the button stops it
    AccountNewsWatch news;
};

}  // namespace permora
