// CWizardPage3: gives accounts rights on all selected items, beginning with what the first one's list says.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>

#include "framework/list_ctrl.h"
#include "framework/property_sheet.h"
#include "platform/resources.h"
#include "wizard/account_rights.h"

namespace permora {

class CWizardPage3 : public CPropertyPage {
  public:
    // Ends the program, after the system's message, when "advapi32.dll" cannot be loaded.
    CWizardPage3();

    // Set before the sheet is shown; all is borrowed while it runs.
    const RememberedPlace* place = nullptr;  // one item at least
    // The setting by which the notice before several items is shown, and which the notice may clear; null: it
    // is not shown.
    std::uint8_t* showIntermediateInfo = nullptr;

  protected:
    bool OnInitDialog() override;
    bool OnSetActive() override;
    // Writes the list to every item. On false, nothing was written: there is no list, or the user first wants
    // to see what another program made of the first item.
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
    // Reads the first item, and lets the user finish when it has a list.
    void ShowItem();
    bool LoadAccounts();
    void SelectAccount(std::size_t index);
    // The page's boxes as the rights have them.
    void ShowBoxes();

    CListCtrl& List(unsigned int id) const;
    void Enable(std::initializer_list<unsigned int> ids, bool enable);

    UniqueLibrary library;  // where the list's functions are looked up
    AccountRights rights;   // of the first item, as changed since
    ReadParts shown;        // what they were read from
    bool isRead = false;    // the first item has a list, which has been read
    bool updatingChecks = false;
};

}  // namespace permora
