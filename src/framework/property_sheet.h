// Property sheets and wizards.
#pragma once

#include <memory>
#include <string>

#include "framework/dialog.h"

namespace permora {

class CPropertySheet;

// One page. Its window is made when the sheet first shows it, and destroyed with the sheet's; the object
// stays.
class CPropertyPage : public CDialog {
  public:
    // `captionId`: string resource of the tab; 0 means the template's caption.
    explicit CPropertyPage(unsigned int templateId, unsigned int captionId = 0);

    // Marks the page changed or not; the sheet's Apply button follows.
    void SetModified(bool modified);
    CPropertySheet* Sheet() const { return sheet; }

  protected:
    friend class CPropertySheet;
    virtual bool OnSetActive() { return true; }   // false: the sheet goes on to the next page
    virtual bool OnKillActive() { return true; }  // false: the page stays
    virtual bool OnApply() { return true; }       // false keeps the sheet open
    void OnOK() override {}
    // False: the sheet stays. Called for all pages before OnCancel runs for any.
    virtual bool OnQueryCancel() { return true; }
    void OnCancel() override {}                     // the sheet is being cancelled
    virtual bool OnWizardFinish() { return true; }  // true: the wizard closes
    bool OnCmdMsg(Notification& notification) override;

  private:
    CPropertySheet* sheet = nullptr;
    unsigned int captionId;
    bool modified = false;
};

// PSWIZB_ flags, combinable.
enum class WizardButtons : unsigned int { kNone = 0, kBack = 1, kNext = 2, kFinish = 4, kDisabledFinish = 8 };
constexpr WizardButtons operator|(WizardButtons one, WizardButtons other) {
    return static_cast<WizardButtons>(static_cast<unsigned int>(one) | static_cast<unsigned int>(other));
}

// A modal sheet of pages, or a wizard. Pages are borrowed. OK and Apply first ask the active page
// (OnKillActive), then call OnApply of every page whose window exists, in order; the first that refuses stops
// it and stays in front.
class CPropertySheet : public CWnd {
  public:
    CPropertySheet();
    ~CPropertySheet() override;

    void Construct(const std::string& caption, CWnd* owner);
    void SetTitle(const std::string& title);  // the whole title
    void AddPage(CPropertyPage& page);        // also while the sheet runs
    void RemovePage(int index);
    // A further button at the lower left, whose clicks go to the message map. Before the sheet runs.
    void AddButton(unsigned int id, const std::string& text);
    void SetWizardMode();
    // The sheet starts at the size of the client area that `kept` holds, and leaves there the one that the
    // user has given it; empty: the sheet's own. Borrowed; outlives the sheet.
    void KeepSizeIn(Size& kept);
    // Which wizard buttons there are and can be pressed.
    void SetWizardButtons(WizardButtons buttons);
    // Does the same as the Cancel button, also while that is disabled.
    void Cancel();

    // Runs the sheet; the result is IDOK, IDCANCEL, or ID_WIZFINISH.
    int DoModal();

  protected:
    virtual bool OnInitDialog() { return true; }

    bool OnCmdMsg(Notification& notification) override;
    void OnSize(Size client) override;

  private:
    friend class CPropertyPage;
    struct State;
    std::unique_ptr<State> state;
};

}  // namespace permora
