// The rows of the wizard's deletion page, letter by letter.
#include "wizard/deletion_status.h"

#include <gtest/gtest.h>

#include "platform/api/errors.h"
#include "platform/system_message.h"

namespace permora {
namespace {

// A base of its own, which is there before the base that is given it.
struct StopFlag {
    std::atomic<bool> isStopping = false;
};

class ListedStatus : public StopFlag, public DeletionStatus {
  public:
    ListedStatus() : DeletionStatus(isStopping) {}

    std::vector<std::string> Rows() {
        for (const StatusChange& change : TakeChanges()) {
            const auto row = static_cast<std::size_t>(change.row);
            if (row == rows.size()) rows.emplace_back();
            rows.at(row) = change.text;
        }
        return rows;
    }

    int notices = 0;

  private:
    void OnChanges() override { ++notices; }
    std::vector<std::string> rows;
};

using Rows = std::vector<std::string>;

TEST(DeletionStatus, EachFailureHasItsRow) {
    const std::string denied = GetSystemMessageText(ERROR_ACCESS_DENIED);
    const struct {
        Step step;
        Rows rows;
    } cases[] = {
        {Step::kAskVolume, {"x: deleting... ", "cannot get disk information: " + denied}},
        {Step::kOpenFile, {"x: deleting... ", "cannot open file: " + denied}},
        {Step::kGetSize, {"x: deleting... ", "cannot get file size: " + denied}},
        {Step::kTakeZeros, {"x: deleting... ", "x: " + denied}},
        {Step::kWrite, {"x: deleting... ", "cannot write to file: " + denied}},
        {Step::kFlush, {"x: deleting... ", "cannot flush writing buffers: " + denied}},
        {Step::kDeleteFile, {"x: deleting... ", "cannot delete file: " + denied}},
        {Step::kRemoveFolder, {"x: cannot remove directory: " + denied}},
        {Step::kSeclude, {"x: deleting... ", "x: cannot be moved to where its names are counted: " + denied}},
    };
    for (const auto& each : cases) {
        ListedStatus status;
        status.BeginDeleting("x");
        status.Failed({ERROR_ACCESS_DENIED, each.step, "x"});
        EXPECT_EQ(status.Rows(), each.rows);
    }
    ListedStatus status;  // what fails before its work begins
    status.Failed({ERROR_ACCESS_DENIED, Step::kExamine, "x"});
    status.Failed({ERROR_ACCESS_DENIED, Step::kEnterFolder, "x"});
    EXPECT_EQ(status.Rows(),
              (Rows{"x: cannot get attributes: " + denied, "x: cannot open directory: " + denied}));
}

TEST(DeletionStatus, AStopEndsTheRowsButNotTheCount) {
    ListedStatus status;
    status.BeginDeleting("one");
    status.Deleted("one");
    EXPECT_EQ(status.notices, 1) << "nobody took what was there";
    EXPECT_EQ(status.Rows(), Rows{"one: deleted successefully"});
    status.isStopping = true;
    status.BeginDeleting("two");
    status.Deleted("two");
    status.BeginDeleting("three");
    status.Failed({ERROR_ACCESS_DENIED, Step::kOpenFile, "three"});
    status.WriteTotal();
    EXPECT_EQ(status.Rows(), (Rows{"one: deleted successefully", "two: deleting... ", "three: deleting... ",
                                   "", "Total deleted: 2"}));
    EXPECT_EQ(status.notices, 2);
}

}  // namespace
}  // namespace permora
