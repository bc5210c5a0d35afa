// The wizard's assignment of permissions on real files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/host_path.h"
#include "resources/resource_ids.h"
#include "tests/support/access_lists.h"
#include "tests/support/command.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/places.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/ui_driver.h"
#include "wizard/account_rights.h"
#include "wizard/security_wizard.h"

namespace permora {
namespace {

using test::DaclText;
using test::SetDescriptorText;
using test::SheetButton;
using test::UiDriver;
using test::WindowDriver;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const char* kPageTitle = "Security Wizard";
constexpr int kReadCombination = 5;
constexpr int kDenyAllCombination = 1;

// The wizard on the items of a folder: "top" hands full control down to "top/first" and "top/second".
class WizardPermissionsPage : public ::testing::Test {
  protected:
    void SetUp() override {
        const DWORD error = SetDescriptorText(folder.MakeFolder("top"), "D:P(A;OICI;FA;;;BA)");
        if (error == ERROR_NOT_SUPPORTED) GTEST_SKIP() << "the temporary folder holds no access lists";
        ASSERT_EQ(error, ERROR_SUCCESS);
        Give(folder.MakeFolder("top/first"), "D:(D;;CC;;;BU)(A;;FR;;;BU)");
        Give(folder.MakeFile("top/second"), "D:P(A;;FA;;;WD)");
        Enter(folder.Path("top"));
    }

    static void Give(const std::string& path, const std::string& sddl) {
        ASSERT_EQ(SetDescriptorText(path, sddl), ERROR_SUCCESS) << path;
    }
    static void Enter(const std::string& path) {
        ASSERT_NE(SetCurrentDirectoryA(PathFromArgument(path.c_str()).c_str()), FALSE);
    }
    // The wizard on `names` at the permissions page; the script ends with a button of the sheet. `expect`
    // declares what comes before the page is there.
    void Assign(
        std::vector<std::string> names, const UiDriver::Script& script,
        const std::function<void()>& expect = [] {}) {
        const Place place = areDrives ? Place{PlaceKind::kDrives, nullptr, std::move(names)}
                                      : test::InCurrentFolder(std::move(names));
        ui.ExpectSheet(kPageTitle, [&](WindowDriver& window) {
            EXPECT_FALSE(window.IsEnabled(SheetButton::kBack));
            expect();
            window.Click(SheetButton::kNext);
            script(window);
        });
        RunSecurityWizard(nullptr, place, {.showIntermediateInfo = &showIntermediateInfo}, changes);
    }
    void Add(WindowDriver& window, const std::string& account) {
        ui.ExpectDialog(IDD_ACCOUNT_PICKER, [&](WindowDriver& picker) {
            picker.SetText(IDC_ACCOUNT_NAME, account);
            picker.Press("Return");
        });
        window.Click(IDC_WIZARD_ADD_ACCOUNT);
    }
    static std::string Marks(WindowDriver& window) {
        std::string marks;
        for (std::size_t right = 0; right < AccountRights::kRights; ++right)
            marks += window.IsRowChecked(IDC_WIZARD_RIGHTS, static_cast<int>(right)) ? '1' : '0';
        return marks;
    }

    const test::TemporaryFolder folder;
    bool areDrives = false;
    std::uint8_t showIntermediateInfo = 0;
    ChangeSession changes{History::UsualPath(), {}};
    UiDriver ui;
};

TEST_F(WizardPermissionsPage, AllItemsGetTheFirstOnesAccountsAsChanged) {
    showIntermediateInfo = 1;
    const auto expectNotice = [&] {
        ui.ExpectDialog(IDD_SELECTION_NOTICE, [](WindowDriver& notice) {
            EXPECT_THAT(notice.Text(IDC_NOTICE_TEXT),
                        HasSubstr("Security Wizard can display information only"));
            notice.Click(IDC_DO_NOT_SHOW_AGAIN);
            notice.Click(IDOK);
        });
    };
    Assign(
        {"first", "second"},
        [&](WindowDriver& window) {
            EXPECT_THAT(window.Rows(IDC_WIZARD_ACCOUNTS),
                        ElementsAre("BUILTIN\\Users", "BUILTIN\\Administrators"));
            EXPECT_EQ(window.Rows(IDC_WIZARD_RIGHTS)[5], "Create files / Write data");
            EXPECT_EQ(Marks(window), "00011000000100") << "reading, but for the right denied";
            EXPECT_TRUE(window.IsEnabled(IDC_WIZARD_REMOVE_ACCOUNT));
            window.ToggleRowCheck(IDC_WIZARD_RIGHTS, 10);

            window.SelectRow(IDC_WIZARD_ACCOUNTS, 1);
            EXPECT_EQ(Marks(window), "11111111111111");
            EXPECT_FALSE(window.IsEnabled(IDC_WIZARD_REMOVE_ACCOUNT)) << "what comes from above stays";
            window.ToggleRowCheck(IDC_WIZARD_RIGHTS, 13);
            window.ToggleRowCheck(IDC_WIZARD_RIGHTS, 12);
            EXPECT_EQ(Marks(window), "01111111111100");
            window.ToggleRowCheck(IDC_WIZARD_RIGHTS, 12);

            Add(window, "Guests");
            EXPECT_THAT(window.SelectedRows(IDC_WIZARD_ACCOUNTS), ElementsAre(2));
            EXPECT_EQ(window.FocusedControl(), unsigned{IDC_WIZARD_RIGHTS});
            window.SelectRow(IDC_COMBINATIONS, kReadCombination);
            EXPECT_EQ(Marks(window), "00111000000100");
            Add(window, "Users");  // is there already
            EXPECT_THAT(window.SelectedRows(IDC_WIZARD_ACCOUNTS), ElementsAre(0));
            EXPECT_EQ(window.Rows(IDC_WIZARD_ACCOUNTS).size(), 3U);

            window.Click(SheetButton::kBack);  // what was changed here is forgotten
            window.Click(SheetButton::kNext);
            EXPECT_EQ(window.Rows(IDC_WIZARD_ACCOUNTS).size(), 2U);
            Add(window, "Guests");
            window.SelectRow(IDC_COMBINATIONS, kReadCombination);
            window.SelectRow(IDC_WIZARD_ACCOUNTS, 1);
            window.ToggleRowCheck(IDC_WIZARD_RIGHTS, 13);
            window.Click(SheetButton::kFinish);
        },
        expectNotice);
    EXPECT_EQ(showIntermediateInfo, 0);
    EXPECT_EQ(DaclText(folder.Path("top/first")),
              "D:AI(D;OICI;CC;;;BU)(D;OICI;WO;;;BA)(A;OICI;FR;;;BU)(A;OICI;FR;;;BG)(A;OICIID;FA;;;BA)");
    EXPECT_EQ(DaclText(folder.Path("top/second")), "D:PAI(D;;CC;;;BU)(D;;WO;;;BA)(A;;FR;;;BU)(A;;FR;;;BG)");
}

TEST_F(WizardPermissionsPage, WhatWasShownIsChangedAndNothingElse) {
    const auto denyAll = [](WindowDriver& window) {
        window.SelectRow(IDC_WIZARD_ACCOUNTS, 0);
        window.SelectRow(IDC_COMBINATIONS, kDenyAllCombination);
    };
    const std::string second = DaclText(folder.Path("top/second"));
    Give(folder.Path("top/first"), "D:P(A;;FR;;;BU)");
    Assign({"first", "second"}, [&](WindowDriver& window) {
        denyAll(window);
        Give(folder.Path("top/first"), "D:P(A;;FR;;;BG)");
        ui.ExpectMessageBox(HasSubstr("\"first\" was changed by another program"), "Changed meanwhile",
                            MB_YESNO | MB_ICONQUESTION, IDNO);
        window.Click(SheetButton::kFinish);
        EXPECT_THAT(window.Rows(IDC_WIZARD_ACCOUNTS), ElementsAre("BUILTIN\\Guests"));
        denyAll(window);
        std::filesystem::rename(folder.Path("top/first"), folder.Path("top/moved"));
        Give(folder.MakeFile("top/first"), "D:P(A;;FA;;;BU)");
        ui.ExpectError("\"first\" is left alone: another object has this name since it was shown here.");
        window.Click(SheetButton::kFinish);
    });
    EXPECT_EQ(DaclText(folder.Path("top/first")), "D:PAI(A;;FA;;;BU)");
    EXPECT_EQ(DaclText(folder.Path("top/moved")), "D:PAI(A;;FR;;;BG)");
    EXPECT_NE(DaclText(folder.Path("top/second")), second);
}

TEST_F(WizardPermissionsPage, AccountsAreRemovedAndTheKeyboardDoesAll) {
    Give(folder.Path("top/first"), "D:P(A;;FR;;;BU)(A;OICI;FA;;;BG)");
    Assign({"first", "missing", "second"}, [&](WindowDriver& window) {
        EXPECT_EQ(window.FocusedControl(), unsigned{IDC_WIZARD_ACCOUNTS});
        window.Press("Down");
        EXPECT_EQ(Marks(window), "11111111111111");
        window.Press("Ctrl+Space");  // selects none
        EXPECT_EQ(Marks(window), "00000000000000");
        window.Click(IDC_WIZARD_REMOVE_ACCOUNT);
        EXPECT_EQ(window.Rows(IDC_WIZARD_ACCOUNTS).size(), 2U) << "none was selected";
        window.SelectRow(IDC_WIZARD_ACCOUNTS, 1);
        EXPECT_EQ(Marks(window), "11111111111111");
        for (const char* key : {"Tab", "Tab", "Tab"})
            window.Press(key);
        EXPECT_EQ(window.FocusedControl(), unsigned{IDC_COMBINATIONS});
        window.Press("Down");
        window.Press("Up");
        EXPECT_EQ(Marks(window), "11111111111111") << "going through them takes none";
        window.Press("End");
        window.Press("Space");
        EXPECT_EQ(Marks(window), "00000111100000");
        window.Press("Tab");
        window.Press("Home");
        window.Press("Space");
        EXPECT_EQ(Marks(window), "11111111111111");
        window.Press("Space");
        EXPECT_EQ(Marks(window), "01111111111111") << "full control alone takes nothing away";

        window.SelectRow(IDC_WIZARD_ACCOUNTS, 0);
        window.SelectRow(IDC_COMBINATIONS, kDenyAllCombination);
        window.Click(IDC_WIZARD_REMOVE_ACCOUNT);
        EXPECT_THAT(window.Rows(IDC_WIZARD_ACCOUNTS), ElementsAre("BUILTIN\\Guests"));
        EXPECT_EQ(Marks(window), "11111111111111");
        window.SelectRow(IDC_WIZARD_ACCOUNTS, WindowDriver::kBesideRows);
        EXPECT_EQ(Marks(window), "00000000000000");
        ui.ExpectError(HasSubstr("file"));
        window.Click(SheetButton::kFinish);
    });
    EXPECT_EQ(DaclText(folder.Path("top/first")), "D:PAI(A;OICI;FA;;;BG)");
    EXPECT_EQ(DaclText(folder.Path("top/second")), "D:PAI(A;;FA;;;BG)");

    Assign({"first"}, [&](WindowDriver& window) {
        window.Click(IDC_WIZARD_REMOVE_ACCOUNT);
        for (const int id : {IDC_WIZARD_REMOVE_ACCOUNT, IDC_WIZARD_RIGHTS, IDC_COMBINATIONS})
            EXPECT_FALSE(window.IsEnabled(static_cast<unsigned>(id))) << id;
        Add(window, "Everyone");
        EXPECT_TRUE(window.IsEnabled(IDC_WIZARD_RIGHTS));
        window.Click(SheetButton::kCancel);
    });
    EXPECT_EQ(DaclText(folder.Path("top/first")), "D:PAI(A;OICI;FA;;;BG)") << "only Finish writes";
}

TEST_F(WizardPermissionsPage, OneItemNeedsNoNoticeAndWhatItInheritsStays) {
    Give(folder.MakeFile("top/third"), "D:");
    showIntermediateInfo = 1;
    Assign({"third"}, [](WindowDriver& window) {
        EXPECT_THAT(window.Rows(IDC_WIZARD_ACCOUNTS), ElementsAre("BUILTIN\\Administrators"));
        EXPECT_FALSE(window.IsEnabled(IDC_WIZARD_REMOVE_ACCOUNT));
        window.SelectRow(IDC_COMBINATIONS, kReadCombination);
        window.Press("Return");  // is the sheet's, also in a list that takes Space
    });
    EXPECT_EQ(DaclText(folder.Path("top/third")), "D:AI(D;;DCLCRPWPDTCRSDWDWO;;;BA)(A;ID;FA;;;BA)");
}

TEST_F(WizardPermissionsPage, WithoutTheFirstItemsListThereIsNoFinish) {
    const auto expectNothing = [](WindowDriver& window) {
        EXPECT_THAT(window.Rows(IDC_WIZARD_ACCOUNTS), IsEmpty());
        for (const int id : {IDC_WIZARD_ACCOUNTS, IDC_WIZARD_RIGHTS, IDC_COMBINATIONS, IDC_WIZARD_ADD_ACCOUNT,
                             IDC_WIZARD_REMOVE_ACCOUNT})
            EXPECT_FALSE(window.IsEnabled(static_cast<unsigned>(id))) << id;
        EXPECT_FALSE(window.IsEnabled(SheetButton::kFinish));
        EXPECT_TRUE(window.IsEnabled(SheetButton::kBack));
        window.Press("Return");
        window.Press("Esc");
    };
    Assign({"missing", "second"}, expectNothing, [&] { ui.ExpectError(HasSubstr("file")); });
    Give(folder.Path("top/first"), "D:NO_ACCESS_CONTROL");
    Assign({"first", "second"}, expectNothing,
           [&] { ui.ExpectInformation("Object's access control list is null (All access is allowed)"); });
    EXPECT_EQ(DaclText(folder.Path("top/second")), "D:PAI(A;;FA;;;WD)");

    Give(folder.Path("top/first"), "D:P(OA;;CC;bf967aba-0de6-11d0-a285-00aa003049e2;;BA)(A;;FR;;;BU)");
    Assign(
        {"first"}, [](WindowDriver& window) { window.Click(SheetButton::kCancel); },
        [&] { ui.ExpectInformation("1 entry of another type is not shown; applying drops it."); });

    // An empty list is one that was read.
    Give(folder.Path("top/first"), "D:P");
    Assign({"first"}, [&](WindowDriver& window) {
        EXPECT_THAT(window.Rows(IDC_WIZARD_ACCOUNTS), IsEmpty());
        EXPECT_TRUE(window.IsEnabled(IDC_WIZARD_ADD_ACCOUNT));
        EXPECT_TRUE(window.IsEnabled(SheetButton::kFinish));
        Add(window, "Everyone");
        window.SelectRow(IDC_COMBINATIONS, kReadCombination);
        window.Click(SheetButton::kFinish);
    });
    EXPECT_EQ(DaclText(folder.Path("top/first")), "D:PAI(A;OICI;FR;;;WD)");
}

TEST_F(WizardPermissionsPage, OnAVolumeOfWindows) {
    if (const std::string reason = test::NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    test::NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    ASSERT_EQ(test::RunCommand({"touch", volume.Path("item")}).exitCode, 0);
    Give(volume.Path("item"), "D:P(A;;FA;;;BA)");
    Enter(volume.Root());
    Assign({"item"}, [&](WindowDriver& window) {
        Add(window, "Guests");
        window.SelectRow(IDC_COMBINATIONS, 0);
        window.Click(SheetButton::kFinish);
    });
    // A drive's root is on its own volume, not on that of the current directory, which holds no lists.
    Enter("/proc");
    areDrives = true;
    const std::string root = PathFromArgument(volume.Root().c_str());
    Assign({root}, [&](WindowDriver& window) {
        EXPECT_TRUE(window.IsEnabled(SheetButton::kFinish));
        window.Click(SheetButton::kCancel);
    });
    Enter("/");
    EXPECT_EQ(volume.AuditedEntries("/item"),
              "0 0x0 0x1f01ff S-1-5-20-220\n"
              "0 0x0 0x1f01ff S-1-5-20-222\n");
}

}  // namespace
}  // namespace permora
