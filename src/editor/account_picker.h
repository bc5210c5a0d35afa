// CDlgUsersAndGroups: the user types an account or chooses one of the machine's or its domain's.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "editor/domain_search.h"
#include "editor/found_accounts.h"
#include "framework/dialog.h"
#include "framework/list_ctrl.h"
#include "platform/remembered_object.h"
#include "security/account_record.h"
#include "security/account_search.h"

namespace permora {

class CDlgUsersAndGroups : public CDialog {
  public:
    explicit CDlgUsersAndGroups(CWnd* ownerWindow = nullptr);

    // The caller may preset an account, which the edit box then shows. After IDOK it is the chosen one; after
    // IDCANCEL it is unchanged.
    AccountRecord result;
    // For what is the account; nothing: for nothing on another server. One whose share is mounted is asked
    // for names that nobody here has.
    std::optional<RememberedObject> item;
    // The same for things on a server (LookupAccountByName) of which none is at hand.
    std::string server;

  protected:
    bool OnInitDialog() override;
    void OnDestroy() override;
    void OnOK() override;  // stays open when the edit box names no account
    const MessageMap& GetMessageMap() const override;

  private:
    void OnFind();
    void OnStop();
    void OnTextChanged();
    void OnColumnClick(Notification& notification);
    // Shows what the typed text finds among the accounts that are known.
    void ShowRows();
    // Searches the domain for more.
    void SearchDomain();
    void TakeAccounts(const std::vector<AccountRecord>& accounts);
    void ShowProgress();
    void EndSearch(const SearchOutcome& outcome);
    void ShowEnd(const SearchOutcome& outcome);
    enum class SearchState { kIdle, kRunning };
    void ShowSearch(SearchState state, const std::string& text);
    void SetName(const std::string& name);
    // Selects the account again after rows have come or moved.
    void SelectAgain(std::optional<std::size_t> account);
    void OnAccountClicked(Notification& notification);
    void OnAccountSelected(Notification& notification);

    // Each ends the program, after its box, when the control is missing.
    CListCtrl& FoundList() const;
    CEdit& NameField() const;

    std::vector<AccountRecord> local;    // the machine's accounts; none before the first search
    FoundAccounts found;                 // all that were found since "Find" was last pressed
    std::optional<std::string> covered;  // every account of the domain that has this text is among them
    std::string searched;                // in the domain, last
    std::string typed;                   // by the user; empty for a text that the dialog itself has put in
    bool isOwnText = false;              // while the dialog puts one in
    DomainSearch domain{*this,
                        [this](const auto& accounts) {
                            TakeAccounts(accounts);
                            ShowProgress();
                        },
                        [this](const auto& outcome) { EndSearch(outcome); }};
};

}  // namespace permora
