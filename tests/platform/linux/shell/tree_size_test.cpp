#include "platform/tree_size.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <utility>

#include "platform/api/errors.h"
#include "platform/linux/files/paths.h"
#include "tests/support/command.h"
#include "tests/support/temporary_folder.h"

namespace permora {
namespace {

class Observer : public TreeSizeObserver {
  public:
    std::function<bool(const TreeSize&)> onMeasured = [](const TreeSize&) { return true; };
    bool Measured(const TreeSize& soFar) override { return onMeasured(soFar); }
};

class TreeSizes : public ::testing::Test {
  protected:
    std::string Path(const std::string& name) { return host::PathFromHost(folder.Path(name)); }
    void MakeFileOf(const std::string& name, std::uintmax_t bytes) {
        std::filesystem::resize_file(folder.MakeFile(name), bytes);
    }
    TreeSize Measure() {
        TreeSize size;
        EXPECT_EQ(MeasureTree(Path("tree").c_str(), observer, size), ERROR_SUCCESS);
        return size;
    }

    test::TemporaryFolder folder;
    Observer observer;
};

TEST_F(TreeSizes, EndWithTheTree) {
    folder.MakeFolder("outside");
    MakeFileOf("outside/large", 1'000'000);
    folder.MakeFolder("tree");
    folder.MakeFolder("tree/sub");
    folder.MakeFolder("tree/sub/deep");
    MakeFileOf("tree/sparse", 5'000'000'000);
    const std::string text(10'000, 'x');
    std::FILE* file = std::fopen(folder.Path("tree/sub/deep/file").c_str(), "w");
    ASSERT_NE(file, nullptr);
    ASSERT_EQ(std::fwrite(text.data(), 1, text.size(), file), text.size());
    ASSERT_EQ(std::fclose(file), 0);
    const TreeSize one = Measure();
    ASSERT_EQ(link(folder.Path("tree/sub/deep/file").c_str(), folder.Path("tree/again").c_str()), 0);
    ASSERT_EQ(symlink("../outside", folder.Path("tree/to folder").c_str()), 0);
    ASSERT_EQ(symlink("../outside/large", folder.Path("tree/to file").c_str()), 0);
    ASSERT_EQ(mkfifo(folder.Path("tree/pipe").c_str(), 0600), 0);
    const TreeSize size = Measure();
    EXPECT_EQ(size.bytes, 5'000'000'000U + 2 * text.size());
    EXPECT_EQ(size.bytesOnDisk, one.bytesOnDisk);
    EXPECT_GE(size.bytesOnDisk, text.size());
    EXPECT_LT(size.bytesOnDisk, 100'000U);
    EXPECT_EQ(size.files, 6U);
    EXPECT_EQ(size.folders, 2U);
    EXPECT_EQ(size.mounted + size.unread, 0U);

    if (const std::string reason = test::CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    ASSERT_EQ(mount("none", folder.Path("tree/sub/deep").c_str(), "ramfs", 0, nullptr), 0);
    const TreeSize mounted = Measure();
    EXPECT_EQ(umount(folder.Path("tree/sub/deep").c_str()), 0);
    EXPECT_EQ(mounted.mounted, 1U);
    EXPECT_EQ(mounted.files, 5U);
    EXPECT_EQ(mounted.folders, 1U);
}

TEST_F(TreeSizes, CountWhatCannotBeRead) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can become somebody else";
    ASSERT_EQ(chmod(folder.Path().c_str(), 0755), 0);
    for (const auto& [name, mode] :
         {std::pair("tree", 0755), std::pair("tree/closed", 0700), std::pair("tree/open", 0755)})
        ASSERT_EQ(chmod(folder.MakeFolder(name).c_str(), static_cast<mode_t>(mode)), 0);
    folder.MakeFile("tree/closed/unseen");
    folder.MakeFile("tree/open/seen");
    const auto counts = test::AsOrdinaryUser([this] {
        const TreeSize size = Measure();
        return std::to_string(size.files) + ' ' + std::to_string(size.folders) + ' ' +
               std::to_string(size.unread);
    });
    EXPECT_EQ(counts, "1 2 1");
}

TEST_F(TreeSizes, TheTreeMayChangeAndTheCallerStop) {
    folder.MakeFolder("outside");
    folder.MakeFile("outside/file");
    folder.MakeFolder("tree");
    for (const char* name : {"tree/1", "tree/2", "tree/3", "tree/4"}) {
        folder.MakeFolder(name);
        folder.MakeFile(std::string(name) + "/file");
    }
    // The first folder is visited but not entered yet; links take the names of two, and two vanish.
    observer.onMeasured = [this](const TreeSize& soFar) {
        if (soFar.folders + soFar.files > 1) return true;
        for (const char* name : {"tree/1", "tree/2", "tree/3", "tree/4"})
            std::filesystem::remove_all(folder.Path(name));
        for (const char* name : {"tree/1", "tree/2"})
            std::filesystem::create_symlink("../outside", folder.Path(name));
        return true;
    };
    const TreeSize changed = Measure();
    EXPECT_EQ(changed.folders, 1U);
    EXPECT_EQ(changed.bytes + changed.unread, 0U);

    int calls = 0;
    observer.onMeasured = [&calls](const TreeSize&) { return ++calls < 2; };
    const TreeSize stopped = Measure();
    EXPECT_EQ(stopped.files + stopped.folders, 2U);
    EXPECT_EQ(calls, 2);
}

}  // namespace
}  // namespace permora
