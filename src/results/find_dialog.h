// CFindDlg: for which entries or owners, and where, a search is to look.
#pragma once

#include <functional>
#include <string>

#include "framework/dialog.h"
#include "framework/list_ctrl.h"
#include "results/find_choice.h"
#include "results/searched_place.h"

namespace permora {

class CFindDlg : public CDialog {
  public:
    explicit CFindDlg(CWnd* ownerWindow);

    // Where it can look, for people; empty: there is none. At least one is not. The selection is offered
    // first.
    std::string folder;
    std::string selection;
    // On which server that is, for the names of accounts (LookupAccountByName). Null: on none.
    std::function<std::string(SearchedPlace place)> serverOf;

    // After IDOK.
    SearchedPlace place = SearchedPlace::kFolder;
    FindRequest request;

  protected:
    bool OnInitDialog() override;
    void OnOK() override;  // stays open when the account cannot be looked up
    const MessageMap& GetMessageMap() const override;

  private:
    void OnBrowse();
    void EnableFields();
    FindChoice Choice() const;
    std::string Server() const;
    std::uint32_t CheckedRights() const;
    bool IsChecked(unsigned int id) const;
    CListCtrl& Rights() const;
};

}  // namespace permora
