// CResultsDlg: what became of the objects of a change, which can be copied and tried again.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>

#include "framework/dialog.h"
#include "framework/list_ctrl.h"
#include "framework/list_order.h"
#include "security/change_results.h"

namespace permora {

// Does a change again for these places, which have failed, and fills `results` with all of them. `window`
// owns whatever is shown. False: nothing was changed, or only in part.
using TryAgain =
    std::function<bool(CWnd& window, std::span<const ObjectPlace> places, ChangeResults& results)>;

// Shows what was not changed: a single object in a box that names it, several in the dialog; nothing when all
// is done. `tryAgain` may be null.
void ShowResults(CWnd* owner, ChangeResults results, const TryAgain& tryAgain);

class CResultsDlg : public CDialog, private ListTexts {
  public:
    CResultsDlg(CWnd* ownerWindow, ChangeResults shown, TryAgain work);

  protected:
    bool OnInitDialog() override;
    const MessageMap& GetMessageMap() const override;

  private:
    void OnTryAgain();
    void OnCopyAll();
    void OnColumnClick(Notification& notification);
    void OnKeyDown(Notification& notification);
    void OnRightClick(Notification& notification);

    void Show();
    void Sort();
    bool MayTryAgain() const;
    enum class CopiedRows { kSelected, kAll };
    void Copy(CopiedRows rows);
    CListCtrl& List() const;

    std::string Text(std::intptr_t data, int column) const override;

    ChangeResults results;
    TryAgain tryAgain;
    std::optional<ListOrder> sorting;  // nothing: failures first
};

}  // namespace permora
