#include "platform/linux/files/tree_walk.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "tests/support/command.h"
#include "tests/support/temporary_folder.h"

namespace permora::host {
namespace {

using test::TemporaryFolder;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

ObjectHandle OpenFolder(const std::string& path) {
    ObjectHandle handle;
    EXPECT_EQ(ObjectHandle::OpenAt(AT_FDCWD, path.c_str(), handle), ERROR_SUCCESS);
    return handle;
}

class CountingVisitor : public TreeVisitor {
  public:
    WalkDecision Visit(const ObjectHandle&, const char*, std::size_t depth) override {
        ++count;
        deepest = depth;
        return WalkDecision::kDescend;
    }
    void Fail(DWORD error, const char* name, std::size_t depth) override {
        errors.push_back(error);
        failures += std::to_string(error) + " \"" + name + "\" " + std::to_string(depth) + ' ';
    }

    std::size_t count = 0;
    std::size_t deepest = 0;
    std::vector<DWORD> errors;
    std::string failures;  // with name and depth
};

TEST(TreeWalk, WhatIsMountedBelowIsNotVisited) {
    if (const std::string reason = test::CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    const TemporaryFolder tree;
    tree.MakeFolder("a");
    tree.MakeFile("a/inside");
    tree.MakeFolder("volume");
    tree.MakeFolder("bound");
    // The second one lies on the same volume as the tree: only its being mounted tells.
    ASSERT_EQ(mount("none", tree.Path("volume").c_str(), "tmpfs", 0, nullptr), 0);
    ASSERT_EQ(mount(tree.Path("a").c_str(), tree.Path("bound").c_str(), nullptr, MS_BIND, nullptr), 0);
    CountingVisitor visitor;
    WalkTree(OpenFolder(tree.Path()), visitor);
    umount2(tree.Path("bound").c_str(), MNT_DETACH);
    umount2(tree.Path("volume").c_str(), MNT_DETACH);
    EXPECT_EQ(visitor.count, 2U);
    EXPECT_THAT(visitor.errors, ElementsAre(ERROR_NOT_SAME_DEVICE, ERROR_NOT_SAME_DEVICE));
    EXPECT_THAT(visitor.failures, AllOf(HasSubstr("\"volume\" 0"), HasSubstr("\"bound\" 0")));
}

// Makes `depth` folders inside one another; no path is long enough to name the last one.
void MakeDeepFolders(const std::string& top, int depth) {
    UniqueFd folder(open(top.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    for (int i = 0; i < depth; ++i) {
        ASSERT_EQ(mkdirat(folder.Get(), "d", 0755), 0);
        folder.Reset(openat(folder.Get(), "d", O_PATH | O_DIRECTORY | O_CLOEXEC));
    }
}

TEST(TreeWalk, AFolderThatMayNotBeListedIsToldByItsNameAndDepth) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can become somebody else";
    const TemporaryFolder tree;
    ASSERT_EQ(chmod(tree.Path().c_str(), 0755), 0);
    tree.MakeFolder("a");
    ASSERT_EQ(chmod(tree.MakeFolder("a/closed").c_str(), 0711), 0);
    const auto failuresBelow = [&](const std::string& folder) {
        return test::AsOrdinaryUser([&] {
            CountingVisitor visitor;
            WalkTree(OpenFolder(folder), visitor);
            return visitor.failures;
        });
    };
    EXPECT_EQ(failuresBelow(tree.Path()), "5 \"closed\" 1 ");
    EXPECT_EQ(failuresBelow(tree.Path("a/closed")), "5 \"\" 0 ");
}

TEST(TreeWalk, DepthIsBoundedByOpenDescriptorsAloneAndSaysSo) {
    constexpr int kDepth = 3000;
    const TemporaryFolder tree;
    MakeDeepFolders(tree.Path(), kDepth);
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    if (limit.rlim_max < kDepth + 100) GTEST_SKIP() << "this machine allows few open descriptors";
    limit.rlim_cur = 256;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    CountingVisitor all;
    WalkTree(OpenFolder(tree.Path()), all);
    EXPECT_EQ(all.deepest, std::size_t{kDepth - 1});
    EXPECT_THAT(all.errors, IsEmpty());

    limit.rlim_cur = limit.rlim_max = 256;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    CountingVisitor some;
    WalkTree(OpenFolder(tree.Path()), some);
    EXPECT_GT(some.count, 200U);
    EXPECT_THAT(some.errors, ElementsAre(ERROR_TOO_MANY_OPEN_FILES));
}

}  // namespace
}  // namespace permora::host
