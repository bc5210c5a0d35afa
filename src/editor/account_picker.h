// CDlgUsersAndGroups: the user types an account or chooses one of the machine's or its domain's.
#pragma once

#include <string>
#include <vector>

#include "editor/domain_search.h"
#include "framework/dialog.h"
#include "framework/list_ctrl.h"
#include "security/account_record.h"
#include "security/account_search.h"

namespace permora {

class CDlgUsersAndGroups : public CDialog {
  public:
    explicit CDlgUsersAndGroups(CWnd* ownerWindow = nullptr);

    // The caller may preset an account, which the edit box then shows. After IDOK it is the chosen one; after
    // IDCANCEL it is unchanged.
    AccountRecord result;

  protected:
    bool OnInitDialog() override;
    void OnDestroy() override;
    void OnOK() override;  // stays open when the edit box names no account
    const MessageMap& GetMessageMap() const override;

  private:
    void OnFind();
    void OnStop();
    void OnTextChanged();
    // Shows the accounts of this machine that the typed text finds, and begins to search the domain.
    void ShowFound();
    void AddRows(const std::vector<AccountRecord>& accounts);
    void ShowProgress();
    void ShowEnd(const SearchOutcome& outcome);
    enum class SearchState { kIdle, kRunning };
    void ShowSearch(SearchState state, const std::string& text);
    void SetName(const std::string& name);
    void OnAccountClicked(Notification& notification);
    void OnAccountSelected(Notification& notification);

    // Each ends the program, after its box, when the control is missing.
    CListCtrl& FoundAccounts() const;
    CEdit& NameField() const;

    std::vector<AccountRecord> local;  // the machine's accounts; none before the first search
    std::string typed;                 // by the user; empty for a text that the dialog itself has put in
    bool isOwnText = false;            // while the dialog puts one in
    DomainSearch domain{*this,
                        [this](const auto& accounts) {
                            AddRows(accounts);
                            ShowProgress();
                        },
                        [this](const auto& outcome) { ShowEnd(outcome); }};
};

}  // namespace permora
