// What a process takes from the user for whom it was started as administrator.
#include "platform/administrator.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>

#include "platform/linux/base/unique_fd.h"
#include "tests/support/command.h"
#include "tests/support/project_folders.h"
#include "tests/support/scoped_variable.h"
#include "tests/support/temporary_folder.h"

namespace permora {
namespace {

constexpr uid_t kUser = 4321;

// A display with a name in the folder, as that user would have it.
class Display {
  public:
    Display(const test::TemporaryFolder& folder, const std::string& name, uid_t user)
        : path(folder.Path(name)), listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(bind(listener.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(chown(path.c_str(), kUser, kUser), 0);
        EXPECT_EQ(seteuid(user), 0);
        EXPECT_EQ(listen(listener.Get(), 1), 0);
        EXPECT_EQ(seteuid(0), 0);
    }
    const std::string& Path() const { return path; }
    // Whether the next connection, which must have been made, has this descriptor at its other end.
    bool IsConnectedTo(int descriptor) const {
        const host::UniqueFd connection(accept4(listener.Get(), nullptr, nullptr, SOCK_CLOEXEC));
        char sent = 'x';
        return write(connection.Get(), &sent, 1) == 1 && read(descriptor, &sent, 1) == 1;
    }

  private:
    std::string path;
    host::UniqueFd listener;
};

TEST(Administrator, TakesADisplayOfTheUserWhoAskedAlone) {
    if (!IsAdministrator()) GTEST_SKIP() << "another user is nobody's administrator";
    const test::TemporaryFolder folder;
    const Display own(folder, "own", kUser);
    const Display foreign(folder, "foreign", kUser + 1);
    const test::ScopedVariable display("WAYLAND_DISPLAY", "before");
    const test::ScopedVariable connection("WAYLAND_SOCKET", "");
    EXPECT_FALSE(IsStartedForUser());
    EXPECT_FALSE(UseDisplayOfUser(own.Path())) << "nobody has asked";
    {
        const test::ScopedVariable nonsense("PKEXEC_UID", std::to_string(kUser) + "x");
        EXPECT_TRUE(IsStartedForUser());
        EXPECT_FALSE(UseDisplayOfUser(own.Path()));
    }
    const test::ScopedVariable asker("PKEXEC_UID", std::to_string(kUser));
    EXPECT_TRUE(IsStartedForUser());
    for (const std::string& other : {foreign.Path(), folder.MakeFile("file"), folder.Path("none"),
                                     std::string("own"), '/' + std::string(PATH_MAX, 'x')})
        EXPECT_FALSE(UseDisplayOfUser(other)) << other;
    EXPECT_STREQ(std::getenv("WAYLAND_DISPLAY"), "before");
    EXPECT_STREQ(std::getenv("WAYLAND_SOCKET"), "");
}

TEST(Administrator, StaysWithTheDisplayThatWasChecked) {
    if (!IsAdministrator()) GTEST_SKIP() << "another user is nobody's administrator";
    const test::TemporaryFolder folder;
    const Display own(folder, "own", kUser);
    const test::ScopedVariable display("WAYLAND_DISPLAY", "before");
    const test::ScopedVariable connection("WAYLAND_SOCKET", "");
    const test::ScopedVariable asker("PKEXEC_UID", std::to_string(kUser));
    ASSERT_TRUE(UseDisplayOfUser(own.Path()));
    EXPECT_EQ(std::getenv("WAYLAND_DISPLAY"), own.Path());
    const host::UniqueFd kept(std::atoi(std::getenv("WAYLAND_SOCKET")));
    EXPECT_TRUE(own.IsConnectedTo(kept.Get()));
}

TEST(Administrator, TakesNoOptionsOfTheToolkitFromAUser) {
    if (!IsAdministrator()) GTEST_SKIP() << "another user is nobody's administrator";
    const test::CommandResult result = test::RunCommand(
        {"env", "PKEXEC_UID=4321", test::BuiltProgram("permora"), "-platformpluginpath", "/tmp", "/"});
    EXPECT_EQ(result.exitCode, 2) << result.output;
}

}  // namespace
}  // namespace permora
