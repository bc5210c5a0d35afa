// Programs that are killed in the middle of a change: what they have changed can be taken back.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "history/history.h"
#include "history/undo.h"
#include "platform/api/errors.h"
#include "platform/held_object.h"
#include "platform/nt/sid.h"
#include "tests/support/access_lists.h"
#include "tests/support/effort.h"
#include "tests/support/recording_observer.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

namespace fs = std::filesystem;
using std::chrono::microseconds;

constexpr int kKills = 34;  // of each of the three changes

using Snapshot = std::map<std::string, StoredSecurity>;

Snapshot SnapshotOf(const std::string& folder) {
    Snapshot snapshot;
    HeldObject top = Held(folder);
    EXPECT_EQ(top.ReadStored(snapshot[""]), ERROR_SUCCESS);
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        std::string path = entry.path().string().substr(folder.size() + 1);
        std::replace(path.begin(), path.end(), '/', '\\');
        HeldObject object;
        EXPECT_EQ(top.HoldBelow(path, object), ERROR_SUCCESS) << path;
        EXPECT_EQ(object.ReadStored(snapshot[path]), ERROR_SUCCESS) << path;
    }
    return snapshot;
}

// Hands on what it is told in small batches, so that there are many moments between them.
class InSmallBatches : public ChangeRecorder {
  public:
    explicit InSmallBatches(ChangeRecorder& recorder) : behind(recorder) {}
    DWORD BeginTop(const ChangedTop& top, std::uint64_t& number) override {
        return behind.BeginTop(top, number);
    }
    DWORD Record(std::uint64_t top, std::span<const DescriptorChange> batch) override {
        return behind.Record(top, batch);
    }
    std::size_t BatchSize() const override { return 64; }
    DWORD Error() const override { return behind.Error(); }

  private:
    ChangeRecorder& behind;
};

using Work = std::function<DWORD(const HeldObject& top, ChangeRecorder& recorder)>;

DWORD Apply(const HeldObject& top, ChangeRecorder& recorder) {
    const UniqueLocal<void> list = DescriptorOf("D:P(A;OICI;FA;;;SY)(A;OICI;FR;;;WD)");
    FailuresBelow below;
    return top.WriteSecurity(DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION,
                             {.dacl = ListOf(list)}, nullptr, recorder, below);
}

DWORD Reset(const HeldObject& top, ChangeRecorder& recorder) {
    const UniqueLocal<void> list = DescriptorOf("D:(A;OICI;FR;;;BG)");
    RecordingObserver observer;
    TreeCounts counts;
    return top.SetListsBelow(ListOf(list), TreeListMode::kWrite, recorder, observer, counts);
}

DWORD GiveAway(const HeldObject& top, ChangeRecorder& recorder) {
    const nt::Sid owner(22, {1, 1});
    std::vector<std::uint8_t> bytes(owner.Bytes().begin(), owner.Bytes().end());
    RecordingObserver observer;
    TreeCounts counts;
    return top.SetOwnersBelow(bytes.data(), LinkedFiles::kPassOver, TreeListMode::kWrite, recorder, observer,
                              counts);
}

class SilentUndo : public UndoObserver {
  public:
    bool Begin(const ChangedTop& /*top*/, const std::string& /*path*/) override { return true; }
    void Leave(const ChangedTop& /*top*/, const std::string& path, LeftAlone /*extent*/,
               DWORD reason) override {
        ADD_FAILURE() << path << " was left alone: " << reason;
    }
};

class KilledChanges : public testing::Test {
  protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "other owners need root";
        ASSERT_EQ(SetDescriptorText(tree.Path(), "O:BAD:P(A;OICI;FA;;;BA)"), ERROR_SUCCESS);
        for (int i = 0; i < 12; ++i) {
            const std::string folder =
                i < 4 ? std::to_string(i) : std::to_string(i % 4) + "/" + std::to_string(i);
            tree.MakeFolder(folder);
            // Some with a list of their own, some with what they inherit, some with none.
            for (int file = 0; file < 24; ++file) {
                const std::string path = tree.MakeFile(folder + "/f" + std::to_string(file));
                if (file % 3 == 0) ASSERT_EQ(SetDescriptorText(path, "D:(A;;FR;;;BU)"), ERROR_SUCCESS);
                if (file % 3 == 1) ASSERT_EQ(SetDescriptorText(path, "D:"), ERROR_SUCCESS);
            }
        }
    }

    void TearDown() override { RecordProperty("killed_in_the_middle", inTheMiddle); }

    // Makes the change in a process of its own, and kills that so long after the change has begun; with
    // nothing, never. When it came to its end, `duration` is no longer than it took.
    void Run(const Work& work, std::optional<microseconds> killed) {
        int begun[2];
        EXPECT_EQ(pipe(begun), 0);
        const pid_t child = fork();
        if (child == 0) {
            std::unique_ptr<History> history;
            if (History::Open(database, history) != ERROR_SUCCESS) _exit(2);
            const std::unique_ptr<Change> change = history->Begin(ChangeKind::kPermissions);
            InSmallBatches recorder(*change);
            if (write(begun[1], "", 1) != 1) _exit(2);
            const DWORD error = work(Held(tree.Path()), recorder);
            change->End();
            _exit(error == ERROR_SUCCESS ? 0 : 1);
        }
        close(begun[1]);
        char byte = 0;
        EXPECT_EQ(read(begun[0], &byte, 1), 1);
        close(begun[0]);
        const auto begin = std::chrono::steady_clock::now();
        if (killed) {
            std::this_thread::sleep_for(*killed);
            kill(child, SIGKILL);
        }
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        if (!WIFEXITED(status)) return;
        EXPECT_EQ(WEXITSTATUS(status), 0);
        // Not the moment that was meant: on a busy machine this process may have woken up long after it.
        const auto taken = std::chrono::duration_cast<microseconds>(std::chrono::steady_clock::now() - begin);
        duration = killed ? std::min(duration, taken) : taken;
    }

    // What has a record is as it was before or as it was to become, and the rest as it was.
    void ExpectRecorded(History& history, std::int64_t number, const Snapshot& before) {
        const Snapshot now = SnapshotOf(tree.Path());
        Snapshot unrecorded = before;
        std::size_t changed = 0;
        if (number != 0) {
            const DWORD error =
                history.VisitObjects(number, RecordOrder::kAsMade, [&](const RecordedObject& object) {
                    const DescriptorChange& change = object.change;
                    const StoredSecurity& security = now.at(change.path);
                    EXPECT_EQ(change.before, before.at(change.path)) << change.path;
                    // The owner on the host is written before the descriptor.
                    const bool isHalf =
                        security.hostOwner == change.after.hostOwner && security.bytes == change.before.bytes;
                    EXPECT_TRUE(security == change.before || security == change.after || isHalf)
                        << change.path;
                    if (security == change.after) ++changed;
                    unrecorded.erase(change.path);
                    return true;
                });
            ASSERT_EQ(error, ERROR_SUCCESS);
        }
        for (const auto& [path, security] : unrecorded)
            EXPECT_EQ(now.at(path), security) << path << " changed without a record";
        most = std::max(most, changed);
        if (changed > 0 && changed < most) ++inTheMiddle;
    }

    void KillAndUndo(const Work& work) {
        const Snapshot before = SnapshotOf(tree.Path());
        std::unique_ptr<History> history;
        ASSERT_EQ(History::Open(database, history), ERROR_SUCCESS);
        std::mt19937 random(1);
        std::int64_t last = 0;
        // The first one shows how long the change takes. The others are killed within that time.
        for (int kill = 0; !HasTriedEnough(kill, kKills, inTheMiddle); ++kill) {
            const microseconds moment = duration * static_cast<int>(random() % 1000) / 1000;
            Run(work, kill == 0 ? std::nullopt : std::optional<microseconds>(moment));
            std::vector<ChangeFacts> changes;
            ASSERT_EQ(history->List(changes), ERROR_SUCCESS);
            const std::int64_t number =
                changes.empty() || changes.front().number == last ? 0 : changes.front().number;
            ExpectRecorded(*history, number, before);
            if (number == 0) continue;
            SilentUndo observer;
            UndoCounts counts;
            ASSERT_EQ(UndoChange(*history, number, {}, observer, counts), ERROR_SUCCESS);
            ASSERT_EQ(SnapshotOf(tree.Path()), before) << "after kill " << kill;
            ASSERT_EQ(history->List(changes), ERROR_SUCCESS);
            last = changes.front().number;
        }
        EXPECT_GT(inTheMiddle, 0);
    }

    const TemporaryFolder tree;
    const TemporaryFolder state{FolderPlace::kMemory};
    const std::string database = state.Path("history.db");
    microseconds duration{0};
    std::size_t most = 0;  // that a change has changed, the first at least
    int inTheMiddle = 0;
};

TEST_F(KilledChanges, AListThatIsCarriedDownIsTakenBack) {
    KillAndUndo(Apply);
}

TEST_F(KilledChanges, ATreeThatIsResetIsTakenBack) {
    KillAndUndo(Reset);
}

TEST_F(KilledChanges, ATreeThatIsGivenAwayIsTakenBack) {
    KillAndUndo(GiveAway);
}

}  // namespace
}  // namespace permora::test
