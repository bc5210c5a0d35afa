// What a policy does with trees that others have had their hands in.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/cli/cli_program.h"
#include "tests/support/command.h"
#include "tests/support/own_mounts.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr uid_t kStranger = 65534;

class PolicyTest : public testing::Test {
  protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "needs root";
        if (const std::string reason = CannotHoldListsReason(top); !reason.empty()) GTEST_SKIP() << reason;
    }
    static std::string Rule(const std::string& path, const std::string& rest) {
        return "[[rule]]\npath = \"" + path + "\"\n" + rest + "\n";
    }
    CommandResult Do(const char* task, const std::string& rules) const {
        std::ofstream(policy) << "version = 1\n" + rules;
        return RunCli({"policy", task, policy});
    }
    CommandResult Apply(const std::string& rules) const { return Do("apply", rules); }
    static uid_t OwnerOf(const std::string& path) {
        struct stat status {};
        return lstat(path.c_str(), &status) == 0 ? status.st_uid : ~uid_t{0};
    }

    const TemporaryFolder folder;
    const std::string policy = folder.MakeFile("policy.toml");
    const std::string top = folder.MakeFolder("top");
    const std::string sub = folder.MakeFolder("top/sub");
    const std::string file = folder.MakeFile("top/sub/file");
    const std::string give = "owner = \"nobody\"";
    const std::string below = "below = \"**\"\n";
};

TEST_F(PolicyTest, NothingIsGivenAwayByLinksOrFurtherNames) {
    const std::string link = folder.Path("top/link");
    const std::string way = folder.Path("way");
    std::filesystem::create_symlink(file, link);
    std::filesystem::create_directory_symlink(sub, way);
    EXPECT_EQ(Apply(Rule(top, below + give)).exitCode, 0);
    EXPECT_EQ(OwnerOf(file), kStranger);
    EXPECT_EQ(OwnerOf(link), 0U);

    // A link in the middle of a path.
    ASSERT_EQ(lchown(file.c_str(), 0, 0), 0);
    const CommandResult led = Apply(Rule(way + "/file", give));
    EXPECT_EQ(led.exitCode, 1);
    EXPECT_THAT(led.output, HasSubstr("a link leads there, or it is spelled otherwise; write " + file));
    // A separator says that it is a folder.
    const CommandResult separated = Apply(Rule(file + "/", give));
    EXPECT_EQ(separated.exitCode, 1);
    EXPECT_EQ(OwnerOf(file), 0U);

    std::filesystem::create_hard_link(file, folder.Path("other name"));
    const CommandResult linked = Apply(Rule(file, give));
    EXPECT_EQ(linked.exitCode, 1);
    EXPECT_THAT(linked.output, HasSubstr("under further names"));
    EXPECT_EQ(OwnerOf(file), 0U);
    EXPECT_EQ(RunCli({"policy", "apply", policy, "--linked"}).exitCode, 0);
    EXPECT_EQ(OwnerOf(file), kStranger);
    // The host's owner is part of it.
    EXPECT_EQ(Do("check", Rule(file, give)).exitCode, 0);
    ASSERT_EQ(chown(file.c_str(), 0, 0), 0);
    EXPECT_EQ(RunCli({"policy", "check", policy, "--linked"}).exitCode, 1);
}

TEST_F(PolicyTest, WhatNoRuleIsAboutIsNoFailure) {
    ASSERT_EQ(setxattr(file.c_str(), "security.NTACL", "damaged", 7, 0), 0);
    EXPECT_EQ(Apply(Rule(top, "below = \"*\"\n" + give)).exitCode, 0);
    EXPECT_EQ(OwnerOf(sub), kStranger);
    EXPECT_EQ(Do("check", Rule(top, "below = \"*/x\"\n" + give)).exitCode, 0);
    const CommandResult concerned = Apply(Rule(top, "below = \"*/f*\"\n" + give) + Rule(file, give));
    EXPECT_EQ(concerned.exitCode, 1);
    EXPECT_THAT(concerned.output, HasSubstr("changed: 0, already so: 2, failed: 1\n"));
}

TEST_F(PolicyTest, TheLastRuleCountsAlsoWhereAWalkDoesNotCome) {
    // This user may enter the folder, but not list it.
    ASSERT_EQ(chmod(folder.Path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(sub.c_str(), 0711), 0);
    std::ofstream(policy) << "version = 1\n" << Rule(file, give) << Rule(top, below + "owner = \"root\"");
    const auto missed = AsOrdinaryUser([&] { return RunCli({"policy", "check", policy}).output; });
    EXPECT_THAT(missed.value_or(""), HasSubstr(file + ": not looked at: it was not come to from " + top));
    EXPECT_THAT(missed.value_or(""), Not(HasSubstr("would change: " + file)));
}

TEST_F(PolicyTest, AnotherVolumeHasATurnOfItsOwnWithItsOwnRules) {
    ASSERT_EQ(EnterOwnMounts(), "");
    ASSERT_EQ(mount("none", sub.c_str(), "tmpfs", 0, nullptr), 0);
    std::ofstream{file} << "text";
    EXPECT_EQ(Apply(Rule(top, below + give)).exitCode, 1);
    const std::string both = Rule(sub, "protected = false") + Rule(file, give);
    const CommandResult done = Apply(both + Rule(top, below + "owner = \"root\""));
    EXPECT_EQ(done.exitCode, 0) << done.output;
    EXPECT_EQ(OwnerOf(file), kStranger);
    umount2(sub.c_str(), MNT_DETACH);
}

}  // namespace
}  // namespace permora::test
