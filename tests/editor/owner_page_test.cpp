// The owner page of the security editor on real files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "editor/security_sheet.h"
#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/host_path.h"
#include "resources/resource_ids.h"
#include "tests/support/access_lists.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

using test::DescriptorText;
using ::testing::HasSubstr;
using testing::SheetButton;
using testing::UiDriver;
using testing::WindowDriver;

class OwnerPage : public ::testing::Test {
  protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "only root may give objects away";
        folder.MakeFolder("docs");
        folder.MakeFile("docs/report");
        folder.MakeFolder("data");
        folder.MakeFile("data/report");
        folder.MakeFile("notes");
        std::filesystem::create_symlink(outside.MakeFile("target"), folder.Path("docs/link"));
        for (const char* name : {"docs", "docs/report", "data", "data/report", "notes"})
            ASSERT_EQ(test::SetDescriptorText(folder.Path(name), "O:BG"), ERROR_SUCCESS) << name;
        ASSERT_NE(SetCurrentDirectoryA(PathFromArgument(folder.Path().c_str()).c_str()), FALSE);
        sheet.SetUp(nullptr);
    }

    std::string Owner(const std::string& name) const {
        return DescriptorText(folder.Path(name), OWNER_SECURITY_INFORMATION);
    }

    void Edit(const std::vector<const char*>& names, const UiDriver::Script& script) {
        sheet.SetItems(names, false);
        ui.ExpectSheet(std::string("Security Editor - ") + names.front(), [&](WindowDriver& window) {
            window.SwitchToTab("Owner");
            script(window);
        });
        sheet.DoModal();
    }

    const test::TemporaryFolder folder;
    const test::TemporaryFolder outside;
    UiDriver ui;
    CPSheet sheet;
};

TEST_F(OwnerPage, SetsTheOwnerOfEveryItemAndOfWhatIsBelowTheFolders) {
    Edit({"docs", "gone", "notes"}, [&](WindowDriver& window) {
        EXPECT_EQ(window.Text(IDC_OWNER_NAME), "BUILTIN\\Guests");
        EXPECT_FALSE(window.IsEnabled(IDC_OWNER_NAME));
        const std::vector<std::string> candidates = window.Rows(IDC_OWNER_CANDIDATES);
        ASSERT_EQ(candidates.size(), 2U) << "the administrators and this process's user";
        EXPECT_EQ(candidates[0], "BUILTIN\\Administrators");
        EXPECT_THAT(candidates[1], HasSubstr("\\root"));
        window.Click(IDC_REPLACE_CHILD_OWNERS);
        EXPECT_FALSE(window.IsEnabled(SheetButton::kApply)) << "the box alone chooses no owner";
        window.SelectRow(IDC_OWNER_CANDIDATES, 0);
        ui.ExpectMessageBox(HasSubstr("file"), "Permora Error", MB_OK | MB_ICONERROR, IDOK);
        window.Click(SheetButton::kApply);
        EXPECT_EQ(window.Text(IDC_OWNER_NAME), "BUILTIN\\Administrators");
        EXPECT_FALSE(window.IsChecked(IDC_REPLACE_CHILD_OWNERS));
        EXPECT_FALSE(window.IsEnabled(SheetButton::kApply));
        EXPECT_EQ(window.Rows(IDC_OWNER_CANDIDATES), candidates);
        window.Click(SheetButton::kOk);
    });
    for (const char* name : {"docs", "docs/report", "docs/link", "notes"})
        EXPECT_EQ(Owner(name), "O:BA") << name;
    EXPECT_EQ(Owner("data"), "O:BG");
    EXPECT_NE(DescriptorText(outside.Path("target"), OWNER_SECURITY_INFORMATION), "O:BA");
}

TEST_F(OwnerPage, WithoutTheBoxOrAChosenRowWhatIsBelowOrEverythingStays) {
    Edit({"data"}, [&](WindowDriver& window) {
        window.SelectRow(IDC_OWNER_CANDIDATES, WindowDriver::kBesideRows);
        EXPECT_TRUE(window.IsEnabled(SheetButton::kApply));
        window.Click(SheetButton::kApply);
        EXPECT_EQ(Owner("data"), "O:BG");
        window.SelectRow(IDC_OWNER_CANDIDATES, 1);
        window.Click(SheetButton::kOk);
    });
    struct stat status {};
    ASSERT_EQ(stat(folder.Path("data").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 0U);
    EXPECT_NE(Owner("data"), "O:BG");
    EXPECT_EQ(Owner("data/report"), "O:BG");
}

TEST_F(OwnerPage, WhatCannotBeReadIsToldAndCandidatesAreStillOffered) {
    ui.ExpectMessageBox(HasSubstr("file"), "Permora Error", MB_OK | MB_ICONERROR, IDOK);  // the first page
    static const char* const names[] = {"gone"};
    sheet.SetItems(names, false);
    ui.ExpectSheet("Security Editor - gone", [&](WindowDriver& window) {
        ui.ExpectMessageBox(HasSubstr("Cannot get owner information: "), "Permora Error",
                            MB_OK | MB_ICONERROR, IDOK);
        window.SwitchToTab("Owner");
        EXPECT_EQ(window.Text(IDC_OWNER_NAME), "");
        EXPECT_EQ(window.Rows(IDC_OWNER_CANDIDATES).size(), 2U);
        window.Press("Esc");
    });
    sheet.DoModal();
}

}  // namespace
}  // namespace permora
