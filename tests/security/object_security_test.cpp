// On real files.
#include "security/object_security.h"

#include <gtest/gtest.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/system_message.h"
#include "security/message_boxes.h"
#include "tests/support/access_lists.h"
#include "tests/support/recording_presenter.h"
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
using test::RecordedBox;
using test::RecordingPresenter;
using test::SetDescriptorText;

RecordedBox ErrorBox(const std::string& text) {
    return {kErrorCaption, text, MB_ICONERROR};
}

RecordedBox SystemError(DWORD code) {
    return ErrorBox(GetSystemMessageText(code));
}

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

    bool Read(const std::string& name) {
        return ReadObjectDacl(nullptr, Held(name.starts_with('/') ? name : folder.Path(name)), object);
    }

    ItemsWritten Write(const std::vector<RememberedObject>& items, const char* sddl) {
        const UniqueLocal<void> descriptor = test::DescriptorOf(sddl);
        PACL dacl = nullptr;
        BOOL isPresent = FALSE;
        BOOL isDefaulted = FALSE;
        EXPECT_TRUE(GetSecurityDescriptorDacl(descriptor.get(), &isPresent, &dacl, &isDefaulted));
        return WriteListToItems(nullptr, items, DaclInheritance::kProtected, {dacl, dacl},
                                object.descriptor.get());
    }

    std::vector<RememberedObject> Items(const std::vector<const char*>& names) {
        return RememberItems(names, ItemPlace::kCurrentDirectory);
    }

    static constexpr const char* kOwnList = "D:P(A;;FR;;;BU)(A;;FX;;;BG)";
    static constexpr const char* kOwnListRead = "D:PAI(A;;FR;;;BU)(A;;FX;;;BG)";
    static constexpr const char* kNewList = "D:PAI(A;;FA;;;BG)";

    const test::TemporaryFolder folder;
    RecordingPresenter boxes;
    ObjectSecurity object;
};

TEST_F(ObjectSecurityTest, ANullListIsToldAndReadsAsNoEntries) {
    ASSERT_TRUE(Read("one"));
    ASSERT_EQ(SetDescriptorText(folder.Path("one"), "D:NO_ACCESS_CONTROL"), ERROR_SUCCESS);
    ASSERT_TRUE(Read("one"));
    EXPECT_TRUE(object.entries.Entries().empty());
    EXPECT_EQ(object.dacl, nullptr);
    EXPECT_EQ(boxes.TakeBoxes(),
              (std::vector<RecordedBox>{{kInformationCaption,
                                         "There is no any access control list associated with object (All "
                                         "access is currently allowed).",
                                         MB_ICONINFORMATION}}));
}

TEST_F(ObjectSecurityTest, AnInaccessibleVolumeCountsAsOneWithAccessControlWhereTheReaderSaysSo) {
    const HeldObject held = Held(folder.Path("one"));
    ASSERT_TRUE(Read("two"));
    volumeProblem = EACCES;
    EXPECT_TRUE(ReadObjectDacl(nullptr, held, object));
    EXPECT_FALSE(ReadListOfObject(nullptr, held, HiddenVolume::kFail, object));
    EXPECT_EQ(boxes.TakeBoxes(), std::vector<RecordedBox>{SystemError(ERROR_ACCESS_DENIED)});
    EXPECT_NE(object.dacl, nullptr) << "what was read before";
}

TEST_F(ObjectSecurityTest, AFailedReadIsToldAndLeavesWhatWasRead) {
    ASSERT_TRUE(Read("one"));
    const ACL* before = object.dacl;
    Damage("two");
    const struct {
        const char* name;
        int volumeProblem;
        RecordedBox box;
    } cases[] = {
        {"three", EIO, SystemError(ERROR_IO_DEVICE)},
        {"/proc/self",
         0,
         {kInformationCaption, "Access control is not supported by the file system", MB_ICONINFORMATION}},
        {"two", 0, SystemError(ERROR_INVALID_SECURITY_DESCR)},
    };
    for (const auto& each : cases) {
        volumeProblem = each.volumeProblem;
        EXPECT_FALSE(Read(each.name)) << each.name;
        EXPECT_EQ(boxes.TakeBoxes(), std::vector<RecordedBox>{each.box}) << each.name;
        EXPECT_EQ(object.dacl, before);
        EXPECT_EQ(object.entries.Entries().size(), 2U);
    }
}

TEST_F(ObjectSecurityTest, WritesEveryItemAndTellsEachThatFails) {
    ASSERT_TRUE(Read("one"));
    Damage("two");
    EXPECT_EQ(Write(Items({"one", "two", "gone", "three"}), kNewList), ItemsWritten::kAll);
    EXPECT_EQ(boxes.TakeBoxes(), (std::vector<RecordedBox>{SystemError(ERROR_INVALID_SECURITY_DESCR),
                                                           SystemError(ERROR_FILE_NOT_FOUND)}));
    EXPECT_EQ(DaclText(folder.Path("one")) + DaclText(folder.Path("three")),
              std::string(kNewList) + kNewList);
}

TEST_F(ObjectSecurityTest, AnItemWhoseNameWasGivenToAnotherObjectIsToldAndBothStayAsTheyWere) {
    ASSERT_TRUE(Read("one"));
    const std::vector<RememberedObject> items = Items({"one", "two"});
    std::filesystem::rename(folder.Path("one"), folder.Path("moved"));
    std::filesystem::rename(folder.Path("three"), folder.Path("one"));
    EXPECT_EQ(Write(items, kNewList), ItemsWritten::kAll);
    EXPECT_EQ(boxes.TakeBoxes(),
              (std::vector<RecordedBox>{
                  ErrorBox("\"one\" is left alone: another object has this name since it was shown here.")}));
    EXPECT_EQ(DaclText(folder.Path("one")) + DaclText(folder.Path("moved")),
              std::string(kOwnListRead) + kOwnListRead);
    EXPECT_EQ(DaclText(folder.Path("two")), kNewList);
}

TEST_F(ObjectSecurityTest, AListThatAnotherProgramChangedIsOverwrittenOnlyWhenTheUserSaysSo) {
    ASSERT_TRUE(Read("one"));
    constexpr const char* kForeign = "D:PAI(D;;FA;;;BG)";
    ASSERT_EQ(SetDescriptorText(folder.Path("one"), kForeign), ERROR_SUCCESS);
    for (const int answer : {IDNO, IDYES}) {
        boxes.answer = answer;
        EXPECT_EQ(Write(Items({"one", "two"}), kNewList),
                  answer == IDNO ? ItemsWritten::kReadAnew : ItemsWritten::kAll);
        const std::vector<RecordedBox> shown = boxes.TakeBoxes();
        ASSERT_EQ(shown.size(), 1U);
        EXPECT_EQ(shown[0].type, MB_YESNO | MB_ICONQUESTION);
        EXPECT_EQ(DaclText(folder.Path("one")), answer == IDNO ? kForeign : kNewList);
        EXPECT_EQ(DaclText(folder.Path("two")), answer == IDNO ? kOwnListRead : kNewList);
    }
}

TEST_F(ObjectSecurityTest, AFailureBelowIsToldAsThatOfTheObjectBelow) {
    folder.MakeFolder("top");
    ASSERT_EQ(SetDescriptorText(folder.MakeFolder("top/sub"), "D:"), ERROR_SUCCESS);
    for (const char* name : {"top/sub/bad", "top/sub/worse"}) {
        folder.MakeFile(name);
        Damage(name);
    }
    ASSERT_TRUE(Read("top"));
    EXPECT_EQ(Write(Items({"top"}), "D:P(A;OICI;FA;;;BG)"), ItemsWritten::kAll);
    const std::vector<RecordedBox> shown = boxes.TakeBoxes();
    ASSERT_EQ(shown.size(), 1U);
    const std::string text = shown[0].text;
    const std::string first = text.find("worse") != text.npos ? "worse" : "bad";
    EXPECT_EQ(text, SystemMessageLine(ERROR_INVALID_SECURITY_DESCR) + "\n\nThis is about \"top\\sub\\" +
                        first + "\" and 1 more below \"top\". \"top\" itself was changed.");
    EXPECT_EQ(DaclText(folder.Path("top")), "D:PAI(A;OICI;FA;;;BG)");
    EXPECT_EQ(DaclText(folder.Path("top/sub")), "D:AI(A;OICIID;FA;;;BG)");
}

}  // namespace
}  // namespace permora
