// The page of effective permissions on real files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>

#include "editor/security_sheet.h"
#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/host_path.h"
#include "resources/resource_ids.h"
#include "security/access_rights.h"
#include "tests/support/access_lists.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

using ::testing::HasSubstr;
using testing::SheetButton;
using testing::UiDriver;
using testing::WindowDriver;

constexpr const char* kNone = "00000000000000";

class EffectivePage : public ::testing::Test {
  protected:
    void SetUp() override {
        const DWORD error = test::SetDescriptorText(folder.MakeFile("file"), "D:P");
        if (error == ERROR_NOT_SUPPORTED) GTEST_SKIP() << "the temporary folder holds no access lists";
        ASSERT_EQ(error, ERROR_SUCCESS);
        ASSERT_NE(SetCurrentDirectoryA(PathFromArgument(folder.Path().c_str()).c_str()), FALSE);
        sheet.SetUp(nullptr);
    }

    void Open(const UiDriver::Script& script) {
        static const char* const names[] = {"file"};
        sheet.SetItems(names, false);
        ui.ExpectSheet("Security Editor - file", [&](WindowDriver& window) {
            window.SwitchToTab("Effective Permissions");
            script(window);
        });
        sheet.DoModal();
    }

    // Picks an account; a digit for each row then, 1 where it is marked. `expect` declares what is shown.
    std::string MarksFor(
        WindowDriver& window, const std::string& account, const std::function<void()>& expect = [] {}) {
        ui.ExpectDialog(IDD_ACCOUNT_PICKER, [&](WindowDriver& picker) {
            EXPECT_EQ(picker.Text(IDC_ACCOUNT_NAME), "") << "no account is preset";
            expect();
            picker.SetText(IDC_ACCOUNT_NAME, account);
            picker.Press("Return");
        });
        window.Click(IDC_CHANGE_EFFECTIVE_ACCOUNT);
        return Marks(window);
    }

    static std::string Marks(WindowDriver& window) {
        std::string marks;
        for (std::size_t row = 0; row < kAccessRights.size(); ++row)
            marks += window.IsRowChecked(IDC_EFFECTIVE_RIGHTS, static_cast<int>(row)) ? '1' : '0';
        return marks;
    }

    void Give(const char* sddl) const {
        ASSERT_EQ(test::SetDescriptorText(folder.Path("file"), sddl), ERROR_SUCCESS);
    }

    const test::TemporaryFolder folder;
    UiDriver ui;
    CPSheet sheet;
};

TEST_F(EffectivePage, MarksWhatTheListLeavesToTheAccountPicked) {
    Give("D:P(D;;WP;;;BG)(A;;FA;;;WD)(A;;0x1f03ff;;;BA)");
    Open([&](WindowDriver& window) {
        EXPECT_FALSE(window.IsEnabled(IDC_EFFECTIVE_ACCOUNT));
        EXPECT_FALSE(window.IsEnabled(IDC_EFFECTIVE_RIGHTS));
        EXPECT_EQ(window.Rows(IDC_EFFECTIVE_RIGHTS)[5], "Create files / Write data");
        EXPECT_EQ(Marks(window), kNone);
        EXPECT_EQ(MarksFor(window, "Administrators"), "11111111111111");
        EXPECT_EQ(window.Text(IDC_EFFECTIVE_ACCOUNT), "BUILTIN\\Administrators");
        EXPECT_EQ(MarksFor(window, "Everyone"), "01111111111111") << "full control of files is less";
        EXPECT_EQ(MarksFor(window, "Guests"), "00111111111111");
        ui.ExpectDialog(IDD_ACCOUNT_PICKER, [](WindowDriver& picker) { picker.Press("Esc"); });
        window.Click(IDC_CHANGE_EFFECTIVE_ACCOUNT);
        EXPECT_EQ(window.Text(IDC_EFFECTIVE_ACCOUNT), "BUILTIN\\Guests");
        EXPECT_FALSE(window.IsEnabled(SheetButton::kApply));
        window.Click(SheetButton::kOk);
    });
    EXPECT_EQ(test::DaclText(folder.Path("file")), "D:PAI(D;;WP;;;BG)(A;;FA;;;WD)(A;;0x1f03ff;;;BA)");
    Open([&](WindowDriver& window) {
        EXPECT_EQ(window.Text(IDC_EFFECTIVE_ACCOUNT), "");
        EXPECT_EQ(Marks(window), kNone);
        window.Press("Esc");
    });
}

TEST_F(EffectivePage, WithoutAnAnswerTheMarksStay) {
    Give("D:P(A;;FR;;;WD)");
    Open([&](WindowDriver& window) {
        const std::string marks = MarksFor(window, "Everyone");
        EXPECT_EQ(marks, "00111000000100");
        Give("D:NO_ACCESS_CONTROL");
        const auto tellsOfNull = [&] {
            ui.ExpectMessageBox("Object's access control list is null (All access is allowed always)",
                                "Permora Information", MB_OK | MB_ICONINFORMATION, IDOK);
        };
        EXPECT_EQ(MarksFor(window, "Guests", tellsOfNull), marks);
        ASSERT_TRUE(std::filesystem::remove(folder.Path("file")));
        const auto tellsOfMissing = [&] {
            ui.ExpectMessageBox(HasSubstr("file"), "Permora Error", MB_OK | MB_ICONERROR, IDOK);
        };
        EXPECT_EQ(MarksFor(window, "Users", tellsOfMissing), marks);
        window.Press("Esc");
    });
}

}  // namespace
}  // namespace permora
