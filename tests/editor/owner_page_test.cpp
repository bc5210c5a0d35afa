// The owner page of the security editor on real files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "resources/resource_ids.h"
#include "tests/editor/editor_fixture.h"
#include "tests/support/command.h"
#include "tests/support/immutable.h"

namespace permora {
namespace {

using test::DescriptorText;
using test::SheetButton;
using test::UiDriver;
using test::WindowDriver;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;

bool IsMountedRow(const std::string& row) {
    return row.starts_with("mounted | Left alone | something is mounted on it");
}

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
        ui.ExpectInformation(HasSubstr("No owner was chosen here"));
        window.Click(IDC_PREVIEW);
        window.SelectRow(IDC_OWNER_CANDIDATES, 0);
        ui.ExpectDialog(IDD_PREVIEW, [](WindowDriver& dialog) {
            ASSERT_TRUE(dialog.WaitUntil([&] { return dialog.IsEnabled(IDC_PREVIEW_COPY); }));
            EXPECT_THAT(dialog.Rows(IDC_PREVIEW_LINES),
                        IsSupersetOf({"Items: would change: 2, already so: 0, failed: 1",
                                      "Below them: would change: 2, already so: 0, passed over: 0"}));
            dialog.Click(IDCANCEL);
        });
        window.Click(IDC_PREVIEW);
        EXPECT_EQ(Owner("docs"), "O:BG");
        ui.ExpectError(HasSubstr("gone"));
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
        ui.ExpectDialog(IDD_CHANGE_RESULTS, [&](WindowDriver& results) {
            std::vector<std::string> rows = results.Rows(IDC_RESULTS);
            if (isMounted) EXPECT_EQ(std::erase_if(rows, IsMountedRow), 1U);
            EXPECT_THAT(rows,
                        ElementsAre("data | Failed | left alone: another object has this name by now | data",
                                    HasSubstr("linked | Left alone | it has further names"),
                                    "docs | Done |  | docs"));
            results.Press("Esc");
        });
        window.Click(SheetButton::kOk);
    });
    if (isMounted) umount2(mounted.c_str(), MNT_DETACH);
    for (const char* name : {"docs", "docs/report"})
        EXPECT_EQ(Owner(name), "O:BA") << name;
    for (const char* name : {"data", "data/report", "moved", "moved/report", "docs/linked"})
        EXPECT_EQ(Owner(name), "O:BG") << name;
}

TEST_F(OwnerPage, WhatCouldNotBeGivenAwayIsListedAndTriedAgain) {
    std::optional<test::Immutable> notes(folder.Path("notes"));
    std::optional<test::Immutable> report(folder.Path("docs/report"));
    if (!*notes) GTEST_SKIP() << "no object can be made immutable here";
    Open({"docs", "notes"}, [&](WindowDriver& window) {
        window.Click(IDC_REPLACE_CHILD_OWNERS);
        window.SelectRow(IDC_OWNER_CANDIDATES, 0);
        ui.ExpectDialog(IDD_CHANGE_RESULTS, [&](WindowDriver& results) {
            EXPECT_EQ(results.Text(IDC_RESULTS_SUMMARY), "2 objects failed, 1 is done.");
            report.reset();
            std::filesystem::create_hard_link(folder.Path("docs/report"), outside.Path("linked"));
            notes.reset();
            results.Click(IDC_TRY_AGAIN);
            EXPECT_EQ(results.Text(IDC_RESULTS_SUMMARY), "0 objects failed, 1 was left alone, 2 are done.");
            results.Press("Esc");
        });
        window.Click(SheetButton::kOk);
    });
    EXPECT_EQ(Owner("notes"), "O:BA");
    EXPECT_EQ(Owner("docs/report"), "O:BG") << "it has got a further name meanwhile";
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

TEST_F(OwnerPage, AnyOtherAccountJoinsTheCandidatesAndIsSelected) {
    Open({"notes"}, [&](WindowDriver& window) {
        const auto choose = [&](const char* account) {
            ui.ExpectDialog(IDD_ACCOUNT_PICKER, [&](WindowDriver& picker) {
                picker.SetText(IDC_ACCOUNT_NAME, account);
                picker.Press("Return");
            });
            window.Click(IDC_OTHER_OWNER);
        };
        choose("S-1-5-21-1-2-3-500");
        EXPECT_THAT(window.SelectedRows(IDC_OWNER_CANDIDATES), testing::ElementsAre(2));
        EXPECT_TRUE(window.IsEnabled(SheetButton::kApply));
        choose("Administrators");
        EXPECT_THAT(window.SelectedRows(IDC_OWNER_CANDIDATES), testing::ElementsAre(0)) << "it was there";
        window.SelectRow(IDC_OWNER_CANDIDATES, 2);
        window.Click(SheetButton::kApply);
        EXPECT_EQ(window.Text(IDC_OWNER_NAME), "S-1-5-21-1-2-3-500");
        EXPECT_EQ(window.Rows(IDC_OWNER_CANDIDATES).size(), 3U) << "it stays";
        window.Press("Esc");
    });
    EXPECT_EQ(Owner("notes"), "O:S-1-5-21-1-2-3-500");
}

TEST_F(OwnerPage, OnAReadOnlyVolumeNothingIsOfferedAndTheReasonIsTold) {
    if (const std::string reason = test::CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    const std::string data = folder.Path("data");
    ASSERT_EQ(mount(data.c_str(), data.c_str(), nullptr, MS_BIND, nullptr), 0);
    ASSERT_EQ(mount(nullptr, data.c_str(), nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr), 0);
    Edit({"data"}, [&](WindowDriver& window) {
        for (const unsigned id : {IDC_ADD_ENTRY + 0U, IDC_REMOVE_ENTRY + 0U, IDC_INHERIT_FROM_PARENT + 0U,
                                  IDC_REPLACE_CHILD_ENTRIES + 0U})
            EXPECT_FALSE(window.IsEnabled(id)) << id;
        EXPECT_THAT(window.Text(IDC_LIST_REMARK), testing::StartsWith("This cannot be changed: "));
        ui.ExpectDialog(IDD_PERMISSION_ENTRY, [&](WindowDriver& entry) {
            EXPECT_FALSE(entry.IsEnabled(IDC_ALLOW_DELETE));
            EXPECT_FALSE(entry.IsEnabled(IDC_DENY_DELETE));
            EXPECT_FALSE(entry.IsEnabled(IDC_ALLOW_READ));
            entry.Click(IDC_ENTRY_OK);
        });
        window.Click(IDC_EDIT_ENTRY);
        EXPECT_FALSE(window.IsEnabled(SheetButton::kApply));
        window.SwitchToTab("Owner");
        EXPECT_FALSE(window.IsEnabled(IDC_OWNER_CANDIDATES));
        EXPECT_FALSE(window.IsEnabled(IDC_OTHER_OWNER));
        EXPECT_THAT(window.Text(IDC_OWNER_REMARK), testing::StartsWith("This cannot be changed: "));
        window.Press("Esc");
    });
    umount2(data.c_str(), MNT_DETACH);
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
