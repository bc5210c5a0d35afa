// On real files.
#include "security/object_security.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "tests/support/access_lists.h"
#include "tests/support/places.h"
#include "tests/support/temporary_folder.h"

namespace {

int volumeProblem = 0;  // the errno value of every question about a volume

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the linker demands these names
extern "C" {

int __real_fstatfs(int descriptor, struct statfs* status);
int __wrap_fstatfs(int descriptor, struct statfs* status) {
    if (volumeProblem == 0) return __real_fstatfs(descriptor, status);
    errno = volumeProblem;
    return -1;
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)

namespace permora {
namespace {

using test::DaclText;
using test::Held;
using test::SetDescriptorText;
using ::testing::ElementsAre;
using ::testing::FieldsAre;
using ::testing::IsEmpty;

class ObjectSecurityTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const DWORD error = SetDescriptorText(folder.Path(), "D:P(A;;FA;;;BA)");
        if (error == ERROR_NOT_SUPPORTED) GTEST_SKIP() << "the temporary folder holds no access lists";
        for (const char* name : {"one", "two", "three"})
            ASSERT_EQ(SetDescriptorText(folder.MakeFile(name), kOwnList), ERROR_SUCCESS);
        std::filesystem::current_path(folder.Path());
    }
    void TearDown() override { volumeProblem = 0; }

    void Damage(const std::string& name) const {
        const char* attribute = geteuid() == 0 ? "security.NTACL" : "user.permora.sd";
        ASSERT_EQ(setxattr(folder.Path(name).c_str(), attribute, "\x01\x00garbage", 9, 0), 0);
    }

    Outcome Read(const std::string& name) {
        return ReadObjectDacl(Held(name.starts_with('/') ? name : folder.Path(name)), object);
    }

    Outcomes Write(const RememberedPlace& place, const char* sddl, PSECURITY_DESCRIPTOR shown,
                   ChangeRecorder& recorder = Unrecorded()) const {
        const UniqueLocal<void> descriptor = test::DescriptorOf(sddl);
        PACL dacl = nullptr;
        BOOL isPresent = FALSE;
        BOOL isDefaulted = FALSE;
        EXPECT_TRUE(GetSecurityDescriptorDacl(descriptor.get(), &isPresent, &dacl, &isDefaulted));
        ChangeResults results;
        WriteListToItems(place.items, PlacesOf(place.items, Contents::kNone), DaclInheritance::kProtected,
                         {dacl, dacl}, shown, recorder, results);
        Outcomes failures;
        for (const ObjectResult& each : results.Listed(ResultState::kFailed))
            failures.push_back(each.outcome);
        return failures;
    }
    Outcomes Write(const RememberedPlace& place, const char* sddl) const {
        return Write(place, sddl, object.descriptor.get());
    }

    static RememberedPlace Items(std::vector<std::string> names) {
        return RememberPlace(test::InCurrentFolder(std::move(names)));
    }

    static constexpr const char* kOwnList = "D:P(A;;FR;;;BU)(A;;FX;;;BG)";
    static constexpr const char* kOwnListRead = "D:PAI(A;;FR;;;BU)(A;;FX;;;BG)";
    static constexpr const char* kNewList = "D:PAI(A;;FA;;;BG)";

    const test::TemporaryFolder folder;
    ObjectSecurity object;
};

TEST_F(ObjectSecurityTest, ANullListReadsAsNoEntries) {
    ASSERT_TRUE(Read("one").IsDone());
    ASSERT_EQ(SetDescriptorText(folder.Path("one"), "D:NO_ACCESS_CONTROL"), ERROR_SUCCESS);
    ASSERT_TRUE(Read("one").IsDone());
    EXPECT_TRUE(object.entries.Entries().empty());
    EXPECT_EQ(object.dacl, nullptr);
}

TEST_F(ObjectSecurityTest, AnInaccessibleVolumeCountsAsOneWithAccessControlWhereTheReaderSaysSo) {
    const HeldObject held = Held(folder.Path("one"));
    ASSERT_TRUE(Read("two").IsDone());
    volumeProblem = EACCES;
    EXPECT_TRUE(ReadObjectDacl(held, object).IsDone());
    EXPECT_EQ(ReadListOfObject(held, HiddenVolume::kFail, object).code, DWORD{ERROR_ACCESS_DENIED});
    EXPECT_NE(object.dacl, nullptr) << "what was read before";
}

TEST_F(ObjectSecurityTest, AFailedReadLeavesWhatWasRead) {
    ASSERT_TRUE(Read("one").IsDone());
    const ACL* before = object.dacl;
    Damage("two");
    const struct {
        const char* name;
        int volumeProblem;
        DWORD code;
        Step step;
    } cases[] = {
        {"three", EIO, ERROR_IO_DEVICE, Step::kNone},
        {"/proc/self", 0, ERROR_NOT_SUPPORTED, Step::kUseAccessControl},
        {"two", 0, ERROR_INVALID_SECURITY_DESCR, Step::kNone},
    };
    for (const auto& each : cases) {
        volumeProblem = each.volumeProblem;
        const Outcome outcome = Read(each.name);
        EXPECT_EQ(outcome.code, each.code) << each.name;
        EXPECT_EQ(outcome.step, each.step) << each.name;
        EXPECT_EQ(object.dacl, before);
        EXPECT_EQ(object.entries.Entries().size(), 2U);
    }
}

TEST_F(ObjectSecurityTest, WritesEveryItemAndReportsEachThatFails) {
    ASSERT_TRUE(Read("one").IsDone());
    Damage("two");
    EXPECT_THAT(Write(Items({"one", "two", "gone", "three"}), kNewList),
                ElementsAre(FieldsAre(ERROR_INVALID_SECURITY_DESCR, Step::kNone, "two", ""),
                            FieldsAre(ERROR_FILE_NOT_FOUND, Step::kNone, "gone", "")));
    EXPECT_EQ(DaclText(folder.Path("one")) + DaclText(folder.Path("three")),
              std::string(kNewList) + kNewList);
}

TEST_F(ObjectSecurityTest, AnItemWhoseNameWasGivenToAnotherObjectIsReportedAndBothStayAsTheyWere) {
    ASSERT_TRUE(Read("one").IsDone());
    const RememberedPlace place = Items({"one", "two"});
    std::filesystem::rename(folder.Path("one"), folder.Path("moved"));
    std::filesystem::rename(folder.Path("three"), folder.Path("one"));
    EXPECT_THAT(Write(place, kNewList),
                ElementsAre(FieldsAre(ERROR_FILE_INVALID, Step::kFindAgain, "one", "")));
    EXPECT_EQ(DaclText(folder.Path("one")) + DaclText(folder.Path("moved")),
              std::string(kOwnListRead) + kOwnListRead);
    EXPECT_EQ(DaclText(folder.Path("two")), kNewList);
}

TEST_F(ObjectSecurityTest, WhereAnotherProgramChangedTheShownListNothingIsWritten) {
    ASSERT_TRUE(Read("one").IsDone());
    constexpr const char* kForeign = "D:PAI(D;;FA;;;BG)";
    ASSERT_EQ(SetDescriptorText(folder.Path("one"), kForeign), ERROR_SUCCESS);
    EXPECT_THAT(Write(Items({"one", "two"}), kNewList),
                ElementsAre(FieldsAre(ERROR_REVISION_MISMATCH, Step::kNone, "one", "")));
    EXPECT_EQ(DaclText(folder.Path("one")) + DaclText(folder.Path("two")),
              std::string(kForeign) + kOwnListRead);
    EXPECT_THAT(Write(Items({"one", "two"}), kNewList, nullptr), IsEmpty());
    EXPECT_EQ(DaclText(folder.Path("one")) + DaclText(folder.Path("two")), std::string(kNewList) + kNewList);
}

// Takes some batches, and then has no room for more.
class FullRecorder : public ChangeRecorder {
  public:
    explicit FullRecorder(int batches) : room(batches) {}
    DWORD BeginTop(const ChangedTop& /*top*/, std::uint64_t& /*number*/) override { return error; }
    DWORD Record(std::uint64_t /*top*/, std::span<const DescriptorChange> /*batch*/) override {
        if (room-- <= 0) error = ERROR_DISK_FULL;
        return error;
    }
    DWORD Error() const override { return error; }

  private:
    int room;
    DWORD error = ERROR_SUCCESS;
};

TEST_F(ObjectSecurityTest, AChangeThatCannotBeRecordedStopsThere) {
    ASSERT_TRUE(Read("one").IsDone());
    FullRecorder recorder(1);
    EXPECT_THAT(Write(Items({"one", "two", "three"}), kNewList, object.descriptor.get(), recorder),
                ElementsAre(FieldsAre(ERROR_DISK_FULL, Step::kRecord, "two", "")));
    EXPECT_EQ(DaclText(folder.Path("one")), kNewList);
    EXPECT_EQ(DaclText(folder.Path("two")) + DaclText(folder.Path("three")),
              std::string(kOwnListRead) + kOwnListRead);
}

TEST_F(ObjectSecurityTest, AFailureBelowIsReportedAsThatOfTheObjectBelow) {
    folder.MakeFolder("top");
    ASSERT_EQ(SetDescriptorText(folder.MakeFolder("top/sub"), "D:"), ERROR_SUCCESS);
    for (const char* name : {"top/sub/bad", "top/sub/worse"}) {
        folder.MakeFile(name);
        Damage(name);
    }
    ASSERT_TRUE(Read("top").IsDone());
    EXPECT_THAT(
        Write(Items({"top"}), "D:P(A;OICI;FA;;;BG)"),
        ElementsAre(FieldsAre(ERROR_INVALID_SECURITY_DESCR, Step::kCarryDown, "top\\sub\\bad", "top"),
                    FieldsAre(ERROR_INVALID_SECURITY_DESCR, Step::kCarryDown, "top\\sub\\worse", "top")));
    EXPECT_EQ(DaclText(folder.Path("top")), "D:PAI(A;OICI;FA;;;BG)");
    EXPECT_EQ(DaclText(folder.Path("top/sub")), "D:AI(A;OICIID;FA;;;BG)");
}

}  // namespace
}  // namespace permora
