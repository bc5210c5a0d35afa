#include "platform/linux/files/linux_volume.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/files/tree_walk.h"
#include "tests/support/command.h"
#include "tests/support/temporary_folder.h"

namespace permora::host {
namespace {

using test::TemporaryFolder;

class LinuxVolume : public testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = test::CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
        if (!IsOnLinuxVolume(Top())) GTEST_SKIP() << "the temporary folder lies on no volume of Linux's own";
    }
    ObjectHandle Top() const {
        ObjectHandle handle;
        EXPECT_EQ(ObjectHandle::OpenAt(AT_FDCWD, tree.Path().c_str(), handle), ERROR_SUCCESS);
        return handle;
    }

    const TemporaryFolder tree;
};

TEST_F(LinuxVolume, AViewWithoutDevicesOpensFilesAlone) {
    tree.MakeFile("file");
    ASSERT_EQ(mknod(tree.Path("device").c_str(), S_IFCHR | 0666, makedev(1, 3)), 0);
    const std::optional<UniqueFd> view = OpenWithoutDevices(Top());
    ASSERT_TRUE(view);
    const UniqueFd file(openat(view->Get(), "file", O_RDONLY | O_CLOEXEC));
    EXPECT_TRUE(file);
    const UniqueFd device(openat(view->Get(), "device", O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    EXPECT_FALSE(device);
    EXPECT_EQ(errno, EACCES);
    ObjectHandle handle;
    EXPECT_EQ(ObjectHandle::OpenUnmountedFileAt(view->Get(), "device", handle), ERROR_SUCCESS);
    EXPECT_FALSE(handle.IsReadable());
    EXPECT_TRUE(S_ISCHR(handle.Status().st_mode));
}

TEST_F(LinuxVolume, NoViewHidesWhatIsMountedBelow) {
    ASSERT_EQ(mount("none", tree.MakeFolder("mounted").c_str(), "tmpfs", 0, nullptr), 0);
    const bool hasView = OpenWithoutDevices(Top()).has_value();
    ObjectHandle mounted;
    EXPECT_EQ(ObjectHandle::OpenAt(AT_FDCWD, tree.Path("mounted").c_str(), mounted), ERROR_SUCCESS);
    const bool hasViewOfMounted = OpenWithoutDevices(mounted).has_value();
    mounted = {};
    umount2(tree.Path("mounted").c_str(), MNT_DETACH);
    EXPECT_FALSE(hasView);
    EXPECT_TRUE(hasViewOfMounted);
    EXPECT_TRUE(OpenWithoutDevices(Top()));
}

// Which files a walk opened for reading.
class ReadableFiles : public TreeVisitor {
  public:
    class Thread : public VisitingThread {
      public:
        explicit Thread(ReadableFiles& shared) : files(shared) {}
        WalkDecision Visit(const VisitedObject& visited, std::unique_ptr<FolderNotes>&) override {
            files.areReadable[visited.Path()] = visited.object.IsReadable();
            return WalkDecision::kDescend;
        }
        ReadableFiles& files;
    };
    std::unique_ptr<VisitingThread> NewThread() override { return std::make_unique<Thread>(*this); }
    bool WantsReadableFiles() const override { return true; }
    void Fail(DWORD error, const std::string& path) override { ADD_FAILURE() << path << ' ' << error; }

    std::map<std::string, bool> areReadable;
};

// Nothing is waited for: no reader of a pipe, no end of a lease, which a writer has for a minute.
TEST_F(LinuxVolume, AWalkOpensWhatItMayAndWaitsForNobody) {
    std::signal(SIGIO, SIG_IGN);  // somebody wants the leased file
    tree.MakeFolder("folder");
    tree.MakeFile("folder/file");
    tree.MakeFile("leased");
    ASSERT_EQ(mkfifo(tree.Path("pipe").c_str(), 0600), 0);
    ASSERT_EQ(symlink("folder/file", tree.Path("link").c_str()), 0);
    const UniqueFd leased(open(tree.Path("leased").c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_EQ(fcntl(leased.Get(), F_SETLEASE, F_WRLCK), 0);
    alarm(30);  // a lease ends after 45 seconds
    ReadableFiles visitor;
    WalkTree(Top(), nullptr, visitor, 1);
    alarm(0);
    const std::map<std::string, bool> expected = {
        {"folder", true}, {"folder\\file", true}, {"leased", false}, {"link", false}, {"pipe", false}};
    EXPECT_EQ(visitor.areReadable, expected);
}

}  // namespace
}  // namespace permora::host
