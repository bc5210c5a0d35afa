// CHistoryDlg: the changes that were made, their objects, and what was there before and after; takes changes
// back.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "framework/dialog.h"
#include "framework/list_ctrl.h"
#include "history/history_view.h"
#include "security/account_news.h"

namespace permora {

class CHistoryDlg : public CDialog {
  public:
    CHistoryDlg(const std::string& historyPath, CWnd* ownerWindow);

    // Called after a change was taken back, or a part of it: what windows show may be out of date.
    std::function<void()> undone;

  protected:
    bool OnInitDialog() override;
    void OnDestroy() override;
    const MessageMap& GetMessageMap() const override;

  private:
    void OnChangeSelected(Notification& notification);
    void OnObjectSelected(Notification& notification);
    void OnPageBefore();
    void OnPageAfter();
    void OnUndo();

    void ShowChanges();
    void ShowSelectedChange();
    void ShowSelectedObject();
    void ShowRowsOf(std::optional<std::size_t> object);
    CListCtrl& List(unsigned int id) const;

    std::string path;
    HistoryView view;
    bool isFilling = false;  // the lists change by the program's hand
    AccountNewsWatch news;
};

}  // namespace permora
