// Histories that earlier versions have written.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "history/history.h"
#include "platform/api/errors.h"
#include "platform/nt/sddl.h"
#include "tests/history/recorded_changes.h"
#include "tests/support/kept_files.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

constexpr const char* kBefore = "O:BAG:SYD:AI(A;OICIID;FA;;;BA)(A;ID;FR;;;S-1-5-21-1-2-3-1001)";
constexpr const char* kAfter = "O:BAG:SYD:P(D;;FW;;;BG)(A;;FA;;;WD)S:(AU;SA;FA;;;WD)";

// A tree with what makes rows of every kind: folders on the way, a descriptor with an owner of the host, one
// that was not stored, a share; a change that was taken back, and one that was cut off.
void MakeHistory(const std::string& path) {
    std::unique_ptr<History> history;
    ASSERT_EQ(History::Open(path, history), ERROR_SUCCESS);
    const auto make = [&](ChangeKind kind, const ChangedTop& top, const std::vector<DescriptorChange>& batch,
                          std::int64_t undoes = 0) {
        const std::unique_ptr<Change> change = history->Begin(kind, undoes);
        std::uint64_t number = 0;
        EXPECT_EQ(change->BeginTop(top, number), ERROR_SUCCESS);
        EXPECT_EQ(change->Record(number, batch), ERROR_SUCCESS);
        change->End();
    };
    const StoredSecurity before = StoredText(kBefore);
    const StoredSecurity after = StoredText(kAfter);
    StoredSecurity served = after;
    served.form = SecurityForm::kSamba;
    served.hostOwner = 1000;
    make(ChangeKind::kReset, {R"(C:\srv\data)", true, {1, 2, 3}},
         {{"", true, 5, before, after},
          {R"(Ünïcode folder\deep\file)", false, ~std::uint64_t{0}, before, after},
          {R"(Ünïcode folder\other)", false, 7, {SecurityForm::kNone, {}, 0}, served}});
    StoredSecurity share = before;
    share.form = SecurityForm::kShare;
    make(ChangeKind::kShare, {"Projects", false, {}}, {{"", false, 0, share, share}});
    make(ChangeKind::kUndo, {R"(C:\srv\data)", true, {1, 2, 3}}, {{"", true, 5, after, before}}, 1);
    EXPECT_EQ(history->MarkUndone(1, ChangeState::kPartlyUndone), ERROR_SUCCESS);
}

std::string KeptText(const StoredSecurity& stored) {
    std::string text = std::to_string(static_cast<int>(stored.form));
    if (stored.hostOwner) text += " of " + std::to_string(*stored.hostOwner);
    const auto descriptor = nt::SecurityDescriptor::FromBytes(stored.bytes);
    return descriptor ? text + ' ' + nt::ToSddl(*descriptor, 15).value_or("no text") : text;
}

// Everything in the history but times and the user.
std::vector<std::string> Contents(History& history) {
    std::vector<std::string> lines;
    std::vector<ChangeFacts> changes;
    EXPECT_EQ(history.List(changes), ERROR_SUCCESS);
    for (const ChangeFacts& change : changes) {
        EXPECT_FALSE(change.user.empty());
        EXPECT_GT(change.began, 1'700'000'000);
        lines.push_back(
            std::to_string(change.number) + ": kind " + std::to_string(static_cast<int>(change.kind)) +
            ", state " + std::to_string(static_cast<int>(change.state)) + ", undoes " +
            std::to_string(change.undoes) + ", " + std::to_string(change.objects) + " in " + change.firstTop);
        const auto visit = [&](const RecordedObject& object) {
            lines.push_back(
                object.top.path + '|' + object.change.path + (object.change.isFolder ? "\\" : "") + '|' +
                std::to_string(object.change.fileNumber) + '|' + std::to_string(object.top.mark.size()) +
                '|' + KeptText(object.change.before) + '|' + KeptText(object.change.after));
            return true;
        };
        EXPECT_EQ(history.VisitObjects(change.number, RecordOrder::kAsMade, visit), ERROR_SUCCESS);
    }
    return lines;
}

TEST(KeptHistories, OfEveryVersionAreReadWholeAndGoOn) {
    const TemporaryFolder folder(FolderPlace::kMemory);
    const std::string before = std::string("1 ") + kBefore;
    const std::string after = std::string("1 ") + kAfter;
    const std::string share = std::string("4 ") + kBefore;
    const std::vector<std::string> expected = {
        R"(3: kind 6, state 1, undoes 1, 1 in C:\srv\data)",
        R"(C:\srv\data|\|5|3|)" + after + '|' + before,
        "2: kind 5, state 1, undoes 0, 1 in Projects",
        "Projects||0|0|" + share + '|' + share,
        R"(1: kind 3, state 4, undoes 0, 3 in C:\srv\data)",
        R"(C:\srv\data|\|5|3|)" + before + '|' + after,
        R"(C:\srv\data|Ünïcode folder\deep\file|18446744073709551615|3|)" + before + '|' + after,
        R"(C:\srv\data|Ünïcode folder\other|7|3|0 of 0|2 of 1000 )" + std::string(kAfter),
    };
    for (const std::string& file : KeptFiles(folder.Path(), "history.db", MakeHistory)) {
        SCOPED_TRACE(file);
        std::unique_ptr<History> history;
        ASSERT_EQ(History::OpenToRead(file, history), ERROR_SUCCESS);
        EXPECT_EQ(Contents(*history), expected);
        ASSERT_EQ(History::Open(file, history), ERROR_SUCCESS);
        EXPECT_EQ(Contents(*history), expected);
        ChangeFacts last;
        ASSERT_EQ(history->FindLast(last), ERROR_SUCCESS);
        EXPECT_EQ(last.number, 2);
        history.reset();

        ChangeMadeUpFiles(file, 2);
        ASSERT_EQ(History::Open(file, history), ERROR_SUCCESS);
        std::vector<std::string> longer = Contents(*history);
        ASSERT_EQ(longer.size(), expected.size() + 3);
        longer.erase(longer.begin(), longer.begin() + 3);
        EXPECT_EQ(longer, expected);
        std::size_t removed = 0;
        EXPECT_EQ(history->PruneLarger(1, removed), ERROR_SUCCESS);
        EXPECT_EQ(removed, 3U);
    }
}

}  // namespace
}  // namespace permora::test
