// What every back end's property sheets and wizards do. Nothing here knows a toolkit.
#include "framework/property_sheet.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

#include "platform/api/messages.h"
#include "tests/framework/test_resource_ids.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

using test::SheetButton;
using test::UiDriver;
using test::WindowDriver;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Calls = std::vector<std::string>;

class TestPage : public CPropertyPage {
  public:
    TestPage(std::string pageName, Calls& log, unsigned int templateNumber, unsigned int captionNumber = 0)
        : CPropertyPage(templateNumber, captionNumber), name(std::move(pageName)), calls(log) {}
    bool acceptsActive = true;
    bool acceptsKill = true;
    bool acceptsApply = true;
    bool acceptsCancel = true;
    std::function<void()> onInit;

  protected:
    bool OnInitDialog() override {
        calls.push_back(name + " init");
        if (onInit) onInit();
        return CPropertyPage::OnInitDialog();
    }
    bool OnSetActive() override { return Note("active", acceptsActive); }
    bool OnKillActive() override { return Note("kill", acceptsKill); }
    bool OnApply() override { return Note("apply", acceptsApply) && CPropertyPage::OnApply(); }
    bool OnQueryCancel() override { return acceptsCancel; }
    void OnCancel() override { Note("cancel", true); }
    bool OnWizardFinish() override { return Note("finish", true); }

  private:
    bool Note(const char* what, bool answer) {
        calls.push_back(name + " " + what);
        return answer;
    }
    std::string name;
    Calls& calls;
};

class SheetContract : public ::testing::Test {
  protected:
    void SetUp() override {
        sheet.Construct("Security Editor", nullptr);
        sheet.AddPage(first);
        sheet.AddPage(second);
    }
    // Shows the sheet to `script`, and cancels it when the script has not ended it.
    int Run(const UiDriver::Script& script) {
        ui.ExpectSheet("Security Editor", [&](WindowDriver& window) {
            calls.clear();
            script(window);
            if (!window.IsOpen()) return;
            window.Press("Esc");
        });
        return sheet.DoModal();
    }
    Calls Taken() { return std::exchange(calls, {}); }

    Calls calls;
    TestPage first{"1", calls, IDD_FIRST_PAGE};
    TestPage second{"2", calls, IDD_SECOND_PAGE};
    TestPage third{"3", calls, IDD_THIRD_PAGE, IDS_THIRD_TAB};
    CPropertySheet sheet;
    UiDriver ui;
};

TEST_F(SheetContract, PagesAreMadeWhenFirstShownAndAnewInEveryRun) {
    sheet.AddPage(third);
    for (int run = 0; run < 2; ++run) {
        EXPECT_EQ(Run([&](WindowDriver& window) {
                      EXPECT_THAT(window.Tabs(), ElementsAre("First", "Second", "Third"));
                      EXPECT_EQ(window.Text(IDC_FIRST_EDIT), "");
                      window.Type(IDC_FIRST_EDIT, "from the last run");
                      EXPECT_FALSE(second.HasWindow());
                      window.SwitchToTab("Second");
                      EXPECT_EQ(window.ActiveTab(), "Second");
                      EXPECT_FALSE(window.IsVisible(IDC_FIRST_EDIT));
                      EXPECT_TRUE(window.IsVisible(IDC_SECOND_EDIT));
                      EXPECT_FALSE(third.HasWindow());
                      window.Click(SheetButton::kCancel);
                  }),
                  IDCANCEL);
        EXPECT_THAT(Taken(), ElementsAre("1 kill", "2 init", "2 active", "1 cancel", "2 cancel"));
    }
}

TEST_F(SheetContract, TheKeyboardGoesThroughPages) {
    Run([&](WindowDriver& window) {
        EXPECT_EQ(window.FocusedControl(), unsigned{IDC_FIRST_EDIT});
        window.Press("Ctrl+PgDown");
        EXPECT_EQ(window.ActiveTab(), "Second");
        EXPECT_EQ(window.FocusedControl(), unsigned{IDC_SECOND_EDIT});
        window.Press("Ctrl+Tab");
        EXPECT_EQ(window.ActiveTab(), "First");
        window.Press("Ctrl+Shift+Tab");
        EXPECT_EQ(window.ActiveTab(), "Second");
        EXPECT_THAT(window.TabThrough(),
                    ::testing::IsSupersetOf({unsigned{IDC_SECOND_EDIT}, unsigned{IDOK}, unsigned{IDCANCEL}}));
        EXPECT_THAT(window.TabThrough(), ::testing::Not(::testing::Contains(unsigned{IDC_FIRST_EDIT})));
    });
}

TEST_F(SheetContract, OkAsksOnlyPagesThatWereShown) {
    EXPECT_EQ(Run([](WindowDriver& window) { window.Press("Return"); }), IDOK);
    EXPECT_THAT(Taken(), ElementsAre("1 kill", "1 apply"));
}

TEST_F(SheetContract, APageMayPutCancellingOff) {
    EXPECT_EQ(Run([&](WindowDriver& window) {
                  second.acceptsCancel = false;
                  window.SwitchToTab("Second");
                  Taken();
                  window.Press("Esc");
                  EXPECT_TRUE(window.IsOpen());
                  EXPECT_THAT(Taken(), IsEmpty()) << "nobody hears of it";
                  second.acceptsCancel = true;
                  sheet.Cancel();
              }),
              IDCANCEL);
    EXPECT_THAT(Taken(), ElementsAre("1 cancel", "2 cancel"));
}

TEST_F(SheetContract, ApplyFollowsModifiedPagesAndKeepsTheSheetOpen) {
    Run([&](WindowDriver& window) {
        EXPECT_FALSE(window.IsEnabled(SheetButton::kApply));
        first.SetModified(true);
        EXPECT_TRUE(window.IsEnabled(SheetButton::kApply));
        first.SetModified(false);
        EXPECT_FALSE(window.IsEnabled(SheetButton::kApply));
        first.SetModified(true);
        window.Click(SheetButton::kApply);
        EXPECT_THAT(Taken(), ElementsAre("1 kill", "1 apply"));
        EXPECT_FALSE(window.IsEnabled(SheetButton::kApply));
        EXPECT_TRUE(sheet.HasWindow());
    });
}

TEST_F(SheetContract, ARefusingPageComesToTheFrontAndKeepsTheSheetOpen) {
    Run([&](WindowDriver& window) {
        window.SwitchToTab("Second");
        first.acceptsApply = false;
        first.SetModified(true);
        Taken();
        window.Click(SheetButton::kOk);
        EXPECT_THAT(Taken(), ElementsAre("2 kill", "1 apply", "1 active"));
        EXPECT_EQ(window.ActiveTab(), "First");
        EXPECT_TRUE(window.IsVisible(IDC_FIRST_EDIT));
        EXPECT_FALSE(window.IsVisible(IDC_SECOND_EDIT));
        EXPECT_TRUE(window.IsEnabled(SheetButton::kApply));
    });
}

TEST_F(SheetContract, APageThatIsNotDoneStays) {
    Run([&](WindowDriver& window) {
        first.acceptsKill = false;
        window.SwitchToTab("Second");
        EXPECT_EQ(window.ActiveTab(), "First");
        window.Click(SheetButton::kOk);
        EXPECT_THAT(Taken(), ElementsAre("1 kill", "1 kill"));
    });
}

TEST_F(SheetContract, APageThatRefusesToBeActiveIsPassedOver) {
    first.acceptsActive = false;
    Run([](WindowDriver& window) { EXPECT_EQ(window.ActiveTab(), "Second"); });
}

TEST_F(SheetContract, TheWholeTitleIsTheSheetsOwn) {
    sheet.SetTitle("Security Editor - [*] & more");
    ui.ExpectSheet("Security Editor - [*] & more", [&](WindowDriver& window) {
        EXPECT_EQ(sheet.GetWindowText(), "Security Editor - [*] & more");
        window.Press("Esc");
    });
    EXPECT_EQ(sheet.DoModal(), IDCANCEL);
}

TEST_F(SheetContract, AWizardGoesThroughPagesThatItsFirstOneChooses) {
    sheet.SetWizardMode();
    first.onInit = [&] {
        sheet.RemovePage(1);
        sheet.AddPage(third);
        sheet.SetWizardButtons(WizardButtons::kNext);
    };
    EXPECT_EQ(Run([&](WindowDriver& window) {
                  EXPECT_FALSE(window.IsEnabled(SheetButton::kBack));
                  EXPECT_FALSE(window.IsVisible(SheetButton::kFinish));
                  window.Press("Return");
                  EXPECT_TRUE(window.IsVisible(IDC_THIRD_EDIT));
                  sheet.SetWizardButtons(WizardButtons::kBack | WizardButtons::kDisabledFinish);
                  EXPECT_FALSE(window.IsEnabled(SheetButton::kFinish));
                  sheet.SetWizardButtons(WizardButtons::kBack | WizardButtons::kFinish);
                  EXPECT_TRUE(window.IsVisible(SheetButton::kFinish));
                  EXPECT_FALSE(window.IsVisible(SheetButton::kNext));
                  window.Click(SheetButton::kBack);
                  EXPECT_TRUE(window.IsVisible(IDC_FIRST_EDIT));
                  sheet.SetWizardButtons(WizardButtons::kNext | WizardButtons::kFinish);
                  Taken();
                  window.Press("Return");
              }),
              static_cast<int>(SheetButton::kFinish));
    EXPECT_THAT(Taken(), ElementsAre("1 finish"));
    // What this run asked for last does not reach the next.
    Run([](WindowDriver& window) {
        EXPECT_TRUE(window.IsEnabled(SheetButton::kNext));
        EXPECT_FALSE(window.IsVisible(SheetButton::kFinish));
    });
}

}  // namespace
}  // namespace permora
