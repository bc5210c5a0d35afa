// What an undo came to, in sentences.
#include "history/undo_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "history/history_texts.h"
#include "platform/api/errors.h"

namespace permora {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

const ChangedTop kTop{R"(C:\data)", true, {1}};

TEST(UndoReport, SaysHowManyObjectsHaveWhatTheyHad) {
    struct Case {
        UndoCounts counts;
        DWORD error;
        const char* text;
        bool isComplete;
    };
    for (const Case& each : {
             Case{{.restored = 1}, ERROR_SUCCESS, "1 object has what was there before the change.", true},
             {{.restored = 1234},
              ERROR_SUCCESS,
              "1,234 objects have what was there before the change.",
              true},
             {{.restored = 2, .asBefore = 1},
              ERROR_SUCCESS,
              "3 objects have what was there before the change; 1 of them had it already.",
              true},
             {{.restored = 2},
              ERROR_OPERATION_ABORTED,
              "The undo was stopped. 2 objects have what was there before the change. The others were not "
              "touched; the change can be taken back again.",
              false},
         }) {
        UndoReport report;
        report.counts = each.counts;
        report.error = each.error;
        EXPECT_EQ(report.Text(), each.text);
        EXPECT_EQ(report.IsComplete(), each.isComplete) << each.text;
    }
}

TEST(UndoReport, NamesTheFirstObjectsThatWereLeftAlone) {
    UndoReport report;
    report.counts = {.restored = 1, .asBefore = 0, .leftAlone = 7};
    report.AddLeft(kTop, "", LeftAlone::kAllBelow, ERROR_FILE_INVALID);
    for (int i = 0; i < 6; ++i)
        report.AddLeft(kTop, "file " + std::to_string(i), LeftAlone::kObject, ERROR_REVISION_MISMATCH);
    const std::string text = report.Text();
    EXPECT_THAT(text, HasSubstr("\n\nLeft alone:\nC:\\data and everything below it: " +
                                LeftAloneText(ERROR_FILE_INVALID) +
                                "\nC:\\data\\file 0: " + LeftAloneText(ERROR_REVISION_MISMATCH)));
    EXPECT_THAT(text, EndsWith("\nand 2 more"));
    EXPECT_THAT(text, Not(HasSubstr("file 4")));
    EXPECT_FALSE(report.IsComplete());
}

TEST(UndoReport, SaysWhatEndedIt) {
    UndoReport report;
    report.error = ERROR_DISK_FULL;
    EXPECT_THAT(report.Text(), HasSubstr(HistoryFailureText(ERROR_DISK_FULL)));
    EXPECT_FALSE(report.IsComplete());
}

TEST(UndoReport, AsksAfterAnInterruptionWhatIsToBecomeOfTheChange) {
    ChangeFacts change;
    change.tops = 2;
    change.firstTop = "C:\\a";
    change.objects = 1;
    EXPECT_THAT(InterruptedText(change, 0),
                AllOf(StartsWith("The program ended in the middle of a change: permissions of 2 items, the "
                                 "first C:\\a, begun "),
                      EndsWith(". 1 object may have been changed. Undo it?")));
    EXPECT_THAT(InterruptedText(change, 2),
                EndsWith("2 changes before it were cut off, too; see the history."));
    change.kind = ChangeKind::kUndo;
    EXPECT_THAT(InterruptedText(change, 0), EndsWith("Go on with it?"));
}

}  // namespace
}  // namespace permora
