// CReportDlg: of what a report is made, and what it lists.
#pragma once

#include <functional>
#include <string>

#include "framework/dialog.h"
#include "framework/list_ctrl.h"
#include "results/report_choice.h"
#include "results/searched_place.h"

namespace permora {

class CReportDlg : public CDialog {
  public:
    explicit CReportDlg(CWnd* ownerWindow);

    // Where it can look, for people; empty: there is none. At least one is not. The selection is offered
    // first.
    std::string folder;
    std::string selection;
    // On which server that is, for the names of accounts (LookupAccountByName). Null: on none.
    std::function<std::string(SearchedPlace place)> serverOf;

    // After IDOK.
    SearchedPlace place = SearchedPlace::kFolder;
    ReportRequest request;

  protected:
    bool OnInitDialog() override;
    void OnOK() override;  // stays open when something that was typed is wrong
    const MessageMap& GetMessageMap() const override;

  private:
    void OnBrowse();
    ReportChoice Choice() const;
    std::string Server() const;
    CListCtrl& Remarks() const;
};

}  // namespace permora
