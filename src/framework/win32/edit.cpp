// Edit fields and combo boxes.
#include <string_view>

#include "framework/keyboard.h"
#include "framework/styles.h"
#include "framework/win32/controls.h"
#include "framework/win32/window.h"

namespace permora::win32 {
namespace {

// What the dialog manager makes of a template's border.
DWORD EdgeFor(DWORD style) {
    return (style & WS_BORDER) != 0 ? WS_EX_CLIENTEDGE : 0;
}

class EditWindow final : public SystemWindow<NativeEdit> {
  public:
    EditWindow(CWnd& window, CWnd& parent, const ControlSpec& spec) : SystemWindow(window, spec.rect) {
        Adopt(MakeChild(parent,
                        {.className = L"Edit",
                         .style = (spec.style & ~DWORD{WS_BORDER}) | ES_AUTOHSCROLL,
                         .extendedStyle = EdgeFor(spec.style),
                         .rect = spec.rect},
                        spec.id, spec.text));
    }
    void SetText(const std::string& text) override {
        if (text != Text()) SystemWindow::SetText(text);
    }
    void StyleChanged(DWORD /*before*/) override {
        SendMessageW(Own(), EM_SETREADONLY, (style & ES_READONLY) != 0 ? TRUE : FALSE, 0);
    }
    void SelectAll() override { SendMessageW(Own(), EM_SETSEL, 0, -1); }
    void SelectStart(const std::string& start) override {
        SendMessageW(Own(), EM_SETSEL, 0, static_cast<LPARAM>(Wide(start).size()));
    }
    // Not every Windows has this key in its edit fields.
    KeyUse OnDialogKey(UINT virtualKey) override {
        if (virtualKey != 'A' || !IsControlKeyDown()) return KeyUse::kDialog;
        SelectAll();
        return KeyUse::kTaken;
    }

    bool KeepsKey(UINT virtualKey) const override {
        constexpr std::wstring_view kEditingLetters = L"ACVXZ";
        const bool isLetter =
            virtualKey < L'\x80' &&
            kEditingLetters.find(static_cast<wchar_t>(virtualKey)) != std::wstring_view::npos;
        if (isLetter) return IsControlKeyDown() && GetKeyState(VK_MENU) >= 0;
        return virtualKey == VK_DELETE || virtualKey == VK_INSERT || virtualKey == VK_BACK ||
               (virtualKey >= VK_END && virtualKey <= VK_DOWN);
    }

  protected:
    std::optional<LRESULT> OnReflected(const Message& message) override {
        if (message.code != WM_COMMAND || HIWORD(message.wide) != EN_CHANGE) return std::nullopt;
        ReportNotification(Notify::kTextChanged);
        return 0;
    }
};

class ComboBoxWindow final : public SystemWindow<NativeComboBox> {
  public:
    ComboBoxWindow(CWnd& window, CWnd& parent, const ControlSpec& spec) : SystemWindow(window, spec.rect) {
        Adopt(MakeChild(parent, {.className = L"ComboBox", .style = spec.style, .rect = spec.rect}, spec.id,
                        {}));
    }
    void SetText(const std::string& text) override {
        const std::wstring item = Wide(text);
        Select(Ask(CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(item.c_str())));
    }
    int AddString(const std::string& text) override {
        return Ask(CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Wide(text).c_str()));
    }
    int Count() const override { return Ask(CB_GETCOUNT); }
    int Selection() const override { return Ask(CB_GETCURSEL); }
    void Select(int index) override { Ask(CB_SETCURSEL, static_cast<WPARAM>(index)); }
    Size PreferredSize() const override {
        RECT closed{};
        ::GetWindowRect(Own(), &closed);
        return {place.Width(), ToLogical(closed.bottom - closed.top, Dpi())};
    }
    // The list that has dropped down has the keyboard.
    KeyUse OnDialogKey(UINT /*virtualKey*/) override {
        return Ask(CB_GETDROPPEDSTATE) != 0 ? KeyUse::kControl : KeyUse::kDialog;
    }

  protected:
    int BelowTheWindow() const override { return kListHeight; }
    std::optional<LRESULT> OnReflected(const Message& message) override {
        if (message.code != WM_COMMAND || HIWORD(message.wide) != CBN_SELCHANGE) return std::nullopt;
        ReportNotification(Notify::kSelectionChanged);
        return 0;
    }

  private:
    static constexpr int kListHeight = 200;  // of the list that drops down

    int Ask(UINT question, WPARAM wide = 0, LPARAM wider = 0) const {
        return static_cast<int>(SendMessageW(Own(), question, wide, wider));
    }
};

}  // namespace

std::unique_ptr<NativeWindow> MakeEdit(CWnd& window, CWnd& parent, const ControlSpec& spec) {
    return std::make_unique<EditWindow>(window, parent, spec);
}

std::unique_ptr<NativeWindow> MakeComboBox(CWnd& window, CWnd& parent, const ControlSpec& spec) {
    return std::make_unique<ComboBoxWindow>(window, parent, spec);
}

}  // namespace permora::win32
