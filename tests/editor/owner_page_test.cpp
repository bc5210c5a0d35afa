// The owner page of the security editor on real files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "resources/resource_ids.h"
#include "tests/editor/editor_fixture.h"

namespace permora {
namespace {

using test::DescriptorText;
using test::SheetButton;
using test::UiDriver;
using test::WindowDriver;
using ::testing::HasSubstr;

class OwnerPage : public test::EditorTest {
  protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "only root may give objects away";
        EditorTest::SetUp();
    }
    void MakeFiles() override {
        for (const char* name : {"docs", "data"})
            Give(folder.MakeFolder(name), "O:BG");
        for (const char* name : {"docs/report", "data/report", "notes"})
            Give(folder.MakeFile(name), "O:BG");
        std::filesystem::create_symlink(outside.MakeFile("target"), folder.Path("docs/link"));
    }

    std::string Owner(const std::string& name) const {
        return DescriptorText(folder.Path(name), OWNER_SECURITY_INFORMATION);
    }

    void Open(const std::vector<std::string>& names, const UiDriver::Script& script) {
        Edit(names, script, "Owner");
    }

    const test::TemporaryFolder outside;
};

TEST_F(OwnerPage, SetsTheOwnerOfEveryItemAndOfWhatIsBelowTheFolders) {
    Open({"docs", "gone", "notes"}, [&](WindowDriver& window) {
        EXPECT_EQ(window.Text(IDC_OWNER_NAME), "BUILTIN\\Guests");
        EXPECT_FALSE(window.IsEnabled(IDC_OWNER_NAME));
        const std::vector<std::string> candidates = window.Rows(IDC_OWNER_CANDIDATES);
        ASSERT_EQ(candidates.size(), 2U) << "the administrators and this process's user";
        EXPECT_EQ(candidates[0], "BUILTIN\\Administrators");
        EXPECT_THAT(candidates[1], HasSubstr("\\root"));
        window.Click(IDC_REPLACE_CHILD_OWNERS);
        EXPECT_FALSE(window.IsEnabled(SheetButton::kApply)) << "the box alone chooses no owner";
        window.SelectRow(IDC_OWNER_CANDIDATES, 0);
        ui.ExpectError(HasSubstr("file"));
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

TEST_F(OwnerPage, WhatWasShownIsGivenAwayAndNothingElseThatHasItsName) {
    const std::string mounted = folder.MakeFolder("docs/mounted");
    const bool isMounted = mount("none", mounted.c_str(), "tmpfs", 0, nullptr) == 0;
    Give(outside.MakeFile("linked"), "O:BG");
    std::filesystem::create_hard_link(outside.Path("linked"), folder.Path("docs/linked"));
    Open({"docs", "data"}, [&](WindowDriver& window) {
        window.Click(IDC_REPLACE_CHILD_OWNERS);
        window.SelectRow(IDC_OWNER_CANDIDATES, 0);
        std::filesystem::rename(folder.Path("data"), folder.Path("moved"));
        Give(folder.MakeFolder("data"), "O:BG");
        Give(folder.MakeFile("data/report"), "O:BG");
        ui.ExpectError("\"data\" is left alone: another object has this name since it was shown here.");
        ui.ExpectError(HasSubstr("What is below \"data\" is left alone"));
        if (isMounted) ui.ExpectInformation(HasSubstr("Something is mounted on \"docs\\mounted\"."));
        ui.ExpectInformation(HasSubstr("\"docs\\linked\" has further names (hard links)."));
        window.Click(SheetButton::kOk);
    });
    if (isMounted) umount2(mounted.c_str(), MNT_DETACH);
    for (const char* name : {"docs", "docs/report"})
        EXPECT_EQ(Owner(name), "O:BA") << name;
    for (const char* name : {"data", "data/report", "moved", "moved/report", "docs/linked"})
        EXPECT_EQ(Owner(name), "O:BG") << name;
}

TEST_F(OwnerPage, WithoutTheBoxOrAChosenRowWhatIsBelowOrEverythingStays) {
    Open({"data"}, [&](WindowDriver& window) {
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
    ui.ExpectError(HasSubstr("file"));  // the first page
    Edit({"gone"}, [&](WindowDriver& window) {
        ui.ExpectError(HasSubstr("Cannot get owner information: "));
        window.SwitchToTab("Owner");
        EXPECT_EQ(window.Text(IDC_OWNER_NAME), "");
        EXPECT_EQ(window.Rows(IDC_OWNER_CANDIDATES).size(), 2U);
        window.Press("Esc");
    });
}

}  // namespace
}  // namespace permora
