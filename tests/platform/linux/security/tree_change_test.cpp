// Changes of trees, recorded before they are made: by any number of threads, in batches of any size.
#include "platform/linux/security/tree_change.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/linux/security/propagation.h"
#include "platform/linux/security/tree_setting.h"
#include "platform/nt/sddl.h"
#include "tests/platform/linux/security/random_tree.h"
#include "tests/support/access_lists.h"
#include "tests/support/command.h"
#include "tests/support/immutable.h"
#include "tests/support/memory_recorder.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/patience.h"
#include "tests/support/recording_observer.h"
#include "tests/support/temporary_folder.h"

namespace permora::host {
namespace {

using test::Held;
using test::Immutable;
using test::MakeRandomTree;
using test::MemoryRecorder;
using test::RecordingObserver;
using test::RunCommand;
using test::SetDescriptorText;
using test::TemporaryFolder;
using testing::IsEmpty;

constexpr const char* kListBefore = "O:BAD:P(A;OICI;FA;;;BA)";
constexpr const char* kListAfter = "D:P(D;OICIIO;FX;;;BG)(A;OICI;FA;;;CO)(A;CINP;FR;;;BU)";

enum class Kind { kPropagation, kLists, kOwners };

struct Outcome {
    DWORD error = ERROR_SUCCESS;
    TreeCounts counts;
    FailuresBelow failures;
};

Outcome Change(Kind kind, const std::string& hostPath, ChangeRecorder& recorder, std::size_t threads,
               TreeObserver& observer) {
    Outcome outcome;
    ObjectHandle folder;
    RecordedTop top;
    EXPECT_EQ(ObjectHandle::OpenAt(AT_FDCWD, hostPath.c_str(), folder), ERROR_SUCCESS);
    outcome.error = top.Begin(Held(hostPath), recorder);
    if (outcome.error != ERROR_SUCCESS) return outcome;
    switch (kind) {
        case Kind::kPropagation:
            outcome.error = PropagateList(folder, nt::FromSddl(kListAfter)->dacl, DescriptorStore(), top,
                                          outcome.failures, threads);
            break;
        case Kind::kLists:
            outcome.error = SetBelow(
                folder,
                ListBelow{.list = nt::FromSddl("D:(A;OICI;FR;;;WD)")->dacl, .mode = TreeListMode::kWrite},
                top, observer, outcome.counts, threads);
            break;
        case Kind::kOwners:
            outcome.error =
                SetBelow(folder, OwnerBelow{.owner = nt::Sid(22, {1, 1}), .linked = LinkedFiles::kPassOver},
                         top, observer, outcome.counts, threads);
            break;
    }
    return outcome;
}

Outcome Change(Kind kind, const std::string& hostPath, ChangeRecorder& recorder, std::size_t threads) {
    RecordingObserver observer;
    return Change(kind, hostPath, recorder, threads, observer);
}

using Snapshot = std::map<std::string, StoredSecurity>;

Snapshot SnapshotOf(const std::string& folder) {
    Snapshot snapshot;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        const std::string path = entry.path();
        EXPECT_EQ(Held(path).ReadStored(snapshot[path.substr(folder.size() + 1)]), ERROR_SUCCESS) << path;
    }
    return snapshot;
}

void CopyTree(const TemporaryFolder& from, const TemporaryFolder& to) {
    ASSERT_EQ(RunCommand({"cp", "-aT", from.Path(), to.Path()}).exitCode, 0);
}

std::string HostPathOf(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

// Whether each object that has changed since has its way from what it had to what it has in the records, and
// no record is about anything else.
void ExpectRecorded(const Snapshot& before, const Snapshot& now, const MemoryRecorder& recorder) {
    std::map<std::string, std::vector<const DescriptorChange*>> records;
    for (const DescriptorChange& record : recorder.records)
        records[HostPathOf(record.path)].push_back(&record);
    for (const auto& [name, security] : now) {
        const auto found = records.find(name);
        if (security == before.at(name)) continue;
        ASSERT_NE(found, records.end()) << name;
        EXPECT_EQ(found->second.front()->before, before.at(name)) << name;
        EXPECT_EQ(found->second.back()->after, security) << name;
    }
    for (const auto& [name, changes] : records)
        EXPECT_TRUE(now.contains(name)) << name;
    EXPECT_THAT(recorder.late, IsEmpty());
}

class TreeChanges
    : public testing::TestWithParam<std::tuple<Kind, std::size_t /* threads */, std::size_t /* batch */>> {
  protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "lists with owners of many kinds need root";
    }
    Kind kind = std::get<0>(GetParam());
    std::size_t threads = std::get<1>(GetParam());
    std::size_t batch = std::get<2>(GetParam());
    const TemporaryFolder tree;
};

INSTANTIATE_TEST_SUITE_P(TreeSecurity, TreeChanges,
                         testing::Combine(testing::Values(Kind::kPropagation, Kind::kLists, Kind::kOwners),
                                          testing::Values(1, 4), testing::Values(7, 512)));

TEST_P(TreeChanges, WhatChangesIsRecordedBeforeAndNothingElseIs) {
    MakeRandomTree(tree.Path(), kListBefore, 150, 1);
    const TemporaryFolder judge;
    CopyTree(tree, judge);
    ASSERT_EQ(Change(kind, judge.Path(), Unrecorded(), 1).error, ERROR_SUCCESS);
    const Snapshot before = SnapshotOf(tree.Path());
    MemoryRecorder recorder(batch);
    const Outcome outcome = Change(kind, tree.Path(), recorder, threads);
    EXPECT_EQ(outcome.error, ERROR_SUCCESS);
    EXPECT_EQ(outcome.failures.count, 0U);
    const Snapshot now = SnapshotOf(tree.Path());
    EXPECT_EQ(now, SnapshotOf(judge.Path()));
    ExpectRecorded(before, now, recorder);
    std::size_t changed = 0;
    for (const auto& [name, security] : now)
        if (security != before.at(name)) ++changed;
    EXPECT_GT(changed, 20U);
    EXPECT_EQ(recorder.records.size(), changed);
    if (kind != Kind::kPropagation) {
        EXPECT_EQ(outcome.counts.changed, changed);
        EXPECT_EQ(outcome.counts.unchanged, now.size() - changed);
    }
    // Nothing is left to do.
    MemoryRecorder again(batch);
    EXPECT_EQ(Change(kind, tree.Path(), again, threads).error, ERROR_SUCCESS);
    EXPECT_THAT(again.records, IsEmpty());
}

TEST_P(TreeChanges, WhatCannotBeRecordedIsNotWritten) {
    MakeRandomTree(tree.Path(), kListBefore, 150, 2);
    const Snapshot before = SnapshotOf(tree.Path());
    for (const std::size_t good : {0U, 1U, 2U}) {
        MemoryRecorder recorder(batch);
        recorder.mostBatches = good;
        const Outcome outcome = Change(kind, tree.Path(), recorder, threads);
        const bool isOver = recorder.batches <= good && recorder.Error() == ERROR_SUCCESS;
        EXPECT_EQ(outcome.error, isOver ? ERROR_SUCCESS : ERROR_DISK_FULL);
        const Snapshot now = SnapshotOf(tree.Path());
        ExpectRecorded(before, now, recorder);
        if (good == 0) EXPECT_EQ(now, before);
        for (const DescriptorChange& record : recorder.records)
            ASSERT_EQ(Held(tree.Path(HostPathOf(record.path)))
                          .WriteStored(now.at(HostPathOf(record.path)), record.before),
                      ERROR_SUCCESS);
        EXPECT_EQ(SnapshotOf(tree.Path()), before);
    }
}

// Folders that keep their lists, with enough in them to be in the batches of all threads; one of them is in
// another.
TEST_P(TreeChanges, WhatIsInAFolderThatCannotBeWrittenGetsWhatTheFolderHas) {
    const auto make = [](const TemporaryFolder& folder) {
        ASSERT_EQ(SetDescriptorText(folder.Path(), kListBefore), ERROR_SUCCESS);
        for (const char* name :
             {"kept", "kept/sub", "kept/sub/sub", "kept/inner", "free", "kept/sub/sub/deep"}) {
            folder.MakeFolder(name);
            ASSERT_EQ(SetDescriptorText(folder.Path(name), "O:BAD:"), ERROR_SUCCESS);
            for (int i = 0; i < 20; ++i)
                ASSERT_EQ(
                    SetDescriptorText(folder.MakeFile(std::string(name) + "/" + std::to_string(i)), "O:BAD:"),
                    ERROR_SUCCESS);
        }
        // In these nothing changes by the list that is announced, and everything by the one that is kept.
        for (const char* name : {"kept/sub", "kept/sub/sub/deep"})
            ASSERT_EQ(SetDescriptorText(folder.Path(name), "O:BAD:(A;OICI;FA;;;SY)"), ERROR_SUCCESS);
    };
    make(tree);
    const TemporaryFolder judge;
    CopyTree(tree, judge);
    const Immutable kept(tree.Path("kept"));
    const Immutable inner(tree.Path("kept/inner"));
    const Immutable judgesKept(judge.Path("kept"));
    const Immutable judgesInner(judge.Path("kept/inner"));
    if (!kept) GTEST_SKIP() << "the temporary folder is on a file system without immutable files";
    const Snapshot before = SnapshotOf(tree.Path());
    MemoryRecorder recorder(batch);
    RecordingObserver observer;
    RecordingObserver judges;
    const Outcome expected = Change(kind, judge.Path(), Unrecorded(), 1, judges);
    const Outcome outcome = Change(kind, tree.Path(), recorder, threads, observer);
    EXPECT_EQ(outcome.error, ERROR_SUCCESS);
    const Snapshot now = SnapshotOf(tree.Path());
    EXPECT_EQ(now, SnapshotOf(judge.Path()));
    EXPECT_EQ(now.at("kept"), before.at("kept"));
    EXPECT_NE(now.at("free/3"), before.at("free/3"));
    ExpectRecorded(before, now, recorder);
    EXPECT_EQ(observer.passedOver, judges.passedOver);
    EXPECT_EQ(std::tie(outcome.counts.changed, outcome.counts.unchanged, outcome.counts.passedOver),
              std::tie(expected.counts.changed, expected.counts.unchanged, expected.counts.passedOver));
    EXPECT_EQ(outcome.failures.count, expected.failures.count);
    EXPECT_EQ(outcome.failures.named, expected.failures.named);
    if (kind == Kind::kPropagation) {
        EXPECT_EQ(outcome.failures.count, 1U);
        for (const auto& [name, security] : now)
            if (name.starts_with("kept/")) EXPECT_EQ(security, before.at(name)) << name;
    }
}

TEST_P(TreeChanges, AStoppedChangeWritesNothingMore) {
    if (kind == Kind::kPropagation) return;  // nobody can stop it
    MakeRandomTree(tree.Path(), kListBefore, 150, 3);
    const Snapshot before = SnapshotOf(tree.Path());
    MemoryRecorder recorder(batch);
    RecordingObserver observer;
    observer.limit = 50;
    const Outcome outcome = Change(kind, tree.Path(), recorder, threads, observer);
    EXPECT_EQ(outcome.error, ERROR_OPERATION_ABORTED);
    const Snapshot now = SnapshotOf(tree.Path());
    ExpectRecorded(before, now, recorder);
    std::size_t changed = 0;
    for (const auto& [name, security] : now)
        if (security != before.at(name)) ++changed;
    EXPECT_EQ(outcome.counts.changed, changed);
    EXPECT_LE(changed, 50U);
}

// Changes a file as a server would, while the batch that holds it is being recorded.
class Meddler : public MemoryRecorder {
  public:
    explicit Meddler(std::string hostPath) : path(std::move(hostPath)) {}
    DWORD Record(std::uint64_t top, std::span<const DescriptorChange> batch) override {
        const DWORD result = MemoryRecorder::Record(top, batch);
        if (std::exchange(hasMeddled, true)) return result;
        const std::string other = path + ".other";
        EXPECT_EQ(SetDescriptorText(other, "O:BAD:P(A;;FX;;;BG)"), 0U);
        std::vector<char> value(4096);
        const ssize_t size = getxattr(other.c_str(), "security.NTACL", value.data(), value.size());
        EXPECT_EQ(setxattr(path.c_str(), "security.NTACL", value.data(), static_cast<std::size_t>(size), 0),
                  0);
        return result;
    }

  private:
    const std::string path;
    bool hasMeddled = false;
};

TEST(TreeChangesMeanwhile, WhatAServerWroteAfterTheRecordIsSeenAndRecorded) {
    if (geteuid() != 0) GTEST_SKIP() << "a server's attribute needs root";
    for (const Kind kind : {Kind::kPropagation, Kind::kOwners}) {
        const TemporaryFolder tree;
        ASSERT_EQ(SetDescriptorText(tree.Path(), kListBefore), 0U);
        for (const char* name : {"file", "file.other", "third"})
            ASSERT_EQ(SetDescriptorText(tree.MakeFile(name), "O:BAD:"), 0U);
        Meddler meddler(tree.Path("file"));
        EXPECT_EQ(Change(kind, tree.Path(), meddler, 1).error, ERROR_SUCCESS);
        EXPECT_EQ(test::DaclText(tree.Path("file")), "D:PAI(A;;FX;;;BG)");
        const auto owner = test::DescriptorText(tree.Path("file"), OWNER_SECURITY_INFORMATION);
        EXPECT_EQ(owner, kind == Kind::kOwners ? "O:S-1-22-1-1" : "O:BA");
        // From what the server wrote: taking that back is not this change's.
        const auto again = [](const DescriptorChange& record) { return record.path == "file"; };
        EXPECT_EQ(std::ranges::count_if(meddler.records, again), kind == Kind::kOwners ? 2 : 1);
    }
}

// Whoever is told of an object may be told while a recorder waits for the disk.
class PatientRecorder : public MemoryRecorder, public RecordingObserver {
  public:
    explicit PatientRecorder(std::size_t batch) : MemoryRecorder(batch) {}
    bool Begin(const char* name) override {
        const std::lock_guard lock(visiting);
        visited.notify_all();
        return RecordingObserver::Begin(name);
    }
    // Waits with the first batch until objects of the next one are visited.
    DWORD Record(std::uint64_t top, std::span<const DescriptorChange> batch) override {
        if (batches == 0) {
            std::unique_lock lock(visiting);
            hasGoneOn =
                visited.wait_for(lock, test::kPatience, [&] { return begun.size() > BatchSize() + 1; });
        }
        return MemoryRecorder::Record(top, batch);
    }
    bool hasGoneOn = false;

  private:
    std::mutex visiting;
    std::condition_variable visited;
};

TEST(TreeChangesMeanwhile, AWalkGoesOnWhileABatchIsRecordedAndWritesNothingOfIt) {
    if (geteuid() != 0) GTEST_SKIP() << "lists with owners of many kinds need root";
    for (const Kind kind : {Kind::kLists, Kind::kOwners}) {
        const TemporaryFolder tree;
        MakeRandomTree(tree.Path(), kListBefore, 150, 1);
        const Snapshot before = SnapshotOf(tree.Path());
        PatientRecorder recorder(8);
        EXPECT_EQ(Change(kind, tree.Path(), recorder, 1, recorder).error, ERROR_SUCCESS);
        EXPECT_TRUE(recorder.hasGoneOn);
        ExpectRecorded(before, SnapshotOf(tree.Path()), recorder);
    }
}

// What is recorded is what the volume then has, whatever keeps it there.
TEST(TreeChangesOnNtfs, AreRecordedByteForByte) {
    if (const std::string reason = test::NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const test::NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    ASSERT_EQ(mkdir(volume.Path("tree").c_str(), 0755), 0);
    MakeRandomTree(volume.Path("tree"), kListBefore, 150, 1);
    for (const Kind kind : {Kind::kPropagation, Kind::kLists, Kind::kOwners}) {
        const Snapshot before = SnapshotOf(volume.Path("tree"));
        MemoryRecorder recorder(64);
        EXPECT_EQ(Change(kind, volume.Path("tree"), recorder, 4).error, ERROR_SUCCESS);
        ExpectRecorded(before, SnapshotOf(volume.Path("tree")), recorder);
        EXPECT_GT(recorder.records.size(), 20U);
    }
}

}  // namespace
}  // namespace permora::host
