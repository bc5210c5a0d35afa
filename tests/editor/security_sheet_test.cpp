// The security editor on real files.
#include "editor/security_sheet.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "history/database.h"
#include "platform/system_message.h"
#include "resources/resource_ids.h"
#include "tests/editor/editor_fixture.h"
#include "tests/support/command.h"
#include "tests/support/immutable.h"
#include "tests/support/scoped_variable.h"

namespace {

bool areListsRefused = false;
std::thread::id writer;  // of the last attribute

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the linker demands these names
extern "C" {

BOOL __real_InitializeAcl(PACL acl, DWORD size, DWORD revision);
BOOL __wrap_InitializeAcl(PACL acl, DWORD size, DWORD revision) {
    return areListsRefused ? FALSE : __real_InitializeAcl(acl, size, revision);
}

int __real_setxattr(const char* path, const char* name, const void* value, size_t size, int flags);
int __wrap_setxattr(const char* path, const char* name, const void* value, size_t size, int flags) {
    writer = std::this_thread::get_id();
    return __real_setxattr(path, name, value, size, flags);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)

namespace permora {
namespace {

using test::DaclText;
using test::SheetButton;
using test::UiDriver;
using test::WindowDriver;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;

class SecuritySheet : public test::EditorTest {
  protected:
    // "docs" hands entries down to "docs/report"; "data" and the file "notes" have lists of their own.
    void MakeFiles() override {
        Give(folder.MakeFolder("docs"), "D:P(D;;WD;;;BU)(A;OICI;FA;;;BA)");
        Give(folder.MakeFolder("docs/report"), "D:(A;;CCLC;;;WD)");
        Give(folder.MakeFolder("data"), "D:P(A;;FA;;;BU)");
        Give(folder.MakeFile("notes"), "D:P(A;;FA;;;BU)");
    }

    // Adds an entry for Everyone; `script` makes the choice in the entry dialog, and OK ends it.
    void Add(WindowDriver& window, const UiDriver::Script& script) {
        ui.ExpectDialog(IDD_ACCOUNT_PICKER, [](WindowDriver& picker) {
            picker.SetText(IDC_ACCOUNT_NAME, "Everyone");
            picker.Press("Return");
        });
        ui.ExpectDialog(IDD_PERMISSION_ENTRY, [&](WindowDriver& entry) {
            script(entry);
            entry.Press("Return");
        });
        window.Click(IDC_ADD_ENTRY);
    }
};

TEST_F(SecuritySheet, AddsAnEntryToEveryItemAndResetsWhatIsBelow) {
    Edit({"docs", "data", "notes"}, [&](WindowDriver& window) {
        EXPECT_THAT(
            window.Rows(IDC_ACCESS_LIST),
            ElementsAre("Deny | BUILTIN\\Users | Write permissions | Not inherited | This folder only",
                        "Allow | BUILTIN\\Administrators | Full control | Not inherited | "
                        "This folder, subfolders and files"));
        EXPECT_FALSE(window.IsEnabled(SheetButton::kApply));
        Add(window, [](WindowDriver& entry) {
            entry.Click(IDC_ALLOW_READ_ATTRIBUTES);
            entry.SelectItem(IDC_APPLY_ONTO, "Files only");
        });
        EXPECT_EQ(window.Rows(IDC_ACCESS_LIST)[1],
                  "Allow | Everyone | Read attributes | Not inherited | Files only");
        window.Click(IDC_REPLACE_CHILD_ENTRIES);
        ui.ExpectDialog(IDD_APPLY_TO_TREE);
        window.Click(SheetButton::kApply);
        EXPECT_FALSE(window.IsChecked(IDC_REPLACE_CHILD_ENTRIES));
        EXPECT_FALSE(window.IsEnabled(SheetButton::kApply));
        window.Click(SheetButton::kOk);  // nothing has changed since: nothing is written
    });
    const std::string expected = "D:PAI(D;;WD;;;BU)(A;OIIO;0x100080;;;WD)(A;OICI;FA;;;BA)";
    for (const char* name : {"docs", "data"})
        EXPECT_EQ(DaclText(folder.Path(name)), expected) << name;
    EXPECT_EQ(DaclText(folder.Path("docs/report")), "D:AI(A;OIIOID;0x100080;;;WD)(A;OICIID;FA;;;BA)");
}

TEST_F(SecuritySheet, WhatItDoesNotShowIsAskedAboutBeforeItIsLost) {
    std::uint8_t asks = 1;
    askBeforeLosses = &asks;
    const std::string others = DaclText(folder.Path("data"));
    const std::string below = DaclText(folder.Path("docs/report"));
    const auto isReady = [&](WindowDriver& dialog) {
        return dialog.WaitUntil([&] { return dialog.IsEnabled(IDC_PREVIEW_COPY); });
    };
    Edit({"docs", "data"}, [&](WindowDriver& window) {
        ui.ExpectInformation(HasSubstr("would leave them as they are"));
        window.Click(IDC_PREVIEW);
        window.SelectRow(IDC_ACCESS_LIST, 0);
        window.Click(IDC_REMOVE_ENTRY);
        window.Click(IDC_REPLACE_CHILD_ENTRIES);
        ui.ExpectDialog(IDD_PREVIEW, [&](WindowDriver& dialog) {
            ASSERT_TRUE(isReady(dialog));
            EXPECT_THAT(dialog.Rows(IDC_PREVIEW_LINES),
                        IsSupersetOf({"Items: would change: 2, already so: 0, failed: 0",
                                      "Below them: would change: 1, already so: 0, passed over: 0",
                                      "Below them, 1 object would lose entries of their own",
                                      "  data: Allow BUILTIN\\Users: Full control (This folder only)"}));
            dialog.Click(IDC_PREVIEW_COPY);
            dialog.Click(IDCANCEL);
        });
        window.Click(IDC_PREVIEW);
        ui.ExpectDialog(IDD_PREVIEW_QUESTION, [&](WindowDriver& dialog) {
            ASSERT_TRUE(isReady(dialog));
            EXPECT_EQ(dialog.Text(IDC_PREVIEW_PROGRESS), "As it was previewed") << "and not counted again";
            EXPECT_EQ(dialog.DefaultButton(), unsigned{IDCANCEL});
            dialog.Press("Esc");
        });
        window.Click(SheetButton::kApply);
        EXPECT_TRUE(window.IsEnabled(SheetButton::kApply));
        EXPECT_EQ(DaclText(folder.Path("data")), others);
        EXPECT_EQ(DaclText(folder.Path("docs/report")), below);
        ui.ExpectDialog(IDD_PREVIEW_QUESTION, [&](WindowDriver& dialog) {
            ASSERT_TRUE(isReady(dialog));
            dialog.Click(IDC_PREVIEW_DO_NOT_ASK);
            dialog.Click(IDOK);
        });
        ui.ExpectDialog(IDD_APPLY_TO_TREE);
        window.Click(SheetButton::kOk);
    });
    EXPECT_EQ(asks, 0);
    EXPECT_EQ(DaclText(folder.Path("data")), "D:PAI(A;OICI;FA;;;BA)");
}

// The changes of the history, the newest first: kind, tops and objects of each.
std::string RecordedChanges() {
    std::unique_ptr<History> history;
    std::vector<ChangeFacts> changes;
    EXPECT_EQ(History::OpenToRead(History::UsualPath(), history), 0U);
    if (history) EXPECT_EQ(history->List(changes), 0U);
    std::string text;
    for (const ChangeFacts& change : changes)
        text += std::to_string(static_cast<int>(change.kind)) + ' ' + std::to_string(change.tops) + ' ' +
                std::to_string(change.objects) + '\n';
    return text;
}

TEST_F(SecuritySheet, AnApplyIsOneChangeOfTheHistory) {
    std::filesystem::remove(History::UsualPath());
    const auto removeFirst = [](WindowDriver& window) {
        window.SelectRow(IDC_ACCESS_LIST, 0);
        window.Click(IDC_REMOVE_ENTRY);
    };
    Edit({"docs", "notes"}, [&](WindowDriver& window) {
        removeFirst(window);
        window.Click(SheetButton::kApply);
        EXPECT_EQ(RecordedChanges(), "1 2 2\n");
        removeFirst(window);
        window.Click(IDC_REPLACE_CHILD_ENTRIES);
        ui.ExpectDialog(IDD_APPLY_TO_TREE);
        window.Click(SheetButton::kApply);
        window.SwitchToTab("Owner");
        window.Click(IDC_REPLACE_CHILD_OWNERS);
        window.SelectRow(IDC_OWNER_CANDIDATES, 0);
        window.Click(SheetButton::kOk);
    });
    EXPECT_EQ(RecordedChanges(), "2 2 3\n3 2 4\n1 2 2\n");
}

TEST_F(SecuritySheet, WithoutAHistoryTheUserIsAskedBeforeAnythingIsChanged) {
    std::filesystem::remove(History::UsualPath());
    std::filesystem::create_directories(std::filesystem::path(History::UsualPath()).parent_path());
    std::ofstream(History::UsualPath()) << "no database";
    const auto expectQuestion = [this](int answer) {
        ui.ExpectMessageBox(HasSubstr("The history of changes cannot be written."), "No history",
                            MB_YESNO | MB_ICONQUESTION, answer);
    };
    const std::string before = DaclText(folder.Path("notes"));
    Edit({"notes"}, [&](WindowDriver& window) {
        window.SelectRow(IDC_ACCESS_LIST, 0);
        window.Click(IDC_REMOVE_ENTRY);
        expectQuestion(IDNO);
        window.Click(SheetButton::kOk);
        EXPECT_TRUE(window.IsOpen());
        EXPECT_EQ(DaclText(folder.Path("notes")), before);
        window.SwitchToTab("Owner");
        window.SelectRow(IDC_OWNER_CANDIDATES, 1);
        expectQuestion(IDNO);
        expectQuestion(IDYES);
        window.Click(SheetButton::kApply);
        window.Click(SheetButton::kOk);
    });
    EXPECT_EQ(DaclText(folder.Path("notes")), "D:PAI");
    EXPECT_EQ(test::ReadWholeFile(History::UsualPath()), "no database");
    std::filesystem::remove(History::UsualPath());
}

// What an Apply has written before the history stopped it is nobody else's.
TEST_F(SecuritySheet, AfterAChangeThatTheHistoryHasStoppedTheNextOneGoesOn) {
    const std::string database = History::UsualPath();
    std::filesystem::remove(database);
    {
        std::unique_ptr<History> history;
        Database limited;
        ASSERT_EQ(History::Open(database, history), 0U);
        ASSERT_EQ(limited.Open(database, Database::Access::kReadWrite), 0U);
        ASSERT_EQ(limited.Execute("DROP TABLE objects; CREATE TABLE objects(change, number CHECK(number<2),"
                                  " folder, name, is_folder, file, before, after, seal)"),
                  0U);
    }
    const auto stop = [&](WindowDriver& window) {
        ui.ExpectError(HasSubstr("history"));
        window.Click(SheetButton::kApply);
        ui.ExpectMessageBox(HasSubstr("The history of changes cannot be written."), "No history",
                            MB_YESNO | MB_ICONQUESTION, IDNO);
        window.Click(SheetButton::kApply);
    };
    Edit({"data", "notes"}, [&](WindowDriver& window) {
        window.SelectRow(IDC_ACCESS_LIST, 0);
        window.Click(IDC_REMOVE_ENTRY);
        stop(window);
        EXPECT_EQ(DaclText(folder.Path("data")), "D:PAI");
        EXPECT_EQ(DaclText(folder.Path("notes")), "D:PAI(A;;FA;;;BU)");
        window.Click(SheetButton::kApply);
        EXPECT_EQ(DaclText(folder.Path("notes")), "D:PAI");

        Add(window, [](WindowDriver& entry) { entry.Click(IDC_ALLOW_READ_ATTRIBUTES); });
        stop(window);
        Give(folder.Path("data"), "D:P(A;;FX;;;BU)");
        ui.ExpectMessageBox(HasSubstr("was changed by another program"), "Changed meanwhile",
                            MB_YESNO | MB_ICONQUESTION, IDNO);
        window.Click(SheetButton::kApply);
        window.Click(SheetButton::kOk);
    });
    EXPECT_EQ(DaclText(folder.Path("data")), "D:PAI(A;;FX;;;BU)");
    std::filesystem::remove(database);
}

TEST_F(SecuritySheet, AnItemThatFailsIsToldAndTheOthersAreWritten) {
    Edit({"docs", "gone", "data"}, [&](WindowDriver& window) {
        window.SelectRow(IDC_ACCESS_LIST, 0);
        window.Click(IDC_REMOVE_ENTRY);
        ui.ExpectError(EndsWith("gone"));
        window.Click(SheetButton::kOk);
    });
    EXPECT_NE(writer, std::this_thread::get_id()) << "the work has a thread of its own";
    for (const char* name : {"docs", "data"})
        EXPECT_EQ(DaclText(folder.Path(name)), "D:PAI(A;OICI;FA;;;BA)") << name;
}

TEST_F(SecuritySheet, SeveralFailuresAreOneListFromWhichTheyAreTriedAgain) {
    folder.MakeFolder("docs/deep");
    Give(folder.MakeFile("docs/deep/letter"), "D:P(A;;FA;;;BU)");
    std::optional<test::Immutable> letter(folder.Path("docs/deep/letter"));
    std::optional<test::Immutable> notes(folder.Path("notes"));
    if (!*letter) GTEST_SKIP() << "no object can be made immutable here";
    std::filesystem::remove(History::UsualPath());
    const std::string failed = "Failed | " + SystemMessageLine(ERROR_ACCESS_DENIED) + " | ";
    Edit({"docs", "notes", "data"}, [&](WindowDriver& window) {
        window.SelectRow(IDC_ACCESS_LIST, 0);
        window.Click(IDC_REMOVE_ENTRY);
        window.Click(IDC_REPLACE_CHILD_ENTRIES);
        ui.ExpectDialog(IDD_APPLY_TO_TREE);
        ui.ExpectDialog(IDD_CHANGE_RESULTS, [&](WindowDriver& results) {
            EXPECT_THAT(
                results.Rows(IDC_RESULTS),
                ElementsAre("notes | " + failed + "notes", "letter | " + failed + "docs\\deep\\letter",
                            "docs | Done |  | docs", "data | Done |  | data"));
            letter.reset();
            Give(folder.Path("data"), "D:P(A;;FA;;;BG)");
            ui.ExpectDialog(IDD_APPLY_TO_TREE);
            results.Click(IDC_TRY_AGAIN);
            EXPECT_EQ(results.Text(IDC_RESULTS_SUMMARY), "1 object failed, 3 are done.");
            notes.reset();
            results.Click(IDC_TRY_AGAIN);
            EXPECT_EQ(results.Text(IDC_RESULTS_SUMMARY), "0 objects failed, 4 are done.");
            EXPECT_FALSE(results.IsEnabled(IDC_TRY_AGAIN));
            results.Press("Esc");
        });
        window.Click(SheetButton::kOk);
    });
    EXPECT_EQ(DaclText(folder.Path("docs/deep/letter")), "D:AI(A;ID;FA;;;BA)");
    EXPECT_EQ(DaclText(folder.Path("notes")), "D:PAI(A;OICI;FA;;;BA)");
    EXPECT_EQ(DaclText(folder.Path("data")), "D:PAI(A;;FA;;;BG)") << "only what had failed";
    EXPECT_EQ(std::ranges::count(RecordedChanges(), '\n'), 3) << "each try is a change";
}

// What does not inherit as it should is told of, and not the item, which is written once.
TEST_F(SecuritySheet, WhatCannotInheritIsTriedAgainWithoutItsFolder) {
    for (const char* name : {"docs/report/a", "docs/report/b"})
        Give(folder.MakeFolder(name), "D:AI");
    Give(folder.MakeFile("docs/report/b/file"), "D:AI");
    std::optional<test::Immutable> first(folder.Path("docs/report/a"));
    std::optional<test::Immutable> second(folder.Path("docs/report/b"));
    if (!*first) GTEST_SKIP() << "no object can be made immutable here";
    Edit({"docs"}, [&](WindowDriver& window) {
        window.SelectRow(IDC_ACCESS_LIST, 0);
        window.Click(IDC_REMOVE_ENTRY);
        Add(window, [](WindowDriver& entry) { entry.Click(IDC_ALLOW_READ_ATTRIBUTES); });
        ui.ExpectDialog(IDD_CHANGE_RESULTS, [&](WindowDriver& results) {
            EXPECT_THAT(results.Rows(IDC_RESULTS),
                        ElementsAre(EndsWith("| docs\\report\\a"), EndsWith("| docs\\report\\b"),
                                    "docs | Done |  | docs"));
            EXPECT_EQ(test::SetDescriptorText(folder.Path("docs"), "D:P(A;OICI;FA;;;BG)"),
                      ERROR_ACCESS_DENIED);
            second.reset();
            results.Click(IDC_TRY_AGAIN);
            EXPECT_EQ(results.Text(IDC_RESULTS_SUMMARY), "1 object failed, 2 are done.");
            results.Press("Esc");
        });
        window.Click(SheetButton::kOk);
    });
    for (const char* name : {"docs/report/b", "docs/report/b/file"})
        EXPECT_THAT(DaclText(folder.Path(name)), HasSubstr("ID;FA;;;BG")) << name;
    EXPECT_EQ(DaclText(folder.Path("docs")), "D:PAI(A;OICI;FA;;;BG)");
}

TEST_F(SecuritySheet, WhatWasShownIsChangedAndNothingElseThatHasItsName) {
    const std::string docs = DaclText(folder.Path("docs"));
    const std::string report = DaclText(folder.Path("docs/report"));
    Give(folder.MakeFolder("important"), "D:P(A;OICI;FA;;;BU)");
    Give(folder.MakeFile("important/file"), "D:P(A;;FA;;;BG)");
    Edit({"docs", "data"}, [&](WindowDriver& window) {
        window.SelectRow(IDC_ACCESS_LIST, 0);
        window.Click(IDC_REMOVE_ENTRY);
        window.Click(IDC_REPLACE_CHILD_ENTRIES);
        std::filesystem::rename(folder.Path("docs"), folder.Path("moved"));
        std::filesystem::rename(folder.Path("important"), folder.Path("docs"));
        constexpr const char* kLeftAlone =
            "\"docs\" is left alone: another object has this name since it was shown here.";
        ui.ExpectDialog(IDD_APPLY_TO_TREE);
        ui.ExpectError(kLeftAlone);
        ui.ExpectError(kLeftAlone);  // the first item is read anew
        window.Click(SheetButton::kOk);
    });
    EXPECT_EQ(DaclText(folder.Path("docs")) + DaclText(folder.Path("docs/file")),
              "D:PAI(A;OICI;FA;;;BU)D:PAI(A;;FA;;;BG)");
    EXPECT_EQ(DaclText(folder.Path("moved")) + DaclText(folder.Path("moved/report")), docs + report);
    EXPECT_EQ(DaclText(folder.Path("data")), "D:PAI(A;OICI;FA;;;BA)");
}

TEST_F(SecuritySheet, WhatAnotherProgramChangedIsNotOverwrittenUnasked) {
    for (const int answer : {IDNO, IDYES}) {
        Give(folder.Path("data"), "D:P(A;;FA;;;BU)(A;;FA;;;BA)");
        Edit({"data"}, [&](WindowDriver& window) {
            window.SelectRow(IDC_ACCESS_LIST, 0);
            window.Click(IDC_REMOVE_ENTRY);
            Give(folder.Path("data"), "D:P(D;;FA;;;BG)(A;;FA;;;BU)");
            ui.ExpectMessageBox(HasSubstr("\"data\" was changed by another program"), "Changed meanwhile",
                                MB_YESNO | MB_ICONQUESTION, answer);
            window.Click(SheetButton::kApply);
            EXPECT_FALSE(window.IsEnabled(SheetButton::kApply));
            EXPECT_EQ(window.Rows(IDC_ACCESS_LIST).size(), answer == IDNO ? 2U : 1U) << "what is there now";
            window.Click(SheetButton::kOk);
        });
        EXPECT_EQ(DaclText(folder.Path("data")),
                  answer == IDNO ? "D:PAI(D;;FA;;;BG)(A;;FA;;;BU)" : "D:PAI(A;;FA;;;BA)");
    }
}

TEST_F(SecuritySheet, AFolderOnWhichSomethingIsMountedIsToldWhenATreeIsReset) {
    if (const std::string reason = test::CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    const std::string mounted = folder.MakeFolder("docs/report/mounted");
    ASSERT_EQ(mount("none", mounted.c_str(), "tmpfs", 0, nullptr), 0);
    Edit({"docs"}, [&](WindowDriver& window) {
        window.Click(IDC_REPLACE_CHILD_ENTRIES);
        ui.ExpectDialog(IDD_APPLY_TO_TREE);
        ui.ExpectInformation(
            "Something is mounted on \"docs\\report\\mounted\". What is mounted is a volume of its own and "
            "was "
            "left as it is.");
        window.Click(SheetButton::kOk);
    });
    umount2(mounted.c_str(), MNT_DETACH);
    EXPECT_EQ(DaclText(folder.Path("docs/report")), "D:AI(A;OICIID;FA;;;BA)");
}

TEST_F(SecuritySheet, InheritedEntriesAreKeptCopiedOrRemoved) {
    struct Case {
        int answer;
        std::string list;
    };
    const Case cases[] = {
        {IDCANCEL, "D:AI(A;;CCLC;;;WD)(A;OICIID;FA;;;BA)"},
        {IDYES, "D:PAI(A;OICI;FA;;;BA)(A;;CCLC;;;WD)"},
        {IDNO, "D:PAI(A;;CCLC;;;WD)"},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.answer);
        Give(folder.Path("docs/report"), "D:(A;;CCLC;;;WD)");
        Edit({"docs/report"}, [&](WindowDriver& window) {
            window.SelectRow(IDC_ACCESS_LIST, 1);
            EXPECT_FALSE(window.IsEnabled(IDC_REMOVE_ENTRY)) << "an inherited entry";
            ui.ExpectMessageBox(
                "Would you like to copy inherited entries into this access control list?\nClick Yes to copy\n"
                "Click No to delete inherited entries\nClick Cancel to cancel operation",
                "Inherited entries", MB_YESNOCANCEL | MB_ICONQUESTION, each.answer);
            window.Click(IDC_INHERIT_FROM_PARENT);
            EXPECT_EQ(window.IsChecked(IDC_INHERIT_FROM_PARENT), each.answer == IDCANCEL);
            window.Click(SheetButton::kOk);
        });
        EXPECT_EQ(DaclText(folder.Path("docs/report")), each.list);
    }
    // Where nothing is inherited there is nothing to ask.
    Give(folder.MakeFile("data/plain"), "D:(A;;FR;;;WD)");
    Edit({"data/plain"}, [](WindowDriver& window) {
        window.Click(IDC_INHERIT_FROM_PARENT);
        window.Click(SheetButton::kOk);
    });
    EXPECT_EQ(DaclText(folder.Path("data/plain")), "D:PAI(A;;FR;;;WD)");
}

TEST_F(SecuritySheet, AnInheritedEntryIsEditedByExplicitOnes) {
    Edit({"docs/report"}, [&](WindowDriver& window) {
        ui.ExpectDialog(IDD_PERMISSION_ENTRY, [](WindowDriver& entry) {
            for (const int id :
                 {IDC_ALLOW_DELETE, IDC_APPLY_ONTO, IDC_CHILDREN_ONLY, IDC_CHANGE_ENTRY_ACCOUNT})
                EXPECT_FALSE(entry.IsEnabled(static_cast<unsigned>(id))) << id;
            entry.Click(IDC_DENY_DELETE);
            entry.Click(IDC_ENTRY_OK);
        });
        window.DoubleClickRow(IDC_ACCESS_LIST, 1);
        EXPECT_THAT(
            window.Rows(IDC_ACCESS_LIST)[0],
            "Deny | BUILTIN\\Administrators | Delete | Not inherited | This folder, subfolders and files");
        window.Click(SheetButton::kCancel);
    });
    EXPECT_EQ(DaclText(folder.Path("docs/report")), "D:AI(A;;CCLC;;;WD)(A;OICIID;FA;;;BA)");
}

TEST_F(SecuritySheet, AnEditedEntryKeepsWhereItReaches) {
    Give(folder.Path("data"), "D:P(A;CINP;CCLC;;;BU)");
    Edit({"data"}, [&](WindowDriver& window) {
        ui.ExpectDialog(IDD_PERMISSION_ENTRY, [](WindowDriver& entry) {
            EXPECT_TRUE(entry.IsChecked(IDC_CHILDREN_ONLY));
            entry.Click(IDC_ALLOW_DELETE);
            entry.Click(IDC_ENTRY_OK);
        });
        window.DoubleClickRow(IDC_ACCESS_LIST, 0);
        window.Click(SheetButton::kOk);
    });
    EXPECT_EQ(DaclText(folder.Path("data")), "D:PAI(A;CINP;0x110005;;;BU)");
}

TEST_F(SecuritySheet, SaysWhoObeysTheListAndWhereEntriesAreInheritedFrom) {
    const test::ScopedVariable settings("XDG_CONFIG_HOME", folder.MakeFolder("settings"));
    const auto awaitKept = [](WindowDriver& window) {
        EXPECT_TRUE(window.WaitUntil([&] { return !window.Text(IDC_LIST_KEPT).empty(); }));
        return window.Text(IDC_LIST_KEPT);
    };
    Edit({"docs/report"}, [&](WindowDriver& window) {
        EXPECT_THAT(awaitKept(window),
                    HasSubstr(geteuid() == 0 ? "Kept for Samba; " : "Kept in user.permora.sd; "));
        EXPECT_EQ(window.Headers(IDC_ACCESS_LIST).size(), 5U);
        window.Click(IDC_SHOW_SOURCES);
        EXPECT_EQ(window.Headers(IDC_ACCESS_LIST).back(), "Inherited From");
        EXPECT_THAT(window.Rows(IDC_ACCESS_LIST)[1], EndsWith("\\docs"));
        window.SelectRow(IDC_ACCESS_LIST, 0);
        window.Click(IDC_REMOVE_ENTRY);
        EXPECT_THAT(window.Rows(IDC_ACCESS_LIST)[0], EndsWith("\\docs")) << "after an edit";
        window.Click(SheetButton::kCancel);
    });
    // What was chosen is kept.
    Edit({"docs/report", "notes"}, [&](WindowDriver& window) {
        EXPECT_THAT(awaitKept(window), HasSubstr("Their mode bits differ."));
        EXPECT_THAT(window.Rows(IDC_ACCESS_LIST)[1], EndsWith("\\docs"));
        window.Click(IDC_SHOW_SOURCES);
        EXPECT_EQ(window.Headers(IDC_ACCESS_LIST).size(), 5U);
        window.Click(SheetButton::kCancel);
    });
}

TEST_F(SecuritySheet, ListsWithoutEntriesCanOnlyBeAddedTo) {
    Give(folder.Path("data"), "D:P");
    const auto expectEmpty = [](WindowDriver& window) {
        EXPECT_THAT(window.Rows(IDC_ACCESS_LIST), IsEmpty());
        EXPECT_TRUE(window.IsEnabled(IDC_ADD_ENTRY));
        for (const int id : {IDC_ACCESS_LIST, IDC_EDIT_ENTRY, IDC_REMOVE_ENTRY})
            EXPECT_FALSE(window.IsEnabled(static_cast<unsigned>(id))) << id;
        window.Press("Esc");
    };
    Edit({"data"}, expectEmpty);
    Give(folder.Path("data"), "D:NO_ACCESS_CONTROL");
    ui.ExpectInformation(HasSubstr("All access is currently allowed"));
    Edit({"data"}, expectEmpty);
}

TEST_F(SecuritySheet, AnItemThatCannotBeReadCanOnlyBeAddedTo) {
    ui.ExpectError(HasSubstr("file"));
    Edit({"gone", "data"}, [](WindowDriver& window) {
        EXPECT_TRUE(window.IsEnabled(IDC_ADD_ENTRY));
        for (const int id : {IDC_ACCESS_LIST, IDC_EDIT_ENTRY, IDC_REMOVE_ENTRY, IDC_INHERIT_FROM_PARENT,
                             IDC_REPLACE_CHILD_ENTRIES})
            EXPECT_FALSE(window.IsEnabled(static_cast<unsigned>(id))) << id;
        window.Click(SheetButton::kOk);  // nothing was changed: nothing is written
    });
    EXPECT_EQ(DaclText(folder.Path("data")), "D:PAI(A;;FA;;;BU)");
}

TEST_F(SecuritySheet, FilesHaveNothingBelowAndDriveRootsNothingAbove) {
    Edit({"notes"}, [](WindowDriver& window) {
        EXPECT_FALSE(window.IsEnabled(IDC_REPLACE_CHILD_ENTRIES));
        EXPECT_TRUE(window.IsEnabled(IDC_INHERIT_FROM_PARENT));
        EXPECT_FALSE(window.IsChecked(IDC_INHERIT_FROM_PARENT));
        window.Press("Esc");
    });
    Edit(Place{PlaceKind::kDrives, nullptr, {"C:\\"}}, [](WindowDriver& window) {
        EXPECT_FALSE(window.IsEnabled(IDC_INHERIT_FROM_PARENT));
        EXPECT_TRUE(window.IsEnabled(IDC_REPLACE_CHILD_ENTRIES));
        window.Press("Esc");
    });
}

TEST_F(SecuritySheet, RowsKeepTheirEntryAndSayWhatIsUnusual) {
    // An audit-like entry of another type first, and an allow entry before a deny one.
    Give(folder.Path("data"), "D:P(OA;;CC;bf967aba-0de6-11d0-a285-00aa003049e2;;BA)(A;;FA;;;BU)(D;;WD;;;WD)");
    Edit({"data"}, [](WindowDriver& window) {
        ASSERT_EQ(window.Rows(IDC_ACCESS_LIST).size(), 2U);
        EXPECT_EQ(window.Text(IDC_LIST_REMARK),
                  "The entries are not in the usual order. 1 entry of another type is not shown; applying "
                  "drops it.");
        window.SelectRow(IDC_ACCESS_LIST, 1);
        window.Click(IDC_REMOVE_ENTRY);
        EXPECT_THAT(window.Rows(IDC_ACCESS_LIST), ElementsAre(HasSubstr("BUILTIN\\Users")));
        window.Click(SheetButton::kOk);
    });
    EXPECT_EQ(DaclText(folder.Path("data")), "D:PAI(A;;FA;;;BU)");
}

TEST_F(SecuritySheet, EntriesThatANewListCannotHoldAreToldOfBefore) {
    Give(folder.Path("data"), "D:P(A;SA;FR;;;BG)(A;;FA;;;BU)(A;;FR;;;WD)");  // flags of entries that audit
    Edit({"data"}, [](WindowDriver& window) {
        EXPECT_EQ(window.Text(IDC_LIST_REMARK), "1 entry is not valid; applying drops it.");
        window.SelectRow(IDC_ACCESS_LIST, 2);
        window.Click(IDC_REMOVE_ENTRY);
        window.Click(SheetButton::kOk);
    });
    EXPECT_EQ(DaclText(folder.Path("data")), "D:PAI(A;;FA;;;BU)");
}

TEST_F(SecuritySheet, AListThatCannotBeMadeKeepsTheSheetOpen) {
    const std::string before = DaclText(folder.Path("docs"));
    Edit({"docs"}, [&](WindowDriver& window) {
        window.Click(IDC_REMOVE_ENTRY);
        areListsRefused = true;
        ui.ExpectError("Error: cannot initialize object's access control list");
        window.Click(SheetButton::kOk);
        areListsRefused = false;
        EXPECT_EQ(DaclText(folder.Path("docs")), before);
        EXPECT_TRUE(window.IsEnabled(SheetButton::kApply)) << "the changes are still there";
        window.Click(SheetButton::kCancel);
    });
    EXPECT_EQ(DaclText(folder.Path("docs")), before);
}

TEST_F(SecuritySheet, WithoutAChoiceNothingChanges) {
    Edit({"data"}, [&](WindowDriver& window) {
        ui.ExpectDialog(IDD_ACCOUNT_PICKER, [](WindowDriver& picker) { picker.Click(IDC_PICKER_CANCEL); });
        window.Click(IDC_ADD_ENTRY);
        ui.ExpectDialog(IDD_PERMISSION_ENTRY, [](WindowDriver& entry) { entry.Press("Esc"); });
        window.Click(IDC_EDIT_ENTRY);
        ui.ExpectInformation("Please, select item to edit");
        window.DoubleClickRow(IDC_ACCESS_LIST, WindowDriver::kBesideRows);
        window.Click(IDC_REMOVE_ENTRY);  // no row is selected now
        EXPECT_FALSE(window.IsEnabled(SheetButton::kApply));
        window.SelectRow(IDC_ACCESS_LIST, 0);
        window.Click(IDC_REMOVE_ENTRY);
        EXPECT_THAT(window.Rows(IDC_ACCESS_LIST), IsEmpty());
        window.Click(SheetButton::kCancel);
    });
    EXPECT_EQ(DaclText(folder.Path("data")), "D:PAI(A;;FA;;;BU)");
}

}  // namespace
}  // namespace permora
