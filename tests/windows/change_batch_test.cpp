// Objects that wait for their folder, whatever becomes of it.
#include "platform/windows/change_batch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/api/errors.h"
#include "platform/nt/sddl.h"
#include "platform/windows/descriptor_write.h"
#include "platform/windows/folder_entry.h"
#include "tests/windows/test_folder.h"

namespace permora::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr DWORD kReading = READ_CONTROL | FILE_READ_ATTRIBUTES;
constexpr DWORD kWriting = kReading | WRITE_DAC;

class BatchRecorder : public ChangeRecorder {
  public:
    DWORD BeginTop(const ChangedTop& /*top*/, std::uint64_t& /*number*/) override { return ERROR_SUCCESS; }
    DWORD Record(std::uint64_t /*top*/, std::span<const DescriptorChange> batch) override {
        batches.emplace_back(batch.begin(), batch.end());
        return ERROR_SUCCESS;
    }
    DWORD Error() const override { return ERROR_SUCCESS; }

    std::vector<std::vector<DescriptorChange>> batches;
};

auto IsAt(const std::string& path) {
    return testing::Field(&DescriptorChange::path, path);
}

// An object gets the list of its folder.
class CopyingChanger : public DescriptorChanger {
  public:
    DWORD Change(const FoundObject& /*object*/, const WalkedFolder& folder, nt::SecurityDescriptor& after,
                 WayOn& /*wayOn*/) override {
        after.daclState = nt::DaclState::kList;
        after.dacl = folder.list;
        return ERROR_SUCCESS;
    }
    WayOn AfterFailure() const override { return afterFailure; }
    void PassOver(const std::string& path, DWORD error) override { passedOver.emplace_back(path, error); }

    WayOn afterFailure = WayOn::kEnter;
    std::vector<std::pair<std::string, DWORD>> passedOver;
};

class ChangeBatchTest : public testing::Test {
  protected:
    void SetUp() override {
        folder.MakeFolder("sub");
        folder.MakeFile("sub\\file");
        ASSERT_EQ(SetListText(folder.Path("sub"), "D:P(A;;FA;;;WD)"), DWORD{ERROR_SUCCESS});
        ASSERT_EQ(SetListText(folder.Path("sub\\file"), "D:P(A;;FR;;;WD)"), DWORD{ERROR_SUCCESS});
        above->list = ListFrom("D:P(A;;FX;;;WD)");
        top.reset(Open("", FILE_READ_ATTRIBUTES));
    }

    static nt::Acl ListFrom(const char* sddl) { return nt::FromSddl(sddl)->dacl; }

    HANDLE Open(const std::string& name, DWORD access) const {
        return CreateFileW(VerbatimPath(name.empty() ? folder.Path() : folder.Path(name)).c_str(), access,
                           kShareAll, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    }

    // As the walk would find it.
    WaitingObject Find(const std::string& name, DWORD access, std::shared_ptr<WalkedFolder> in,
                       std::shared_ptr<WalkedFolder> inside = nullptr) {
        WaitingObject found;
        found.object.path = name;
        found.object.handle.reset(Open(name, access));
        EXPECT_EQ(ReadDescriptor(found.object.handle.get(), found.before), DWORD{ERROR_SUCCESS}) << name;
        found.after = found.before;
        WayOn wayOn = WayOn::kEnter;
        changer.Change(found.object, *in, found.after, wayOn);
        found.folder = std::move(in);
        found.inside = std::move(inside);
        found.assumed = found.folder->version;
        if (found.inside) found.inside->list = found.after.dacl;
        return found;
    }

    // What everybody may do with it: also a system that keeps no entries keeps that.
    std::uint32_t RightsOn(const std::string& name) const {
        const nt::Sid everyone(1, {0});
        for (const nt::Ace& ace :
             nt::FromSddl(DescriptorText(folder.Path(name), DACL_SECURITY_INFORMATION))->dacl.entries)
            if (ace.sid == everyone) return ace.mask;
        return 0;
    }

    const TestFolder folder;
    CopyingChanger changer;
    BatchRecorder recorder;
    TreeCounts counts;
    UniqueHandle top;
    const std::shared_ptr<WalkedFolder> above = std::make_shared<WalkedFolder>();
    const std::shared_ptr<WalkedFolder> sub = std::make_shared<WalkedFolder>();
};

TEST_F(ChangeBatchTest, WhatIsInAFolderThatCouldNotBeWrittenIsComputedAndRecordedAgain) {
    RecordedTop records(recorder, top.get(), true);
    ChangeBatch batch(changer, records, counts);
    ASSERT_EQ(batch.Add(Find("sub", kReading, above, sub)), DWORD{ERROR_SUCCESS});
    ASSERT_EQ(batch.Add(Find("sub\\file", kWriting, sub)), DWORD{ERROR_SUCCESS});
    EXPECT_THAT(recorder.batches, IsEmpty());
    ASSERT_EQ(batch.Write(), DWORD{ERROR_SUCCESS});
    EXPECT_THAT(changer.passedOver, ElementsAre(Pair("sub", DWORD{ERROR_ACCESS_DENIED})));
    EXPECT_EQ(counts.changed, 1U);
    ASSERT_GE(recorder.batches.size(), 2U);
    EXPECT_THAT(recorder.batches[0], ElementsAre(IsAt("sub"), IsAt("sub\\file")));
    EXPECT_THAT(recorder.batches[1], ElementsAre(IsAt("sub\\file")));
    EXPECT_EQ(RightsOn("sub\\file"), RightsOn("sub")) << "it has what its folder has kept";
}

TEST_F(ChangeBatchTest, WhatIsInAFolderThatCouldNotBeWrittenMayBeLeftAlone) {
    changer.afterFailure = WayOn::kLeaveAlone;
    const std::uint32_t before = RightsOn("sub\\file");
    RecordedTop records(recorder, top.get(), true);
    ChangeBatch batch(changer, records, counts);
    ASSERT_EQ(batch.Add(Find("sub", kReading, above, sub)), DWORD{ERROR_SUCCESS});
    ASSERT_EQ(batch.Add(Find("sub\\file", kWriting, sub)), DWORD{ERROR_SUCCESS});
    ASSERT_EQ(batch.Write(), DWORD{ERROR_SUCCESS});
    EXPECT_THAT(changer.passedOver, ElementsAre(Pair("sub", DWORD{ERROR_ACCESS_DENIED})));
    EXPECT_TRUE(sub->isLeftAlone);
    EXPECT_EQ(counts.changed, 0U);
    EXPECT_EQ(recorder.batches.size(), 1U);
    EXPECT_EQ(RightsOn("sub\\file"), before);
}

TEST_F(ChangeBatchTest, WhatAnotherProgramMadeOfAnObjectIsRecordedToo) {
    RecordedTop records(recorder, top.get(), true);
    ChangeBatch batch(changer, records, counts);
    ASSERT_EQ(batch.Add(Find("sub\\file", kWriting, above)), DWORD{ERROR_SUCCESS});
    ASSERT_EQ(SetListText(folder.Path("sub\\file"), "D:P(A;;FW;;;WD)"), DWORD{ERROR_SUCCESS});
    StoredSecurity theirs;
    ASSERT_EQ(Held(folder.Path("sub\\file")).ReadStored(theirs), DWORD{ERROR_SUCCESS});
    ASSERT_EQ(batch.Write(), DWORD{ERROR_SUCCESS});
    EXPECT_THAT(changer.passedOver, IsEmpty());
    EXPECT_EQ(counts.changed, 1U);
    ASSERT_GE(recorder.batches.size(), 2U);
    ASSERT_THAT(recorder.batches[1], ElementsAre(IsAt("sub\\file")));
    EXPECT_EQ(recorder.batches[1][0].before, theirs);
}

}  // namespace
}  // namespace permora::test
