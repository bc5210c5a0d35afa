// CWizardPage3: gives accounts rights on all selected items, beginning with the first one's list.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>

#include "framework/list_ctrl.h"
#include "framework/property_sheet.h"
#include "history/change_session.h"
#include "platform/resources.h"
#include "security/account_news.h"
#include "wizard/account_rights.h"

namespace permora {

class CWizardPage3 : public CPropertyPage {
  public:
    // Ends the program, after the system's message, when "advapi32.dll" cannot be loaded.
    CWizardPage3();

    // Set before the sheet is shown; all is borrowed while it runs.
    const RememberedPlace* place = nullptr;  // one item at least
    ChangeSession* changes = nullptr;
    // The setting that shows the notice before several items, which the notice may clear; null: no notice.
    std::uint8_t* showIntermediateInfo = nullptr;

  protected:
    bool OnInitDialog() override;
    void OnDestroy() override;
    bool OnSetActive() override;
    // Writes the list to every item. On false, nothing was written: there is no list, or another program
    // changed the first item's and the user did not overwrite it. Or the change was not made as a whole, for
    // want of a history.
    bool OnWizardFinish() override;
    const MessageMap& GetMessageMap() const override;

  private:
    void OnAccountClicked();
    void OnAccountSelected(Notification& notification);
    void OnRightChanged();
    void OnCombinationClicked();
    void OnCombinationKey(Notification& notification);
    void OnAdd();
    void OnRemove();

    void SetUpList(unsigned int id, int width, ListStyle style);
    void ShowNotice();
    // Reads the first item; enables Finish when it has a list.
    void ShowItem();
    bool LoadAccounts();
    // Shows names that have become known.
    void RenderNames();
    void SelectAccount(std::size_t index);
    // Shows the rights of the selected account in the boxes.
    void ShowBoxes();

    CListCtrl& List(unsigned int id) const;
    void Enable(std::initializer_list<unsigned int> ids, bool enable);

    UniqueLibrary library;  // where the list's functions are looked up
    AccountRights rights;   // of the first item, as changed since
    ReadParts shown;        // what they were read from
    bool isRead = false;    // the first item has a list, which has been read
    bool updatingChecks = false;
    AccountNewsWatch news;
};

}  // namespace permora
