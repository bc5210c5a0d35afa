// Drives one window of the program as a user does: by mouse and keyboard, through the toolkit's own events.
//
// Controls are named by their template's ids. Where several pages of a sheet have the same id, the control
// that can be seen is meant. Asking for a control, row or text that is not there fails the test and answers
// with nothing.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "framework/geometry.h"
#include "platform/api/base.h"

namespace permora::test {

// The buttons of sheets and wizards that have no id of their own in a template.
enum class SheetButton : unsigned int {
    kOk = 1,
    kCancel = 2,
    kApply = 0x3021,
    kBack = 0x3023,
    kNext = 0x3024,
    kFinish = 0x3025,
};

// A menu entry as it is shown, with the mark of its mnemonic and its key.
struct MenuEntry {
    std::string text;
    bool isEnabled = false;
    bool isChecked = false;
};

class WindowDriver {
  public:
    // `handle` may be stale: everything then fails the test and does nothing.
    explicit WindowDriver(HWND handle) : window(handle) {}

    HWND Handle() const { return window; }
    bool IsOpen() const;
    std::string Title() const;
    // Title and all texts that can be seen, in one line.
    std::string Describe() const;

    // ---- Keyboard. Keys are spelled as "A", "Alt+P", "Shift+Tab", "Return", "Enter" (of the keypad), "Esc",
    // "Space", "Backspace", "Del", "Ins", "Home", "End", "PgUp", "PgDown", "Up", "Left", "F5", "Ctrl+PgDown",
    // "*" (of the keypad). ----

    void Press(const std::string& key);
    // The control with the focus; 0: none, or one without id.
    unsigned int FocusedControl() const;
    bool HasFocus(unsigned int id) const;
    // The button that is shown as the one that Enter presses; 0: none. Fails the test when there are several.
    unsigned int DefaultButton() const;
    // Whether the user sees that the control, which has it, has the focus.
    bool ShowsFocus(unsigned int id) const;
    // Presses Tab until the focus comes back to a control that had it, and answers which had it, in order.
    std::vector<unsigned int> TabThrough();

    // ---- All controls ----

    bool Has(unsigned int id) const;
    std::string Text(unsigned int id) const;
    bool IsEnabled(unsigned int id) const;
    bool IsVisible(unsigned int id) const;
    // Fails the test when the control cannot be clicked: hidden, disabled or covered by another.
    void Click(unsigned int id);
    // At a place of the window's client area.
    void ClickAt(Point client);
    void ClickCloseBox();

    // ---- Boxes and radio buttons, edit fields, combo boxes ----

    bool IsChecked(unsigned int id) const;
    void Type(unsigned int id, const std::string& text);     // after what the field holds
    void SetText(unsigned int id, const std::string& text);  // in place of what the field holds
    std::vector<std::string> ComboItems(unsigned int id) const;
    void SelectItem(unsigned int id, const std::string& text);

    // ---- List views. Rows and columns are counted from 0. ----

    // A text for each row, its columns joined by " | ".
    std::vector<std::string> Rows(unsigned int id) const;
    std::vector<std::string> Headers(unsigned int id) const;
    std::vector<int> SelectedRows(unsigned int id) const;
    bool IsRowChecked(unsigned int id, int row) const;
    // The row whose first column is `text`; -1 fails the test.
    int FindRow(unsigned int id, const std::string& text) const;
    static constexpr int kBesideRows = -1;  // stands for an empty place below all rows
    void SelectRow(unsigned int id, int row);
    void SelectRows(unsigned int id, const std::vector<int>& rows);
    void DoubleClickRow(unsigned int id, int row);
    void RightClickRow(unsigned int id, int row);
    void ToggleRowCheck(unsigned int id, int row);
    void ClickHeader(unsigned int id, int column);
    void RightClickHeader(unsigned int id, int column);

    // ---- Tree views. An item is named by its number (TreeItem). ----

    void ClickItem(unsigned int id, int item);
    void RightClickItem(unsigned int id, int item);

    // ---- Sheets ----

    std::vector<std::string> Tabs() const;
    std::string ActiveTab() const;
    void SwitchToTab(const std::string& caption);
    void Click(SheetButton button) { Click(static_cast<unsigned int>(button)); }
    bool IsEnabled(SheetButton button) const { return IsEnabled(static_cast<unsigned int>(button)); }
    bool IsVisible(SheetButton button) const { return IsVisible(static_cast<unsigned int>(button)); }

    // ---- Frames. Toolbar buttons are controls with the ids of their commands, checked while they are
    // pressed. ----

    // Chooses `command` from the menu bar.
    void ChooseMenu(unsigned int command);
    MenuEntry ReadMenu(unsigned int command);
    std::string StatusText(int pane) const;
    // Of this window as a menu that pops up by itself: the commands that cannot be chosen, from top to
    // bottom.
    std::vector<unsigned int> GreyedCommands() const;

    // Serves events until `condition` holds. False, and a failure of the test, when it does not in time.
    bool WaitUntil(const std::function<bool()>& condition) const;

  private:
    HWND window;
};

}  // namespace permora::test
