// The rules of sheets and wizards: which pages exist, what they are asked, and what the buttons do.
#include "framework/property_sheet.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>
#include <QTimer>
#include <thread>

#include "framework/styles.h"
#include "platform/api/messages.h"
#include "resources/resource_ids.h"

namespace permora {
namespace {

using ::testing::ElementsAre;

constexpr unsigned int kApply = 0x3021;
constexpr unsigned int kBack = 0x3023;
constexpr unsigned int kNext = 0x3024;
constexpr unsigned int kFinish = 0x3025;

using Calls = std::vector<std::string>;

class TestPage : public CPropertyPage {
  public:
    TestPage(std::string pageName, unsigned int templateNumber, Calls& log)
        : CPropertyPage(templateNumber), name(std::move(pageName)), calls(log) {}
    bool acceptsActive = true;
    bool acceptsKill = true;
    bool acceptsApply = true;
    std::function<void()> onInit;

  protected:
    bool OnInitDialog() override {
        calls.push_back(name + " init");
        if (onInit) onInit();
        return CPropertyPage::OnInitDialog();
    }
    bool OnSetActive() override { return Note("active", acceptsActive); }
    bool OnKillActive() override { return Note("kill", acceptsKill); }
    bool OnApply() override { return Note("apply", acceptsApply); }
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

class Sheet : public CPropertySheet {
  public:
    std::function<void()> whenShown;

    void Click(unsigned int id) {
        auto* button =
            QApplication::activeModalWidget()->findChild<QWidget*>(QStringLiteral("control %1").arg(id));
        ASSERT_NE(button, nullptr);
        QTest::mouseClick(button, Qt::LeftButton);
    }
    void Press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(QApplication::activeModalWidget(), key, modifiers);
    }
    bool Enabled(unsigned int id) const { return GetDlgItem(id)->IsWindowEnabled(); }

    int RunWith(std::function<void()> script) {
        whenShown = std::move(script);
        QTimer::singleShot(0, [this] {
            EXPECT_TRUE(QTest::qWaitForWindowActive(QApplication::activeModalWidget()));
            whenShown();
            if (HasWindow()) Press(Qt::Key_Escape);
        });
        return DoModal();
    }
};

class SheetTest : public ::testing::Test {
  protected:
    void SetUp() override {
        sheet.Construct("Security Editor", nullptr);
        sheet.AddPage(first);
        sheet.AddPage(second);
    }
    Calls Taken() { return std::exchange(calls, {}); }

    Calls calls;
    TestPage first{"1", IDD_OWNER_PAGE, calls};
    TestPage second{"2", IDD_EFFECTIVE_PERMISSIONS_PAGE, calls};
    Sheet sheet;
};

TEST_F(SheetTest, OkAsksOnlyPagesThatWereShown) {
    EXPECT_EQ(sheet.RunWith([&] { sheet.Press(Qt::Key_Return); }), IDOK);
    EXPECT_THAT(Taken(), ElementsAre("1 init", "1 active", "1 kill", "1 apply"));
}

TEST_F(SheetTest, PagesAreMadeAnewInEveryRun) {
    for (int run = 0; run < 2; ++run) {
        EXPECT_EQ(sheet.RunWith([&] {
            sheet.Press(Qt::Key_PageDown, Qt::ControlModifier);
            EXPECT_EQ(sheet.GetActivePage(), &second);
            sheet.Press(Qt::Key_Escape);
        }),
                  IDCANCEL);
        EXPECT_THAT(Taken(), ElementsAre("1 init", "1 active", "1 kill", "2 init", "2 active", "1 cancel",
                                         "2 cancel"));
    }
}

TEST_F(SheetTest, ApplyFollowsModifiedPagesAndKeepsTheSheetOpen) {
    sheet.RunWith([&] {
        EXPECT_FALSE(sheet.Enabled(kApply));
        first.SetModified(true);
        EXPECT_TRUE(sheet.Enabled(kApply));
        Taken();
        sheet.Click(kApply);
        EXPECT_THAT(Taken(), ElementsAre("1 kill", "1 apply"));
        EXPECT_FALSE(sheet.Enabled(kApply));
        EXPECT_TRUE(sheet.HasWindow());
    });
}

TEST_F(SheetTest, ARefusingPageComesToTheFrontAndKeepsTheSheetOpen) {
    sheet.RunWith([&] {
        ASSERT_TRUE(sheet.SetActivePage(1));
        first.acceptsApply = false;
        first.SetModified(true);
        Taken();
        sheet.Click(IDOK);
        EXPECT_THAT(Taken(), ElementsAre("2 kill", "1 apply", "1 active"));
        EXPECT_EQ(sheet.GetActivePage(), &first);
        EXPECT_TRUE(first.IsWindowVisible());
        EXPECT_FALSE(second.IsWindowVisible());
        EXPECT_TRUE(sheet.Enabled(kApply));
    });
}

TEST_F(SheetTest, APageThatIsNotDoneStays) {
    sheet.RunWith([&] {
        first.acceptsKill = false;
        EXPECT_FALSE(sheet.SetActivePage(1));
        sheet.Click(IDOK);
        EXPECT_EQ(sheet.GetActivePage(), &first);
    });
}

TEST_F(SheetTest, APageThatRefusesToBeActiveIsPassedOver) {
    first.acceptsActive = false;
    sheet.RunWith([&] { EXPECT_EQ(sheet.GetActivePage(), &second); });
}

TEST_F(SheetTest, RemovingTheActivePageShowsItsNeighbour) {
    sheet.RunWith([&] {
        ASSERT_TRUE(sheet.SetActivePage(1));
        sheet.RemovePage(1);
        EXPECT_EQ(sheet.GetActivePage(), &first);
        EXPECT_FALSE(second.HasWindow());
        sheet.RemovePage(5);
        EXPECT_EQ(sheet.GetPageCount(), 1);
    });
}

TEST_F(SheetTest, AWizardGoesThroughPagesThatItsFirstOneChooses) {
    TestPage other("3", IDD_SETTINGS, calls);
    sheet.SetWizardMode();
    first.onInit = [&] {
        sheet.RemovePage(1);
        sheet.AddPage(other);
        sheet.SetWizardButtons(WizardButtons::kNext);
    };
    EXPECT_EQ(sheet.RunWith([&] {
        EXPECT_FALSE(sheet.Enabled(kBack));
        EXPECT_FALSE(sheet.Enabled(kFinish));
        sheet.Click(kNext);
        EXPECT_EQ(sheet.GetActivePage(), &other);
        std::thread([&] { sheet.SetWizardButtons(WizardButtons::kBack | WizardButtons::kFinish); }).join();
        QCoreApplication::processEvents();
        EXPECT_TRUE(sheet.Enabled(kBack));
        EXPECT_TRUE(sheet.GetDlgItem(kFinish)->IsWindowVisible());
        EXPECT_FALSE(sheet.GetDlgItem(kNext)->IsWindowVisible());
        Taken();
        sheet.Press(Qt::Key_Return);
    }),
              static_cast<int>(kFinish));
    EXPECT_THAT(Taken(), ElementsAre("3 finish"));
}

TEST_F(SheetTest, TheWholeTitleIsTheSheetsOwn) {
    sheet.SetTitle("Security Editor - [*]");
    sheet.RunWith([&] {
        EXPECT_EQ(sheet.GetWindowText(), "Security Editor - [*]");
        EXPECT_EQ(QApplication::activeModalWidget()->windowTitle(),
                  QStringLiteral("Security Editor - [*][*]"));
    });
}

}  // namespace
}  // namespace permora
