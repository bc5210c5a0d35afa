// The list view: the system's virtual one, which asks the shared half for what it shows.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "framework/list_native.h"
#include "framework/list_selection.h"
#include "framework/styles.h"
#include "framework/win32/window.h"

namespace permora::win32 {

// The system's control has a selection of its own, by row. What the user does in it is carried to the rows
// (TakeSelection), what the program does from there to the control.
class ListViewWindow final : public SystemWindow<NativeListView>, public ListDisplay {
  public:
    ListViewWindow(CListCtrl& shown, CWnd& parent, const ControlSpec& spec);
    ~ListViewWindow() override;

    ListDisplay& Display() const override;
    void SetText(const std::string& text) override;  // the list does not show it
    void StyleChanged(DWORD before) override;
    void OnOtherResolution() override;
    KeyUse OnDialogKey(UINT virtualKey) override;

    void RowsChanged() override;
    void RowTextChanged(int row) override;
    void RowStateChanged(int row) override;
    void AppearanceChanged() override;
    void FocusRowChanged(int before) override;
    void EnsureVisible(int row) override;
    bool IsInView(int row) override;

    // Shows what has changed. It happens by itself before the next message is waited for.
    void ShowChanges();

  protected:
    LRESULT OnMessage(const Message& message) override;
    std::optional<LRESULT> OnReflected(const Message& message) override;

  private:
    static constexpr UINT kShowChanges = WM_APP + 1;

    LRESULT Ask(UINT question, WPARAM wide = 0, LPARAM wider = 0) const;
    void ShowLater();
    void ShowAppearance();
    void ShowColumns();
    void ShowImages();
    void FitColumns();
    int TextWidth(int column) const;
    void ShowRows();
    void SetState(int row, UINT state, UINT mask);

    void TakeSelection();
    void GiveItem(LVITEMW& item);
    LRESULT GiveEmptyText(NMLVEMPTYMARKUP& markup) const;
    LRESULT FindText(const NMLVFINDITEMW& search) const;
    LRESULT OnOwnNotification(const NMHDR& header, LPARAM details);
    LRESULT OnHeaderNotification(const NMHDR& header, LPARAM details);
    void ReportAt(Notify code, LPARAM details);
    LVHITTESTINFO HitAt(LPARAM position) const;
    void FocusFirstRow();
    LRESULT OnPress(const Message& message);

    CListCtrl& list;
    HIMAGELIST images = nullptr;
    bool hasOtherRows = false;
    bool hasOtherLooks = true;
    bool isShowing = false;    // the control's notifications are about what the program does
    int pressedRow = -1;       // was selected; unless the mouse is moved, its release selects it alone
    int pressedCheckBox = -1;  // until the button is released
    // The texts that the control has asked for last: it may use one until it has asked for two more.
    std::array<std::wstring, 3> given;
    std::size_t nextGiven = 0;
};

}  // namespace permora::win32
