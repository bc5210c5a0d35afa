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
        DeletionStep step;
        Rows rows;
    } cases[] = {
        {DeletionStep::kAskVolume, {"x: deleting... ", "cannot get disk information: " + denied}},
        {DeletionStep::kOpenFile, {"x: deleting... ", "cannot open file: " + denied}},
        {DeletionStep::kGetSize, {"x: deleting... ", "cannot get file size: " + denied}},
        {DeletionStep::kAllocate, {"x: deleting... ", "x: " + denied}},
        {DeletionStep::kWrite, {"x: deleting... ", "cannot write to file: " + denied}},
        {DeletionStep::kFlush, {"x: deleting... ", "cannot flush writing buffers: " + denied}},
        {DeletionStep::kDeleteFile, {"x: deleting... ", "cannot delete file: " + denied}},
        {DeletionStep::kRemoveFolder, {"x: cannot remove directory: " + denied}},
        {DeletionStep::kSeclude,
         {"x: deleting... ", "x: cannot be moved to where its names are counted: " + denied}},
    };
    for (const auto& each : cases) {
        ListedStatus status;
        status.BeginDeleting("x");
        status.Failed({each.step, "x", ERROR_ACCESS_DENIED});
        EXPECT_EQ(status.Rows(), each.rows);
    }
    ListedStatus status;  // what fails before its work begins
    status.Failed({DeletionStep::kExamine, "x", ERROR_ACCESS_DENIED});
    status.Failed({DeletionStep::kEnterFolder, "x", ERROR_ACCESS_DENIED});
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
    status.Failed({DeletionStep::kOpenFile, "three", ERROR_ACCESS_DENIED});
    status.WriteTotal();
    EXPECT_EQ(status.Rows(), (Rows{"one: deleted successefully", "two: deleting... ", "three: deleting... ",
                                   "", "Total deleted: 2"}));
    EXPECT_EQ(status.notices, 2);
}

}  // namespace
}  // namespace permora
