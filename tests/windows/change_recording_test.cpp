// Changes are recorded before they are made, and what was there is put back.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <ctime>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/nt/sid.h"
#include "platform/raw_security.h"
#include "tests/support/descriptor_texts.h"
#include "tests/support/recording_observer.h"
#include "tests/windows/test_folder.h"

namespace permora::test {
namespace {

using testing::IsEmpty;

constexpr SECURITY_INFORMATION kList = DACL_SECURITY_INFORMATION;
constexpr SECURITY_INFORMATION kProtectedList = kList | PROTECTED_DACL_SECURITY_INFORMATION;

// Looks at each object when it is told of it: it still is as it was, unless the system has made something
// else of it than was announced.
class LookingRecorder : public ChangeRecorder {
  public:
    static constexpr std::size_t kBatch = 16;

    DWORD BeginTop(const ChangedTop& top, std::uint64_t& number) override {
        number = tops.size();
        tops.push_back(top);
        return ERROR_SUCCESS;
    }
    DWORD Record(std::uint64_t top, std::span<const DescriptorChange> batch) override {
        if (++batches > mostBatches) error = ERROR_DISK_FULL;
        if (error != ERROR_SUCCESS) return error;
        for (const DescriptorChange& change : batch) {
            const StoredSecurity now = Find(top, change);
            const bool isCorrection = !paths.insert(change.path).second && now == change.after;
            if (now != change.before && !isCorrection) late.push_back(change.path);
            records.push_back(change);
        }
        return ERROR_SUCCESS;
    }
    std::size_t BatchSize() const override { return kBatch; }
    DWORD Error() const override { return error; }

    // The newest first, as an undo does it.
    void TakeBack() const {
        for (auto record = records.rbegin(); record != records.rend(); ++record) {
            HeldObject top;
            HeldObject object;
            StoredSecurity now;
            ASSERT_EQ(HeldObject::HoldTop(tops.front(), top), DWORD{ERROR_SUCCESS});
            ASSERT_EQ(top.HoldBelow(record->path, object), DWORD{ERROR_SUCCESS}) << record->path;
            ASSERT_EQ(object.ReadStored(now), DWORD{ERROR_SUCCESS}) << record->path;
            if (now == record->before) continue;
            EXPECT_EQ(object.WriteStored(record->after, record->before), DWORD{ERROR_SUCCESS})
                << record->path;
        }
    }

    std::size_t mostBatches = std::numeric_limits<std::size_t>::max();
    std::vector<ChangedTop> tops;
    std::vector<DescriptorChange> records;
    std::set<std::string> paths;
    std::vector<std::string> late;
    std::size_t batches = 0;

  private:
    StoredSecurity Find(std::uint64_t top, const DescriptorChange& change) const {
        HeldObject folder;
        HeldObject object;
        StoredSecurity now;
        EXPECT_EQ(HeldObject::HoldTop(tops.at(top), folder), DWORD{ERROR_SUCCESS});
        EXPECT_EQ(folder.HoldBelow(change.path, object), DWORD{ERROR_SUCCESS}) << change.path;
        EXPECT_EQ(object.ReadStored(now), DWORD{ERROR_SUCCESS});
        EXPECT_EQ(object.FileNumber(), change.fileNumber);
        EXPECT_EQ(object.IsFolder(), change.isFolder);
        return now;
    }

    DWORD error = ERROR_SUCCESS;
};

class ChangeRecording : public testing::Test {
  protected:
    // Some folders, one in the other, with enough in them for several batches.
    void SetUp() override {
        std::string folder;
        for (int depth = 0; depth < 4; ++depth) {
            for (int i = 0; i < kFilesInEach; ++i)
                Add(tree.MakeFile(folder + "file" + std::to_string(i)));
            Add(tree.MakeFolder(folder + "Ünïcödé"));
            folder += "Ünïcödé\\";
        }
        before = Snapshot();
    }

    std::map<std::string, StoredSecurity> Snapshot() const {
        std::map<std::string, StoredSecurity> all;
        for (const std::string& path : objects)
            EXPECT_EQ(Held(path).ReadStored(all[path]), DWORD{ERROR_SUCCESS}) << path;
        return all;
    }

    DWORD Reset() {
        std::array<DWORD, 2> empty{};
        auto* list = reinterpret_cast<PACL>(empty.data());
        InitializeAcl(list, sizeof empty, ACL_REVISION);
        return Held(tree.Path()).SetListsBelow(list, TreeListMode::kWrite, recorder, observer, counts);
    }

    static constexpr int kFilesInEach = 12;
    const TestFolder tree;
    std::vector<std::string> objects;
    std::map<std::string, StoredSecurity> before;
    RecordingObserver observer;
    TreeCounts counts;
    LookingRecorder recorder;

  private:
    void Add(const std::string& path) {
        EXPECT_EQ(SetListText(path, "D:(A;;FA;;;WD)"), DWORD{ERROR_SUCCESS});
        objects.push_back(path);
    }
};

TEST_F(ChangeRecording, ATreeIsRecordedInFewBatchesBeforeItIsWritten) {
    ASSERT_EQ(Reset(), DWORD{ERROR_SUCCESS});
    EXPECT_THAT(observer.passedOver, IsEmpty());
    EXPECT_EQ(counts.changed, objects.size());
    EXPECT_EQ(recorder.paths.size(), objects.size());
    EXPECT_THAT(recorder.late, IsEmpty());
    EXPECT_EQ(recorder.tops.size(), 1U);
    // Each may be followed by what the system has made of its objects.
    EXPECT_LE(recorder.batches, 2 * (objects.size() / LookingRecorder::kBatch + 1));
    EXPECT_NE(Snapshot(), before);
    recorder.TakeBack();
    EXPECT_EQ(Snapshot(), before);
}

TEST_F(ChangeRecording, WhatCannotBeRecordedIsNotWritten) {
    recorder.mostBatches = 0;
    EXPECT_EQ(Reset(), DWORD{ERROR_DISK_FULL});
    const UniqueLocal<void> list = DescriptorOf("D:P(A;;FR;;;WD)");
    FailuresBelow below;
    EXPECT_EQ(
        Held(objects.front()).WriteSecurity(kProtectedList, {.dacl = ListOf(list)}, nullptr, recorder, below),
        DWORD{ERROR_DISK_FULL});
    const nt::Sid nobody(5, {21, 1, 2, 3, 1001});
    EXPECT_EQ(Held(tree.Path())
                  .SetOwnersBelow(RawSid(nobody), LinkedFiles::kChange, TreeListMode::kWrite, recorder,
                                  observer, counts),
              DWORD{ERROR_DISK_FULL});
    EXPECT_EQ(counts.changed, 0U);
    EXPECT_EQ(Snapshot(), before);
}

TEST_F(ChangeRecording, AChangeThatStopsInTheMiddleComesBack) {
    recorder.mostBatches = 2;
    EXPECT_EQ(Reset(), DWORD{ERROR_DISK_FULL});
    EXPECT_GT(counts.changed, 0U);
    EXPECT_LT(counts.changed, objects.size());
    recorder.TakeBack();
    EXPECT_EQ(Snapshot(), before);
}

TEST_F(ChangeRecording, ACancelledWalkEndsWhatItHasBegun) {
    observer.limit = 20;
    EXPECT_EQ(Reset(), DWORD{ERROR_OPERATION_ABORTED});
    EXPECT_EQ(counts.changed, 20U);
    recorder.TakeBack();
    EXPECT_EQ(Snapshot(), before);
}

TEST_F(ChangeRecording, AListIsRecordedBeforeItIsWritten) {
    const std::string& path = objects.front();
    const UniqueLocal<void> list = DescriptorOf("D:P(A;;FR;;;WD)");
    FailuresBelow below;
    const auto write = [&](LookingRecorder& told) {
        return Held(path).WriteSecurity(kProtectedList, {.dacl = ListOf(list)}, nullptr, told, below);
    };
    ASSERT_EQ(write(recorder), DWORD{ERROR_SUCCESS});
    ASSERT_FALSE(recorder.records.empty());
    EXPECT_THAT(recorder.late, IsEmpty());
    EXPECT_EQ(recorder.paths, std::set<std::string>{""});
    EXPECT_EQ(recorder.tops.front().path, path);
    EXPECT_EQ(recorder.records.front().before, before[path]);
    EXPECT_EQ(recorder.records.back().after, Snapshot()[path]);
    recorder.TakeBack();
    EXPECT_EQ(Snapshot(), before);
}

TEST_F(ChangeRecording, WhatIsSoAlreadyLeavesNoRecord) {
    ReadParts parts;
    const HeldObject object = Held(objects.front());
    ASSERT_EQ(object.ReadSecurity(OWNER_SECURITY_INFORMATION, parts), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(object.WriteOwner(parts.owner, recorder), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(Held(tree.Path())
                  .SetOwnersBelow(parts.owner, LinkedFiles::kChange, TreeListMode::kWrite, recorder, observer,
                                  counts),
              DWORD{ERROR_SUCCESS});
    EXPECT_EQ(counts.unchanged, objects.size());
    EXPECT_THAT(recorder.tops, IsEmpty());
    EXPECT_THAT(recorder.records, IsEmpty());
}

TEST_F(ChangeRecording, WhatOthersHaveChangedIsNotPutBack) {
    const std::string& path = objects.front();
    ASSERT_EQ(SetListText(path, "D:P(A;;FR;;;WD)"), DWORD{ERROR_SUCCESS});
    const StoredSecurity changed = Snapshot()[path];
    const HeldObject object = Held(path);
    EXPECT_EQ(object.WriteStored(before[path], before[path]), DWORD{ERROR_REVISION_MISMATCH});
    StoredSecurity wanted = before[path];
    wanted.form = SecurityForm::kSamba;
    EXPECT_EQ(object.WriteStored(changed, wanted), DWORD{ERROR_NOT_SUPPORTED});
    wanted = before[path];
    wanted.hostOwner = 0;
    EXPECT_EQ(object.WriteStored(changed, wanted), DWORD{ERROR_NOT_SUPPORTED});
    wanted = before[path];
    wanted.bytes.pop_back();
    EXPECT_EQ(object.WriteStored(changed, wanted), DWORD{ERROR_INVALID_SECURITY_DESCR});
    EXPECT_EQ(Snapshot()[path], changed);
    EXPECT_EQ(object.WriteStored(changed, before[path]), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(Snapshot(), before);
}

// Only a system that keeps entries has anything to carry down.
TEST_F(ChangeRecording, AListIsCarriedDownAndAllOfItComesBack) {
    const std::string guarded = tree.Path("Ünïcödé");
    ASSERT_EQ(SetListText(guarded, "D:P(A;OICI;FA;;;BA)(A;OICI;FA;;;SY)(A;;FA;;;WD)"), DWORD{ERROR_SUCCESS});
    before = Snapshot();
    const UniqueLocal<void> list = DescriptorOf("D:P(A;OICI;FA;;;BA)(A;OICI;FR;;;WD)");
    FailuresBelow below;
    ASSERT_EQ(
        Held(tree.Path()).WriteSecurity(kProtectedList, {.dacl = ListOf(list)}, nullptr, recorder, below),
        DWORD{ERROR_SUCCESS});
    EXPECT_EQ(below.count, 0U);
    EXPECT_THAT(recorder.late, IsEmpty());
    EXPECT_EQ(DescriptorText(tree.Path("file0"), kList), "D:AI(A;;FA;;;WD)(A;ID;FA;;;BA)(A;ID;FR;;;WD)");
    EXPECT_EQ(Snapshot()[guarded], before[guarded]) << "a protected folder ends it";
    EXPECT_EQ(recorder.paths.size(), std::size_t{kFilesInEach} + 1);
    recorder.TakeBack();
    EXPECT_EQ(Snapshot(), before);
}

TEST(HeldObjectFinding, ATopIsTheSameObjectAtTheSamePathOrNone) {
    const TestFolder folder;
    const std::string path = folder.MakeFile("Ünïcödé 日本");
    ChangedTop top;
    ASSERT_EQ(Held(path).FindTop(top), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(top.path, path);
    EXPECT_FALSE(top.isFolder);
    const auto hold = [&top] {
        HeldObject found;
        return HeldObject::HoldTop(top, found);
    };
    EXPECT_EQ(hold(), DWORD{ERROR_SUCCESS});
    ASSERT_TRUE(MoveFileA(path.c_str(), folder.Path("moved").c_str()));
    EXPECT_EQ(hold(), DWORD{ERROR_FILE_NOT_FOUND});
    folder.MakeFile("Ünïcödé 日本");
    EXPECT_EQ(hold(), DWORD{ERROR_FILE_INVALID});
    ASSERT_TRUE(DeleteFileA(path.c_str()));
    ASSERT_TRUE(MoveFileA(folder.Path("moved").c_str(), path.c_str()));
    EXPECT_EQ(hold(), DWORD{ERROR_SUCCESS});
    top.mark.clear();
    EXPECT_EQ(hold(), DWORD{ERROR_FILE_INVALID});
}

TEST(HeldObjectFinding, NothingLeadsOutOfAFolderToWhatIsBelowIt) {
    const TestFolder folder;
    folder.MakeFolder("top");
    folder.MakeFolder("top\\sub");
    folder.MakeFile("top\\sub\\file");
    folder.MakeFile("outside");
    const HeldObject top = Held(folder.Path("top"));
    const struct {
        const char* path;
        DWORD error;
    } cases[] = {
        {"", ERROR_SUCCESS},
        {"sub", ERROR_SUCCESS},
        {"SUB\\File", ERROR_SUCCESS},
        {"sub\\never", ERROR_FILE_NOT_FOUND},
        {"sub\\file\\x", ERROR_DIRECTORY},
        {"..", ERROR_INVALID_NAME},
        {"..\\outside", ERROR_INVALID_NAME},
        {"sub\\..\\sub", ERROR_INVALID_NAME},
        {"sub\\.", ERROR_INVALID_NAME},
        {"\\sub", ERROR_INVALID_NAME},
        {"sub\\", ERROR_INVALID_NAME},
        {"sub\\\\file", ERROR_INVALID_NAME},
        {"sub/file", ERROR_INVALID_NAME},
        {"sub\\file:stream", ERROR_INVALID_NAME},
        {"sub\\file::$DATA", ERROR_INVALID_NAME},
    };
    for (const auto& each : cases) {
        HeldObject found;
        EXPECT_EQ(top.HoldBelow(each.path, found), each.error) << each.path;
    }
    HeldObject found;
    EXPECT_EQ(Held(folder.Path("outside")).HoldBelow("x", found), DWORD{ERROR_DIRECTORY});
    ASSERT_EQ(top.HoldBelow("sub\\file", found), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(found.FileNumber(), Held(folder.Path("top\\sub\\file")).FileNumber());
    EXPECT_NE(found.FileNumber(), Held(folder.Path("outside")).FileNumber());
}

TEST(HeldObjectFinding, ObjectsKnowWhetherTheyAreYoungerThanAMoment) {
    const TestFolder folder;
    const HeldObject object = Held(folder.MakeFile("file"));
    const auto now = static_cast<std::int64_t>(std::time(nullptr));
    for (const auto& [seconds, isYounger] : {std::pair(now - 1000, true), {now + 1000, false}}) {
        bool answer = !isYounger;
        EXPECT_EQ(object.WasBornAfter(seconds, answer), DWORD{ERROR_SUCCESS});
        EXPECT_EQ(answer, isYounger);
    }
}

}  // namespace
}  // namespace permora::test
