#include "platform/linux/base/foreign_environment.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "tests/support/command.h"
#include "tests/support/own_mounts.h"
#include "tests/support/project_folders.h"
#include "tests/support/scoped_variable.h"
#include "tests/support/temporary_folder.h"

namespace permora::host {
namespace {

using test::TemporaryFolder;
using testing::HasSubstr;
using testing::Not;

constexpr uid_t kOther = 65534;

class ForeignEnvironment : public testing::Test {
  protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "only root forgets, and only root can give files away";
        ASSERT_EQ(chown(foreign.c_str(), kOther, kOther), 0);
        ASSERT_EQ(chmod(shared.c_str(), 0775), 0);
        ASSERT_EQ(chmod(sticky.c_str(), 01777), 0);
        ASSERT_EQ(symlink(foreign.c_str(), folder.Path("to-foreign").c_str()), 0);
        ASSERT_EQ(symlink("own/inside", folder.Path("to-own").c_str()), 0);
        ASSERT_EQ(symlink("round", folder.Path("round").c_str()), 0);
        ASSERT_EQ(symlink("../own", (sticky + "/others-link").c_str()), 0);
        ASSERT_EQ(lchown((sticky + "/others-link").c_str(), kOther, kOther), 0);
    }

    const TemporaryFolder folder;
    const std::string own = folder.MakeFolder("own");
    const std::string inside = folder.MakeFolder("own/inside");
    const std::string foreign = folder.MakeFolder("foreign");
    const std::string below = folder.MakeFolder("foreign/below");
    const std::string shared = folder.MakeFolder("shared");
    const std::string sticky = folder.MakeFolder("sticky");
    const std::string inSticky = folder.MakeFolder("sticky/own");
};

TEST_F(ForeignEnvironment, APlaceIsRootsAloneWhenNobodyElseHasAHandInIt) {
    const std::pair<std::string, bool> cases[] = {
        {"/usr/lib", true},
        {"/", true},
        {own, true},
        {own + "//./inside/", true},
        {own + "/missing/below", true},
        {inSticky, true},
        {folder.Path("to-own"), true},
        {foreign, false},
        {below, false},
        {shared, false},
        {shared + "/missing", false},
        {sticky, false},
        {sticky + "/.", false},
        {sticky + "/missing", false},
        {sticky + "/others-link", false},
        {folder.Path("to-foreign"), false},
        {folder.Path("to-foreign") + "/below", false},
        {folder.Path("round"), false},
        {own + "/../foreign", false},
        {"/missing/../" + foreign, false},
        {"own", false},
        {".", false},
        {"", false},
    };
    for (const auto& [path, isRoots] : cases)
        EXPECT_EQ(IsRootsAlone(path), isRoots) << path;
}

// On such a volume, its maker decides what belongs to root.
TEST_F(ForeignEnvironment, AVolumeThatAUserMayHaveMountedIsForeign) {
    if (const std::string reason = test::CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    const struct {
        const char* fileSystem;
        unsigned long flags;
        bool isRoots;
    } cases[] = {{"ramfs", 0, true}, {"ramfs", MS_NOSUID, false}, {"tmpfs", MS_NOSUID, true}};
    for (const auto& volume : cases) {
        const auto answer = test::InAnotherProcess([this, &volume] {
            if (const std::string problem = test::EnterOwnMounts(); !problem.empty()) return problem;
            if (mount("none", inside.c_str(), volume.fileSystem, volume.flags, "mode=755") != 0)
                return std::string(std::strerror(errno));
            std::string answers;
            for (const std::string& path : {inside, folder.Path("to-own"), inside + "/missing"})
                answers += IsRootsAlone(path) ? "root's " : "foreign ";
            return answers;
        });
        EXPECT_EQ(answer, volume.isRoots ? "root's root's root's " : "foreign foreign foreign ")
            << volume.fileSystem << ' ' << volume.flags;
    }
}

TEST_F(ForeignEnvironment, WhatLeadsToOthersIsForgotten) {
    const struct {
        const char* name;
        std::string value;
        bool isForgotten;
    } cases[] = {
        {"QT_PLUGIN_PATH", "/usr/lib:" + foreign, true},
        {"QT_PLUGIN_PATH", "/usr/lib:", true},
        {"QT_PLUGIN_PATH", "plugins", true},
        {"QT_PLUGIN_PATH", foreign + "/a=/usr", true},
        {"QT_PLUGIN_PATH", "a=/usr", true},
        {"QT_PLUGIN_PATH", own, false},
        {"QT_PLUGIN_PATH", "", false},
        {"QT_QPA_PLATFORM_PLUGIN_PATH", foreign, true},
        {"QT_QPA_PLATFORM", "offscreen", false},
        {"QT_QPA_PLATFORM", "linuxfb:fb=/dev/null:size=1x1", true},  // everybody may write there
        {"QT_QPA_PLATFORM", "linuxfb:fb=" + foreign, true},
        {"QT_QPA_PLATFORM", "linuxfb:fb=" + own, false},
        {"QT_QPA_GENERIC_PLUGINS", "evdev:/dev/input", false},
        {"QT_STYLE_OVERRIDE", "Fusion", false},
        {"GTK_MODULES", "gail:atk-bridge", false},
        {"GTK_MODULES", "gail:./atk-bridge.so", true},
        {"GIO_EXTRA_MODULES", below, true},
        {"GIO_EXTRA_MODULES", "modules", true},
        {"OPENSSL_MODULES", "modules", true},
        {"OPENSSL_ENGINES", "engines", true},
        {"GTK_EXE_PREFIX", "here", true},
        {"XENVIRONMENT", "resources", true},
        {"HOSTALIASES", "aliases", true},
        {"LANGUAGE", "de_AT:de:en", false},
        {"LANGUAGE", "de:../../.." + foreign, true},
        {"LOCPATH", folder.Path("to-foreign"), true},
        {"FONTCONFIG_FILE", foreign + "/fonts.conf", true},
        {"XDG_DATA_DIRS", "/usr/share", false},
        {"XDG_DATA_DIRS", "/usr/share:" + shared, true},
        {"XAUTHORITY", foreign, false},  // a key to the screen
        {"EDITOR", foreign, false},
    };
    for (const auto& [name, value, isForgotten] : cases) {
        const test::ScopedVariable variable(name, value);
        EXPECT_EQ(testing::Value(ForgetForeignPlaces(), testing::Contains(name)), isForgotten)
            << name << "=" << value;
        EXPECT_EQ(getenv(name) == nullptr, isForgotten) << name << "=" << value;
    }
}

TEST_F(ForeignEnvironment, RootGetsItsOwnHomeAndToolsAndKeepsTheScreen) {
    const test::ScopedVariable home("HOME", foreign);
    const test::ScopedVariable path("PATH", foreign + ":/usr/bin");
    const test::ScopedVariable runtime("XDG_RUNTIME_DIR", foreign);
    const test::ScopedVariable display("WAYLAND_DISPLAY", "wayland-7");
    ForgetForeignPlaces();
    EXPECT_STREQ(getenv("HOME"), "/root");
    EXPECT_STREQ(getenv("PATH"), "/usr/bin:/usr/sbin:/bin:/sbin");
    EXPECT_EQ(getenv("XDG_RUNTIME_DIR"), nullptr);
    EXPECT_EQ(getenv("WAYLAND_DISPLAY"), foreign + "/wayland-7");
}

TEST_F(ForeignEnvironment, AnOrdinaryUsersIsHisOwn) {
    const auto forgotten = test::AsOrdinaryUser([this] {
        setenv("QT_PLUGIN_PATH", foreign.c_str(), 1);
        return std::to_string(ForgetForeignPlaces().size());
    });
    EXPECT_EQ(forgotten, "0");
}

// Each program before anything of it has looked.
TEST_F(ForeignEnvironment, BothProgramsForgetBeforeTheyStart) {
    for (const std::string& program : {test::BuiltProgram("permora-cli"), test::BuiltProgram("permora")}) {
        // The windowed program ends because there is no such platform, and prints where it searched.
        const test::CommandResult result =
            test::RunCommand({"env", "QT_PLUGIN_PATH=" + foreign, "LOCPATH=" + foreign, "QT_DEBUG_PLUGINS=1",
                              "QT_QPA_PLATFORM=none", program, "--version"});
        EXPECT_THAT(result.output,
                    HasSubstr("others than root decide what is there: LOCPATH, QT_PLUGIN_PATH\n"));
        EXPECT_THAT(result.output, Not(HasSubstr(foreign))) << program;
    }
    EXPECT_THAT(
        test::RunCommand({"env", "QT_PLUGIN_PATH=" + own, test::BuiltProgram("permora-cli"), "--version"})
            .output,
        Not(HasSubstr("ignored")));
}

}  // namespace
}  // namespace permora::host
