#include "platform/linux/registry/registry_store.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/command.h"
#include "tests/support/temporary_folder.h"

namespace permora::host {
namespace {

constexpr const char* kKey = "HKEY_CURRENT_USER\\A";

DWORD Set(const RegistryStore& store, const std::string& name) {
    return store.Change([&name](RegistryDocument& document) {
        document.SetValue(kKey, {name, REG_DWORD, {1, 0, 0, 0}});
        return DWORD{ERROR_SUCCESS};
    });
}

bool Has(const RegistryStore& store, const std::string& name) {
    RegistryDocument document;
    RegistryValue value;
    return store.Read(document) == ERROR_SUCCESS &&
           document.FindValue(kKey, name, value) == RegistryDocument::Lookup::kFound;
}

mode_t ModeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

class RegistryStores : public testing::Test {
  protected:
    test::TemporaryFolder base;
    std::string folder = base.Path("config/permora");
    std::string file = folder + "/registry.reg";
    RegistryStore store{folder, RegistryAudience::kOwner};
};

TEST_F(RegistryStores, AppearWithTheFirstChangeForTheirOwnerAlone) {
    RegistryDocument document;
    EXPECT_EQ(store.Read(document), ERROR_SUCCESS);
    EXPECT_FALSE(std::filesystem::exists(base.Path("config")));
    const mode_t before = umask(0);
    EXPECT_EQ(Set(store, "one"), ERROR_SUCCESS);
    umask(before);
    EXPECT_TRUE(Has(store, "one"));
    EXPECT_EQ(ModeOf(folder), 0700U);
    EXPECT_EQ(ModeOf(file), 0600U);

    ASSERT_EQ(chmod(file.c_str(), 0666), 0);
    EXPECT_EQ(Set(store, "two"), ERROR_SUCCESS);
    EXPECT_EQ(ModeOf(file), 0600U);
    const RegistryStore open(base.Path("machine"), RegistryAudience::kEveryone);
    EXPECT_EQ(Set(open, "one"), ERROR_SUCCESS);
    EXPECT_EQ(ModeOf(base.Path("machine/registry.reg")), 0644U);
}

TEST_F(RegistryStores, LeaveTheFileAloneWhenAChangeFails) {
    ASSERT_EQ(Set(store, "one"), ERROR_SUCCESS);
    struct stat before {};
    ASSERT_EQ(stat(file.c_str(), &before), 0);
    EXPECT_EQ(store.Change([](RegistryDocument& document) {
        document.AddKey("HKEY_CURRENT_USER\\B");
        return DWORD{ERROR_INVALID_DATA};
    }),
              ERROR_INVALID_DATA);
    EXPECT_EQ(Set(store, "one"), ERROR_SUCCESS);  // nothing to write
    struct stat after {};
    ASSERT_EQ(stat(file.c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);

    std::ofstream(file) << "somebody else's\n";
    EXPECT_EQ(Set(store, "two"), ERROR_BADDB);
    EXPECT_EQ(test::ReadWholeFile(file), "somebody else's\n");

    // A full disk, as the process sees it.
    std::ofstream(file) << "";
    const auto error = test::InAnotherProcess([&] {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit none{0, 0};
        setrlimit(RLIMIT_FSIZE, &none);
        return std::to_string(Set(store, "two"));
    });
    EXPECT_EQ(error, std::to_string(ERROR_FILE_TOO_LARGE));
    EXPECT_EQ(test::ReadWholeFile(file), "");
    EXPECT_FALSE(std::filesystem::exists(file + ".new"));
}

TEST_F(RegistryStores, FollowNoLinkAndTrustNoStranger) {
    ASSERT_EQ(Set(store, "one"), ERROR_SUCCESS);
    const std::string target = base.MakeFile("target");
    RegistryDocument document;
    for (const std::string name : {"registry.reg", "registry.lock"}) {
        const std::string path = folder + "/" + name;
        std::filesystem::rename(path, path + ".real");
        ASSERT_EQ(symlink(target.c_str(), path.c_str()), 0);
        EXPECT_EQ(Set(store, "two"), ERROR_CANT_RESOLVE_FILENAME) << name;
        std::filesystem::rename(path + ".real", path);
    }
    ASSERT_EQ(symlink(target.c_str(), (file + ".new").c_str()), 0);
    EXPECT_EQ(Set(store, "two"), ERROR_SUCCESS);  // a leftover is removed
    EXPECT_EQ(test::ReadWholeFile(target), "");

    const RegistryStore linked(base.Path("linked"), RegistryAudience::kOwner);
    ASSERT_EQ(symlink(folder.c_str(), base.Path("linked").c_str()), 0);
    EXPECT_NE(linked.Read(document), ERROR_SUCCESS);
    std::filesystem::remove(file);
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    EXPECT_EQ(store.Read(document), ERROR_ACCESS_DENIED);
    std::filesystem::remove(file);
    if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
    std::ofstream(file) << "";
    ASSERT_EQ(chown(file.c_str(), 65534, 65534), 0);
    EXPECT_EQ(store.Read(document), ERROR_ACCESS_DENIED);
    EXPECT_EQ(Set(store, "two"), ERROR_ACCESS_DENIED);
}

TEST_F(RegistryStores, LoseNothingToProgramsThatWriteAtTheSameTime) {
    constexpr int kWriters = 4;
    constexpr int kValues = 25;
    for (int writer = 0; writer < kWriters; ++writer) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child != 0) continue;
        bool isWritten = true;
        for (int i = 0; i < kValues; ++i) {
            const std::string name = std::to_string(writer) + " " + std::to_string(i);
            isWritten = isWritten && Set(store, name) == ERROR_SUCCESS && Has(store, name);
        }
        _exit(isWritten ? 0 : 1);
    }
    for (int writer = 0; writer < kWriters; ++writer) {
        int result = -1;
        ASSERT_GT(wait(&result), 0);
        EXPECT_EQ(result, 0);
    }
    for (int writer = 0; writer < kWriters; ++writer)
        for (int i = 0; i < kValues; ++i)
            EXPECT_TRUE(Has(store, std::to_string(writer) + " " + std::to_string(i))) << writer << ' ' << i;
}

}  // namespace
}  // namespace permora::host
