// The page of effective permissions on real files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "resources/resource_ids.h"
#include "security/access_rights.h"
#include "tests/editor/editor_fixture.h"

namespace permora {
namespace {

using test::SheetButton;
using test::UiDriver;
using test::WindowDriver;
using ::testing::HasSubstr;

constexpr const char* kNone = "00000000000000";

class EffectivePage : public test::EditorTest {
  protected:
    void MakeFiles() override { Give("D:P"); }

    void Open(const UiDriver::Script& script) { Edit({"file"}, script, "Effective Permissions"); }

    // Picks an account. Returns a digit for each row, 1 for a marked one. `expect` declares the windows that
    // come.
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

    void Give(const char* sddl) const { EditorTest::Give(folder.MakeFile("file"), sddl); }
};

TEST_F(EffectivePage, MarksWhatTheListLeavesToTheAccountPicked) {
    Give("D:P(D;;WP;;;BG)(A;;FA;;;WD)(A;;0x1f03ff;;;BA)");
    Open([&](WindowDriver& window) {
        window.Type(IDC_EFFECTIVE_ACCOUNT, "x");
        EXPECT_EQ(window.Text(IDC_EFFECTIVE_ACCOUNT), "") << "is only read";
        EXPECT_THAT(window.TabThrough(),
                    testing::IsSupersetOf({IDC_EFFECTIVE_ACCOUNT, IDC_EFFECTIVE_RIGHTS, IDC_NETWORK_RIGHTS}));
        EXPECT_EQ(window.Rows(IDC_EFFECTIVE_RIGHTS)[5], "Create files / Write data");
        EXPECT_EQ(Marks(window), kNone);
        EXPECT_EQ(MarksFor(window, "Administrators"), "11111111111111");
        window.ToggleRowCheck(IDC_EFFECTIVE_RIGHTS, 3);
        window.Press("Space");
        EXPECT_EQ(Marks(window), "11111111111111") << "are only read";
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
        EXPECT_EQ(
            window.Text(IDC_EFFECTIVE_REMARK),
            "Members of Everyone may have more or less, by entries for themselves and their other groups.");
        const auto tellsOfGroups = [&] {
            ui.ExpectError("The groups of S-1-5-21-7-8-9-1001 are not known here.");
        };
        EXPECT_EQ(MarksFor(window, "S-1-5-21-7-8-9-1001", tellsOfGroups), marks);
        Give("D:NO_ACCESS_CONTROL");
        const auto tellsOfNull = [&] {
            ui.ExpectInformation("Object's access control list is null (All access is allowed always)");
        };
        EXPECT_EQ(MarksFor(window, "Guests", tellsOfNull), marks);
        ASSERT_TRUE(std::filesystem::remove(folder.Path("file")));
        const auto tellsOfMissing = [&] { ui.ExpectError(HasSubstr("file")); };
        EXPECT_EQ(MarksFor(window, "Users", tellsOfMissing), marks);
        EXPECT_EQ(window.Text(IDC_EFFECTIVE_ACCOUNT), "Everyone") << "whose the marks are";
        window.Press("Esc");
    });
}

TEST_F(EffectivePage, WhyTellsWhichEntryDecidesEachRight) {
    const auto explains = [&](WindowDriver& window, const UiDriver::Script& script) {
        ui.ExpectDialog(IDD_RIGHTS_EXPLANATION, [&](WindowDriver& dialog) {
            script(dialog);
            dialog.Press("Esc");
        });
        window.Click(IDC_EXPLAIN_RIGHTS);
    };
    Give("D:P(D;;WP;;;BG)(A;;FA;;;WD)");
    Open([&](WindowDriver& window) {
        EXPECT_FALSE(window.IsEnabled(IDC_EXPLAIN_RIGHTS)) << "no account is chosen";
        MarksFor(window, "Guests");
        explains(window, [](WindowDriver& dialog) {
            EXPECT_EQ(dialog.Text(IDC_EXPLAINED_ACCOUNT), "BUILTIN\\Guests");
            const std::vector<std::string> rows = dialog.Rows(IDC_EXPLAINED_RIGHTS);
            ASSERT_EQ(rows.size(), 13U);
            EXPECT_EQ(rows[0],
                      "Traverse folder / Execute file | no | entry 1: Deny Traverse folder/Execute "
                      "file | the account itself | not inherited");
            EXPECT_EQ(rows[1],
                      "List folder / Read data | yes | entry 2: Allow Full control | Everyone | "
                      "not inherited");
            EXPECT_THAT(dialog.Rows(IDC_EXPLANATION_REMARKS).back(), HasSubstr("Not considered: privileges"));
            EXPECT_TRUE(dialog.HasFocus(IDC_EXPLAINED_RIGHTS));
            EXPECT_EQ(dialog.TabThrough(),
                      (std::vector<unsigned int>{IDC_EXPLAINED_RIGHTS, IDC_EXPLANATION_REMARKS, IDCANCEL,
                                                 IDC_EXPLAINED_ACCOUNT}));
        });
        Give("D:P(A;;FR;;;WD)");
        explains(window, [](WindowDriver& dialog) {
            EXPECT_EQ(dialog.Rows(IDC_EXPLAINED_RIGHTS)[0],
                      "Traverse folder / Execute file | no | no entry grants it |  | ");
        });
        EXPECT_EQ(Marks(window), "00111000000100") << "the marks are those that were explained";
        window.Press("Esc");
    });
}

TEST_F(EffectivePage, ComparesAccountsOverAllSelectedObjects) {
    Give("D:P(A;;FR;;;WD)");
    EditorTest::Give(folder.MakeFile("other"), "D:P(A;;FW;;;BG)(A;;0x89;;;WD)");
    const auto add = [&](WindowDriver& dialog, const char* account) {
        ui.ExpectDialog(IDD_ACCOUNT_PICKER, [&](WindowDriver& picker) {
            picker.SetText(IDC_ACCOUNT_NAME, account);
            picker.Press("Return");
        });
        dialog.Click(IDC_ADD_COMPARED);
    };
    const std::string everyone = "Everyone | none | all | all | all | none";
    const std::string guests = "BUILTIN\\Guests | none | all | all | all | some";
    Edit(
        {"file", "other"},
        [&](WindowDriver& window) {
            MarksFor(window, "Everyone");
            ui.ExpectDialog(IDD_COMPARE_ACCOUNTS, [&](WindowDriver& dialog) {
                add(dialog, "Guests");
                add(dialog, "Everyone");
                add(dialog, "S-1-5-21-7-8-9-1001");
                const std::vector<std::string> rows = dialog.Rows(IDC_COMPARED_RIGHTS);
                ASSERT_EQ(rows.size(), 3U);
                EXPECT_THAT(rows[0], testing::StartsWith(guests));
                EXPECT_THAT(rows[1], testing::StartsWith(everyone));
                EXPECT_THAT(rows[2], testing::StartsWith("S-1-5-21-7-8-9-1001 | ? | ?"));
                EXPECT_EQ(dialog.Rows(IDC_COMPARISON_REMARKS).back(),
                          "The groups of S-1-5-21-7-8-9-1001 are not known here.");
                dialog.ClickHeader(IDC_COMPARED_RIGHTS, 0);
                EXPECT_THAT(dialog.Rows(IDC_COMPARED_RIGHTS)[2], testing::StartsWith(guests));
                dialog.SelectRow(IDC_COMPARED_RIGHTS, 1);
                dialog.Click(IDC_REMOVE_COMPARED);
                EXPECT_THAT(dialog.Rows(IDC_COMPARED_RIGHTS)[1], testing::StartsWith(guests));
                dialog.Press("Esc");
            });
            window.Click(IDC_COMPARE_ACCOUNTS);
            window.Press("Esc");
        },
        "Effective Permissions");
}

}  // namespace
}  // namespace permora
