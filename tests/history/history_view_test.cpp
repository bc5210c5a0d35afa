// What the window of the history shows, without the window.
#include "history/history_view.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/history/recorded_changes.h"
#include "tests/support/temporary_folder.h"

namespace permora {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

std::string SidText(AccountRecord& account) {
    return account.GetSidText();
}

class HistoryViewTest : public ::testing::Test {
  protected:
    std::string Path() const { return folder.Path("state/history.db"); }

    const test::TemporaryFolder folder;
};

TEST_F(HistoryViewTest, SaysThatNothingWasRecordedYetAndMakesNoFile) {
    HistoryView view(Path());
    view.Read();
    EXPECT_EQ(view.Remark(), "Nothing has been recorded yet.");
    EXPECT_FALSE(view.Selected() || view.MayUndo());
    EXPECT_EQ(view.ObjectsTitle(), "&Objects of the selected change:");
    EXPECT_TRUE(view.RowsOf(0, SidText).empty());
    EXPECT_FALSE(std::filesystem::exists(Path()));
}

TEST_F(HistoryViewTest, ShowsTheNewestChangeFirstAndItsObjects) {
    const std::string file = folder.MakeFile("file");
    if (test::SetDescriptorText(file, "D:P(A;;FR;;;WD)") == ERROR_NOT_SUPPORTED)
        GTEST_SKIP() << "the temporary folder holds no access lists";
    test::ChangeMadeUpFiles(Path(), 2);
    test::ChangeLists(Path(), ChangeKind::kPermissions, {file}, "D:P(A;;FA;;;BA)");
    HistoryView view(Path());
    view.Read();
    ASSERT_EQ(view.Changes().size(), 2U);
    EXPECT_EQ(view.Selected(), 0U);
    EXPECT_EQ(view.ChangeRow(0)[4], "1");
    EXPECT_EQ(view.ChangeRow(1)[4], "2");
    EXPECT_EQ(view.ObjectRow(0)[1], "File");
    EXPECT_THAT(view.ObjectRow(0)[0], ::testing::EndsWith(R"(\file)"));
    const std::vector<ComparedRow> rows = view.RowsOf(0, SidText);
    ASSERT_EQ(rows.size(), 4U);
    EXPECT_EQ(rows[2], (ComparedRow{RowChange::kRemoved, "Allow", "S-1-1-0", rows[2].before, ""}));
    EXPECT_EQ(rows[3], (ComparedRow{RowChange::kAdded, "Allow", "S-1-5-32-544", "", "Full control"}));

    view.Select(1);
    EXPECT_EQ(view.ObjectRow(1)[0], R"(C:\made up\file 1)");
    // A change that was made meanwhile does not take the selection.
    test::ChangeMadeUpFiles(Path(), 3);
    view.Read();
    EXPECT_EQ(view.Selected(), 2U);
}

TEST_F(HistoryViewTest, ShowsTheObjectsOfAGreatChangePageByPage) {
    test::ChangeMadeUpFiles(Path(), 2000);
    test::ChangeMadeUpFiles(Path(), 2234);
    HistoryView view(Path());
    view.Read();
    const auto page = [&view] {
        return view.ObjectsTitle().substr(31) + (view.HasPageBefore() ? " before" : "") +
               (view.HasPageAfter() ? " after" : "") + " " +
               view.ObjectRow(0)[0].substr(std::string(R"(C:\made up\file )").size());
    };
    EXPECT_EQ(page(), " (1 to 1,000 of 2,234): after 0");
    view.ShowPageBefore();
    EXPECT_EQ(page(), " (1 to 1,000 of 2,234): after 0");
    view.ShowPageAfter();
    EXPECT_EQ(page(), " (1,001 to 2,000 of 2,234): before after 1000");
    EXPECT_EQ(view.Objects().size(), HistoryView::kPageObjects);
    view.ShowPageAfter();
    view.ShowPageAfter();
    EXPECT_EQ(page(), " (2,001 to 2,234 of 2,234): before 2000");
    EXPECT_EQ(view.Objects().size(), 234U);
    view.ShowPageBefore();
    EXPECT_EQ(page(), " (1,001 to 2,000 of 2,234): before after 1000");
    EXPECT_EQ(view.Remark(), "");
    EXPECT_TRUE(view.MayUndo());
    // Another change begins with its first page, and a full last one is the last.
    view.Select(1);
    view.ShowPageAfter();
    EXPECT_EQ(page(), " (1,001 to 2,000 of 2,000): before 1000");
}

TEST_F(HistoryViewTest, TakesBackWhatIsDoneOrCutOffAndNothingElse) {
    struct Case {
        ChangeState state;
        bool mayUndo;
    };
    for (const Case& each : {Case{ChangeState::kDone, true},
                             {ChangeState::kUndone, false},
                             {ChangeState::kPartlyUndone, true}}) {
        test::ChangeMadeUpFiles(Path(), 1);
        std::unique_ptr<History> history;
        std::vector<ChangeFacts> changes;
        ASSERT_EQ(History::Open(Path(), history), ERROR_SUCCESS);
        ASSERT_EQ(history->List(changes), ERROR_SUCCESS);
        if (each.state != ChangeState::kDone)
            ASSERT_EQ(history->MarkUndone(changes.front().number, each.state), ERROR_SUCCESS);
        HistoryView view(Path());
        view.Read();
        EXPECT_EQ(view.Changes().front().state, each.state);
        EXPECT_EQ(view.MayUndo(), each.mayUndo) << view.ChangeRow(0)[5];
    }
    std::unique_ptr<History> history;
    ASSERT_EQ(History::Open(Path(), history), ERROR_SUCCESS);
    const std::unique_ptr<Change> running = history->Begin(ChangeKind::kOwner);
    std::uint64_t number = 0;
    const DescriptorChange record;
    ASSERT_EQ(running->BeginTop({R"(C:\data)", true, {1}}, number), ERROR_SUCCESS);
    ASSERT_EQ(running->Record(number, {&record, 1}), ERROR_SUCCESS);
    HistoryView view(Path());
    view.Read();
    EXPECT_EQ(view.Changes().front().state, ChangeState::kRunning);
    EXPECT_FALSE(view.MayUndo());
}

TEST_F(HistoryViewTest, SaysWhyTheHistoryCannotBeRead) {
    test::ChangeMadeUpFiles(Path(), 1);
    HistoryView view(Path());
    view.Read();
    ASSERT_TRUE(view.MayUndo());
    std::filesystem::remove(Path() + "-wal");
    std::ofstream(Path()) << "no history at all, and that for longer than a header";
    view.Read();
    EXPECT_THAT(view.Remark(), HasSubstr("damaged"));
    EXPECT_TRUE(view.Changes().empty());
    EXPECT_FALSE(view.MayUndo());
}

TEST_F(HistoryViewTest, SaysOfAChangeThatIsGoneMeanwhileWhyItShowsNothing) {
    test::ChangeMadeUpFiles(Path(), 2);
    test::ChangeMadeUpFiles(Path(), 3);
    HistoryView view(Path());
    view.Read();
    std::unique_ptr<History> history;
    std::size_t removed = 0;
    ASSERT_EQ(History::Open(Path(), history), ERROR_SUCCESS);
    ASSERT_EQ(history->PruneOlder(INT64_MAX, removed), ERROR_SUCCESS);
    view.Select(1);
    EXPECT_THAT(view.Remark(), HasSubstr("no such change"));
    EXPECT_EQ(view.ObjectsTitle(), "&Objects of the selected change:");
    EXPECT_FALSE(view.MayUndo());
}

}  // namespace
}  // namespace permora
