// Lists of shares over the machine's own table.
#include "shares/share_security.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>

#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "security/message_boxes.h"
#include "security/object_security.h"
#include "security/text_conversion.h"
#include "tests/support/command.h"
#include "tests/support/own_mounts.h"
#include "tests/support/recording_presenter.h"

namespace permora::test {
namespace {

using permora::testing::RecordingPresenter;
using ::testing::ElementsAre;

class ShareSecurityTest : public ::testing::Test {
  protected:
    // Each test is a process of its own.
    void SetUp() override {
        if (const std::string reason = CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
        ASSERT_EQ(EnterOwnMounts(), "");
        ASSERT_EQ(mount("tmpfs", "/etc", "tmpfs", 0, "mode=0755"), 0);
        for (const char* name : {"one", "two", "three"}) {
            std::basic_string<WCHAR> wideName;
            std::basic_string<WCHAR> path;
            SHARE_INFO_2 record{};
            record.shi2_netname = AnsiToWide(name, wideName);
            record.shi2_max_uses = 5;
            record.shi2_path = AnsiToWide("C:\\tmp", path);
            ASSERT_EQ(NetShareAdd(nullptr, 2, reinterpret_cast<LPBYTE>(&record), nullptr), NERR_Success);
        }
    }

    std::vector<std::string> Texts() {
        std::vector<std::string> texts;
        for (const auto& box : boxes.TakeBoxes())
            texts.push_back(box.text);
        return texts;
    }

    // What the share has, without the permissions page's changes to it.
    std::string ListOf(const char* name) {
        ShareSecurity share;
        if (!LoadShareDacl(nullptr, name, share)) return "unreadable";
        if (!share.hasDescriptor) return "no descriptor";
        if (share.dacl == nullptr) return "null";
        return std::to_string(share.entries.Entries().size()) + " of " +
               std::to_string(share.record->shi502_max_uses);
    }

    RecordingPresenter boxes;
};

TEST_F(ShareSecurityTest, AShareWithoutADescriptorGetsOneWhenItIsRead) {
    EXPECT_EQ(ListOf("one"), "no descriptor");
    ShareSecurity share;
    EXPECT_TRUE(ReadShareDacl(nullptr, "one", share));
    EXPECT_THAT(Texts(),
                ElementsAre("There is no security descriptor associated with object.", kNullListText));
    EXPECT_EQ(ListOf("one"), "null");
    EXPECT_TRUE(ReadShareDacl(nullptr, "one", share));
    EXPECT_THAT(Texts(), ElementsAre(kNullListText));
    // Reading without changing is possible too.
    EXPECT_TRUE(LoadShareDacl(nullptr, "two", share));
    EXPECT_EQ(ListOf("two"), "no descriptor");
    EXPECT_FALSE(ReadShareDacl(nullptr, "none", share));
    EXPECT_THAT(Texts(), ElementsAre(GetSystemMessageText(NERR_NetNameNotFound)));
    EXPECT_EQ(share.record, nullptr);
}

TEST_F(ShareSecurityTest, WritingEndsAtTheShareThatHasGone) {
    ShareSecurity share;
    for (const char* name : {"one", "two", "three"})
        ASSERT_TRUE(ReadShareDacl(nullptr, name, share));
    Texts();
    std::basic_string<WCHAR> two;
    ASSERT_EQ(NetShareDel(nullptr, AnsiToWide("two", two), 0), NERR_Success);
    const UniqueLibrary library = LoadAccessListLibrary(nullptr);
    PermissionChoice choice;
    BYTE everyone[] = {1, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0};
    ASSERT_TRUE(choice.account.SetSid(everyone));
    choice.denyMask = FILE_WRITE_DATA;
    share.entries.AddFromDialog(choice);
    const UniqueLocal<ACL> dacl = BuildDacl(nullptr, library.get(), share.entries);
    const char* names[] = {"one", "two", "three"};
    EXPECT_FALSE(WriteShareDacl(nullptr, names, dacl.get()));
    EXPECT_THAT(Texts(), ElementsAre(GetSystemMessageText(NERR_NetNameNotFound)));
    EXPECT_EQ(ListOf("one"), "1 of 5");
    EXPECT_EQ(ListOf("three"), "null");
}

}  // namespace
}  // namespace permora::test
