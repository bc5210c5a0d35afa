// The security editor on shares.
#include "shares/share_sheet.h"
#include "platform/system_message.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <memory>

#include "editor/access_list_page.h"
#include "platform/api/errors.h"
#include "platform/nt/sddl.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"
#include "tests/shares/share_table.h"

namespace permora::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;

class ShareSheet : public WithShareTable {
  protected:
    ~ShareSheet() override { setInfoAnswer.reset(); }

    // Opens the sheet on shares; the script ends with a button of it.
    void Edit(const std::vector<std::string>& names, const UiDriver::Script& script) {
        ui.ExpectSheet("Security Editor - " + names.front(), script);
        EditShareSecurity(nullptr, {PlaceKind::kShares, nullptr, names}, changes);
    }
    ChangeSession changes{History::UsualPath(), {}};

    static void ExpectNoBoxes(const WindowDriver& window) {
        for (const int id : {IDC_INHERIT_FROM_PARENT, IDC_REPLACE_CHILD_ENTRIES}) {
            EXPECT_FALSE(window.IsEnabled(static_cast<unsigned int>(id))) << id;
            EXPECT_FALSE(window.IsChecked(static_cast<unsigned int>(id))) << id;
        }
    }
};

TEST_F(ShareSheet, GivesAShareItsFirstList) {
    AddShare("docs", nullptr);
    ui.ExpectInformation("There is no security descriptor associated with object.");
    ui.ExpectInformation(kNullListText);
    Edit({"docs"}, [&](WindowDriver& window) {
        EXPECT_EQ(ListOf("docs"), "D:NO_ACCESS_CONTROL") << "at once";
        EXPECT_THAT(window.Rows(IDC_ACCESS_LIST), IsEmpty());
        ui.ExpectDialog(IDD_ACCOUNT_PICKER, [](WindowDriver& picker) {
            picker.SetText(IDC_ACCOUNT_NAME, "Everyone");
            picker.Press("Return");
        });
        ui.ExpectDialog(IDD_PERMISSION_ENTRY, [](WindowDriver& entry) {
            EXPECT_EQ(entry.ComboItems(IDC_APPLY_ONTO).size(), 7U);
            entry.SelectItem(IDC_APPLY_ONTO, "Files only");
            entry.Click(IDC_ALLOW_READ_ATTRIBUTES);
            entry.Press("Return");
        });
        window.Click(IDC_ADD_ENTRY);
        window.Click(SheetButton::kApply);
        EXPECT_FALSE(window.IsEnabled(SheetButton::kApply));
        ExpectNoBoxes(window);
        window.Click(SheetButton::kOk);
    });
    EXPECT_EQ(ListOf("docs"), "D:(A;OIIO;0x100080;;;WD)");
    EXPECT_EQ(FactsOf("docs"), R"(T:\docs, for docs, 7)");
}

TEST_F(ShareSheet, EditsAnEntryForTheShareAlone) {
    AddShare("docs", "D:P(A;OICI;0x1200a9;;;BU)");
    Edit({"docs"}, [&](WindowDriver& window) {
        ExpectNoBoxes(window);
        window.DoubleClickRow(IDC_ACCESS_LIST, 0);
        ui.ExpectDialog(IDD_PERMISSION_ENTRY, [](WindowDriver& entry) {
            EXPECT_THAT(entry.ComboItems(IDC_APPLY_ONTO), ElementsAre("This folder only"));
            EXPECT_FALSE(entry.IsEnabled(IDC_CHILDREN_ONLY));
            entry.Click(IDC_DENY_DELETE);
            entry.Press("Return");
        });
        window.Click(IDC_EDIT_ENTRY);
        window.Click(SheetButton::kOk);
    });
    EXPECT_EQ(ListOf("docs"), "D:P(D;;SD;;;BU)(A;;0x1200a9;;;BU)");
}

TEST_F(ShareSheet, StopsAtTheFirstShareThatCannotBeWritten) {
    for (const char* name : {"first", "second", "third"})
        AddShare(name, "D:(A;;FA;;;BA)(A;;FA;;;BU)");
    Edit({"first", "second", "third"}, [&](WindowDriver& window) {
        window.SelectRow(IDC_ACCESS_LIST, 1);
        window.Click(IDC_REMOVE_ENTRY);
        ui.ExpectDialog(IDD_PREVIEW, [](WindowDriver& dialog) {
            ASSERT_TRUE(dialog.WaitUntil([&] { return dialog.IsEnabled(IDC_PREVIEW_COPY); }));
            EXPECT_THAT(dialog.Rows(IDC_PREVIEW_LINES),
                        IsSupersetOf({"Items: would change: 3, already so: 0, failed: 0",
                                      "  third: Allow BUILTIN\\Users: Full control"}));
            dialog.Click(IDCANCEL);
        });
        window.Click(IDC_PREVIEW);
        RemoveShare("second");
        ui.ExpectError(GetSystemMessageText(NERR_NetNameNotFound));
        window.Click(SheetButton::kOk);
        EXPECT_TRUE(window.IsOpen());
        EXPECT_TRUE(window.IsEnabled(SheetButton::kApply));
        EXPECT_EQ(ListOf("first"), "D:(A;;FA;;;BA)");
        EXPECT_EQ(ListOf("third"), "D:(A;;FA;;;BA)(A;;FA;;;BU)");

        AddShare("second", "D:(A;;FA;;;WD)");
        setInfoAnswer = ERROR_ACCESS_DENIED;
        ui.ExpectError(GetSystemMessageText(ERROR_ACCESS_DENIED));
        window.Click(SheetButton::kApply);
        EXPECT_EQ(ListOf("second"), "D:(A;;FA;;;WD)");

        setInfoAnswer.reset();
        window.Click(SheetButton::kOk);
    });
    for (const char* name : {"first", "second", "third"})
        EXPECT_EQ(ListOf(name), "D:(A;;FA;;;BA)") << name;
}

TEST_F(ShareSheet, AsksBeforeItOverwritesWhatAnotherProgramWrote) {
    const auto remove = [](WindowDriver& window) {
        window.SelectRow(IDC_ACCESS_LIST, 1);
        window.Click(IDC_REMOVE_ENTRY);
    };
    const auto changeMeanwhile = [this](const char* list) {
        RemoveShare("docs");
        AddShare("docs", list);
    };
    AddShare("docs", "D:(A;;FA;;;BA)(A;;FA;;;BU)");
    Edit({"docs"}, [&](WindowDriver& window) {
        remove(window);
        changeMeanwhile("D:(A;;FA;;;WD)(A;;FA;;;BG)");
        ui.ExpectMessageBox(::testing::HasSubstr("\"docs\" was changed by another program"),
                            "Changed meanwhile", MB_YESNO | MB_ICONQUESTION, IDNO);
        window.Click(SheetButton::kApply);
        EXPECT_EQ(ListOf("docs"), "D:(A;;FA;;;WD)(A;;FA;;;BG)");
        EXPECT_FALSE(window.IsEnabled(SheetButton::kApply)) << "it shows the new list";

        remove(window);
        changeMeanwhile("D:(A;;FA;;;BU)");
        ui.ExpectMessageBox(::testing::HasSubstr("\"docs\" was changed by another program"),
                            "Changed meanwhile", MB_YESNO | MB_ICONQUESTION, IDYES);
        window.Click(SheetButton::kOk);
    });
    EXPECT_EQ(ListOf("docs"), "D:(A;;FA;;;WD)");
}

TEST_F(ShareSheet, RecordsWhatEachShareHadBeforeItIsWritten) {
    std::filesystem::remove(History::UsualPath());
    AddShare("first", "O:BAD:(A;;FA;;;BA)(A;;FA;;;BU)");
    AddShare("second", "D:(A;;FA;;;WD)");
    Edit({"first", "second"}, [&](WindowDriver& window) {
        window.SelectRow(IDC_ACCESS_LIST, 1);
        window.Click(IDC_REMOVE_ENTRY);
        window.Click(SheetButton::kOk);
    });
    std::unique_ptr<History> history;
    ChangeFacts change;
    ASSERT_EQ(History::OpenToRead(History::UsualPath(), history), 0U);
    ASSERT_EQ(history->FindLast(change), 0U);
    EXPECT_EQ(change.kind, ChangeKind::kShare);
    std::vector<std::string> recorded;
    history->VisitObjects(change.number, RecordOrder::kAsMade, [&](const RecordedObject& object) {
        const auto textOf = [](const StoredSecurity& stored) {
            const auto value = nt::SecurityDescriptor::FromBytes(stored.bytes);
            return value ? nt::ToSddl(*value, 15).value_or("no text") : "damaged";
        };
        recorded.push_back(object.top.path + ": " + textOf(object.change.before) + " > " +
                           textOf(object.change.after));
        return true;
    });
    EXPECT_THAT(recorded, ElementsAre("first: O:BAD:(A;;FA;;;BA)(A;;FA;;;BU) > O:BAD:(A;;FA;;;BA)",
                                      "second: D:(A;;FA;;;WD) > D:(A;;FA;;;BA)"));
}

TEST_F(ShareSheet, LeavesAShareAloneThatTakesNoDescriptor) {
    AddShare("docs", nullptr);
    for (const NET_API_STATUS answer : {NET_API_STATUS{ERROR_ACCESS_DENIED}, NERR_Success}) {
        setInfoAnswer = answer;
        ui.ExpectInformation("There is no security descriptor associated with object.");
        if (answer == NERR_Success)
            ui.ExpectInformation("The security descriptor can not be associated with object.");
        else
            ui.ExpectError("Cannot assign new security descriptor: " + GetSystemMessageText(answer));
        Edit({"docs"}, [](WindowDriver& window) {
            for (const int id : {IDC_ACCESS_LIST, IDC_ADD_ENTRY, IDC_EDIT_ENTRY, IDC_REMOVE_ENTRY})
                EXPECT_FALSE(window.IsEnabled(static_cast<unsigned int>(id))) << id;
            window.Press("Esc");
        });
    }
    EXPECT_EQ(ListOf("docs"), "none");
}

}  // namespace
}  // namespace permora::test
