// The parts of a property sheet, for its own sources.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "framework/modal_window.h"
#include "framework/native.h"
#include "framework/property_sheet.h"
#include "framework/window_access.h"

namespace permora {

// The system's ids of the sheet's own controls.
inline constexpr unsigned int kSheetTabsId = 0x3020;
inline constexpr unsigned int kSheetApplyId = 0x3021;
inline constexpr unsigned int kWizardBackId = 0x3023;
inline constexpr unsigned int kWizardNextId = 0x3024;
inline constexpr unsigned int kWizardFinishId = 0x3025;
inline constexpr unsigned int kWizardLineId = 0x3026;

inline constexpr int kNoPage = -1;

struct CPropertySheet::State {
    explicit State(CPropertySheet& served) : sheet(served) {}

    CPropertySheet& sheet;
    std::string caption;
    bool hasOwnTitle = false;
    CWnd* owner = nullptr;
    bool isWizard = false;
    std::vector<CPropertyPage*> pages;
    struct Button {
        unsigned int id;
        std::string text;
    };
    std::vector<Button> ownButtons;

    // The run; null between runs.
    ModalWindow* modal = nullptr;
    CPropertyPage* active = nullptr;
    int result = 0;
    bool hasEnded = false;
    Rect pageArea;
    Size ownSize;  // before the user has changed it
    Size* keptSize = nullptr;

    int Count() const { return static_cast<int>(pages.size()); }
    int IndexOf(const CPropertyPage* page) const;
    CPropertyPage* PageAt(int index) const;

    // Making and placing (property_sheet_controls.cpp).
    std::string TabCaption(const CPropertyPage& page) const;
    void CreateControls();
    CWnd& AddControl(std::unique_ptr<CWnd> control, ControlKind kind, unsigned int id,
                     const std::string& text, DWORD style);
    void Layout();
    void PlaceControls(Size client);
    bool MayGrow() const;
    Size ClientSize() const { return {sheet.GetClientRect().right, sheet.GetClientRect().bottom}; }
    Size LargestPage() const;
    void PlaceButtons(const std::vector<unsigned int>& ids, Size client);
    void PlaceOwnButtons(Size client);
    bool CreatePage(CPropertyPage& page);
    void UpdateTabOrder();
    void UpdateApplyButton();
    void ShowWizardButtons(WizardButtons buttons);

    // Going from page to page. Shows the page at `index`, or the next in `direction` that accepts.
    bool Activate(int index, int direction);
    bool SwitchTo(int index, int direction);
    void OnTabChosen();
    bool OnNextPage(int direction);

    bool ApplyPages();
    void OnOkButton();
    void OnCancelButton();
    void OnWizardButton(unsigned int id);
    void End(int value);

    NativeTabs* Tabs() const {
        CWnd* tabs = sheet.GetDlgItem(kSheetTabsId);
        return tabs != nullptr ? WindowAccess::NativeAs<NativeTabs>(*tabs) : nullptr;
    }
};

}  // namespace permora
