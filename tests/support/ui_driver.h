// Runs the program's windows in tests, without a display.
//
// A test declares the modal windows that come next, in their order, with what the user does in each, and then
// calls the code that opens them:
//
//     UiDriver ui;
//     ui.ExpectDialog(IDD_RENAME, [&](WindowDriver& dialog) {
//         ui.ExpectMessageBox("The name is taken", "Permora Error", MB_OK | MB_ICONERROR, IDOK);
//         dialog.SetText(IDC_NEW_NAME, "taken");
//         dialog.Click(IDOK);
//         dialog.Press("Esc");
//     });
//     EXPECT_EQ(RenameDialog().DoModal(), IDCANCEL);
//
// A window that was not declared fails the test at once and is closed in the way that changes least; one that
// was declared and did not come fails it at the end. A window that stays open after its script fails the test
// as well. Windows that workers open count like all others. Only the window of a file operation that takes
// long need not be declared.
#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <string>

#include "platform/api/messages.h"
#include "tests/support/window_driver.h"

namespace permora::test {

using TextMatcher = ::testing::Matcher<const std::string&>;

// At most one at a time, on the user-interface thread.
class UiDriver {
  public:
    // Runs once the window takes input. What it declares comes before what was declared earlier. Without a
    // script the window must end by itself.
    using Script = std::function<void(WindowDriver&)>;

    UiDriver();
    ~UiDriver();
    UiDriver(const UiDriver&) = delete;
    UiDriver& operator=(const UiDriver&) = delete;

    void ExpectDialog(unsigned int templateId, Script script = nullptr);
    void ExpectSheet(const TextMatcher& title, Script script = nullptr);
    // `type` are the MB_ buttons and icon, `answer` the id of the button that the user chooses.
    void ExpectMessageBox(const TextMatcher& text, const TextMatcher& caption, UINT type, int answer);
    void ExpectMessageBox(const TextMatcher& text, const TextMatcher& caption, UINT type, Script script);
    // The program's own boxes with nothing but OK.
    void ExpectError(const TextMatcher& text);
    void ExpectInformation(const TextMatcher& text);
    // A menu that pops up by itself, not from a menu bar; the user chooses `command`, 0: nothing.
    void ExpectMenu(unsigned int command);
    // The same; `script` looks at the menu, and nothing is chosen.
    void ExpectMenu(Script script);

    // The window that is open and not modal: the program's frame. Fails the test when there is not exactly
    // one.
    static WindowDriver MainWindow();
    // The one of that title, of several.
    static WindowDriver WindowTitled(const TextMatcher& title);

  private:
    struct State;
    std::shared_ptr<State> state;
};

}  // namespace permora::test
