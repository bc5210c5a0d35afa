// Push buttons, boxes, radio buttons and buttons with pictures.
#pragma once

#include <memory>
#include <vector>

#include "framework/win32/window.h"

namespace permora::win32 {

// True for push buttons, whether or not they are shown as the default.
bool IsPushButton(HWND window);

class ButtonWindow final : public SystemWindow<NativeButton> {
  public:
    using Group = std::vector<ButtonWindow*>;  // radio buttons that exclude each other

    ButtonWindow(CWnd& window, CWnd& parent, const ControlSpec& spec);

    CheckState Check() const override;
    void SetCheck(CheckState state) override;
    void Click() override;
    void SetPictures(const CIcon& normal, const CIcon& pressed, const CIcon& focused,
                     const CIcon& disabled) override;
    void StyleChanged(DWORD before) override;
    Size PreferredSize() const override;
    void SetToolTip(const std::string& text) override;
    KeyUse OnDialogKey(UINT virtualKey) override;

    bool IsTemplatesDefault() const { return (style & BS_TYPEMASK) == BS_DEFPUSHBUTTON; }
    void Join(std::shared_ptr<const Group> joined) { group = std::move(joined); }
    // Whether the keyboard enters a group of radio buttons here: at the checked one, else the first that
    // takes input. True for all other buttons.
    bool IsEntryOfGroup() const;
    void SetLabel(HWND text) { label = text; }  // shows the same tip

  protected:
    LRESULT OnMessage(const Message& message) override;
    std::optional<LRESULT> OnReflected(const Message& message) override;

  private:
    struct Pictures {
        CIcon normal;
        CIcon pressed;
        CIcon focused;
        CIcon disabled;
    };

    void OnClicked();
    void GoInGroup(int direction);
    void DrawPicture(const DRAWITEMSTRUCT& drawing) const;

    const ControlKind kind;
    Pictures pictures;
    std::shared_ptr<const Group> group;
    HWND label = nullptr;
    bool isGettingFocus = false;
};

}  // namespace permora::win32
