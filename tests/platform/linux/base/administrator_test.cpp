// What a process takes from the user for whom it was started as administrator.
#include "platform/administrator.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/support/command.h"
#include "tests/support/scoped_variable.h"
#include "tests/support/temporary_folder.h"

namespace permora {
namespace {

constexpr uid_t kUser = 4321;

// An open socket with a name in the folder, of that user.
std::string MakeSocket(const test::TemporaryFolder& folder, const std::string& name, uid_t user) {
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    const std::string path = folder.Path(name);
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int made = socket(AF_UNIX, SOCK_STREAM, 0);
    EXPECT_EQ(bind(made, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    close(made);
    EXPECT_EQ(chown(path.c_str(), user, user), 0);
    return path;
}

TEST(Administrator, TakesADisplayOfTheUserWhoAskedAlone) {
    if (!IsAdministrator()) GTEST_SKIP() << "another user is nobody's administrator";
    const test::TemporaryFolder folder;
    const std::string own = MakeSocket(folder, "own", kUser);
    const std::string foreign = MakeSocket(folder, "foreign", kUser + 1);
    const std::string file = folder.MakeFile("file");
    ASSERT_EQ(chown(file.c_str(), kUser, kUser), 0);
    ASSERT_EQ(symlink(own.c_str(), folder.Path("link").c_str()), 0);
    const test::ScopedVariable display("WAYLAND_DISPLAY", "before");
    EXPECT_FALSE(IsStartedForUser());
    EXPECT_FALSE(UseDisplayOfUser(own)) << "nobody has asked";
    {
        const test::ScopedVariable nonsense("PKEXEC_UID", std::to_string(kUser) + "x");
        EXPECT_TRUE(IsStartedForUser());
        EXPECT_FALSE(UseDisplayOfUser(own));
    }
    const test::ScopedVariable asker("PKEXEC_UID", std::to_string(kUser));
    EXPECT_TRUE(IsStartedForUser());
    for (const std::string& other :
         {foreign, file, folder.Path("link"), folder.Path("none"), std::string("own")})
        EXPECT_FALSE(UseDisplayOfUser(other)) << other;
    EXPECT_STREQ(std::getenv("WAYLAND_DISPLAY"), "before");
    EXPECT_TRUE(UseDisplayOfUser(own));
    EXPECT_EQ(std::getenv("WAYLAND_DISPLAY"), own);
}

TEST(Administrator, TakesNoOptionsOfTheToolkitFromAUser) {
    if (!IsAdministrator()) GTEST_SKIP() << "another user is nobody's administrator";
    const test::CommandResult result =
        test::RunCommand({"env", "PKEXEC_UID=4321", PERMORA, "-platformpluginpath", "/tmp", "/"});
    EXPECT_EQ(result.exitCode, 2) << result.output;
}

}  // namespace
}  // namespace permora
