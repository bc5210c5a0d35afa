// File attributes as a Samba server and its clients see them.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <string>

#include "platform/api/files.h"
#include "tests/support/samba_server.h"

namespace permora::host {
namespace {

std::array<char, 64> RawAttribute(const char* name) {
    std::array<char, 64> bytes{};
    EXPECT_GT(getxattr(name, "user.DOSATTRIB", bytes.data(), bytes.size()), 0);
    return bytes;
}

TEST(AttributesAndSamba, AgreeOnWhatEitherSets) {
    if (const std::string reason = test::SambaServer::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const test::SambaServer server;
    ASSERT_EQ(server.Problem(), "");
    ASSERT_EQ(chdir(server.Root().c_str()), 0);
    ASSERT_EQ(close(creat("ours", 0666)), 0);
    ASSERT_EQ(mkdir("folder", 0777), 0);

    ASSERT_TRUE(SetFileAttributesA("ours", FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN));
    ASSERT_TRUE(SetFileAttributesA("folder", FILE_ATTRIBUTE_SYSTEM));
    EXPECT_THAT(server.Smbclient("allinfo ours").output, testing::HasSubstr("attributes: RH (3)"));
    EXPECT_THAT(server.Smbclient("allinfo folder").output, testing::HasSubstr("attributes: SD (14)"));

    ASSERT_EQ(server.Smbclient("put /etc/passwd theirs; setmode theirs +hs").exitCode, 0);
    EXPECT_EQ(GetFileAttributesA("theirs"),
              FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);

    // What we change keeps everything else in the server's record, its creation time above all.
    const std::array<char, 64> before = RawAttribute("theirs");
    ASSERT_TRUE(SetFileAttributesA("theirs", FILE_ATTRIBUTE_NORMAL));
    EXPECT_THAT(server.Smbclient("allinfo theirs").output, testing::HasSubstr("attributes:  (80)"));
    ASSERT_TRUE(
        SetFileAttributesA("theirs", FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM));
    EXPECT_EQ(RawAttribute("theirs"), before);
    ASSERT_EQ(chdir("/"), 0);
}

}  // namespace
}  // namespace permora::host
