#include "platform/tree_security.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/memory.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/resources.h"
#include "tests/support/access_lists.h"
#include "tests/support/recording_observer.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr SECURITY_INFORMATION kAllParts =
    OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;

class TreeSecurity : public testing::Test {
  protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "without root, links and devices have no access lists";
    }

    DWORD Reset(const std::string& hostPath, TreeListMode mode = TreeListMode::kWrite) {
        counts = {};
        const UniqueLocal<void> nothing = DescriptorOf("D:");
        return Held(hostPath).SetListsBelow(ListOf(nothing), mode, Unrecorded(), observer, counts);
    }
    // S-1-22-1-1
    static PSID SidOfUser1() {
        static const nt::Sid sid(22, {1, 1});
        return const_cast<std::uint8_t*>(sid.Bytes().data());
    }

    const TemporaryFolder tree;
    RecordingObserver observer;
    TreeCounts counts;
};

// Every kind of list that an object may have before.
void MakeManyKinds(const TemporaryFolder& tree) {
    ASSERT_EQ(SetDescriptorText(tree.Path(), "O:BAG:BUD:P(D;OICIIO;FX;;;BG)(A;OICI;GA;;;CO)(A;CINP;FR;;;BU)"),
              0U);
    const std::pair<const char*, const char*> objects[] = {
        {"protected/", "D:P(A;OICI;FA;;;WD)"},
        {"protected/file", "O:BUG:BUD:P(A;;FA;;;WD)"},
        {"protected/deep/", "O:BUD:(A;OICI;FA;;;BG)"},
        {"protected/deep/file", "D:"},
        {"open/", "D:NO_ACCESS_CONTROL"},
        {"open/file", "D:P"},
        {"explicit", "D:(D;;FR;;;BG)(A;;FA;;;WD)"},
        {"unstored/", nullptr},
        {"unstored/file", nullptr},
    };
    for (const auto& [name, sddl] : objects) {
        const std::string text = name;
        const std::string path =
            text.back() == '/' ? tree.MakeFolder(text.substr(0, text.size() - 1)) : tree.MakeFile(text);
        if (sddl == nullptr) continue;
        ASSERT_EQ(SetDescriptorText(path, sddl), 0U) << name;
    }
    std::filesystem::create_directory_symlink("open", tree.Path("link"));
}

std::vector<std::string> PathsBelow(const std::string& folder) {
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());  // a folder before what is in it
    return paths;
}

TEST_F(TreeSecurity, TheResultIsThatOfSettingEachObjectInTurn) {
    MakeManyKinds(tree);
    const TemporaryFolder oneByOne;
    MakeManyKinds(oneByOne);
    for (const std::string& path : PathsBelow(oneByOne.Path()))
        ASSERT_EQ(SetDescriptorText(path, "D:"), 0U) << path;
    ASSERT_EQ(Reset(tree.Path()), 0U);
    const std::vector<std::string> paths = PathsBelow(tree.Path());
    const std::vector<std::string> judges = PathsBelow(oneByOne.Path());
    ASSERT_EQ(paths.size(), judges.size());
    for (std::size_t i = 0; i < paths.size(); ++i)
        EXPECT_EQ(DescriptorText(paths[i], kAllParts), DescriptorText(judges[i], kAllParts)) << paths[i];
    EXPECT_EQ(DaclText(tree.Path("protected/file")), "D:AI(D;ID;FX;;;BG)(A;ID;FA;;;BU)");
    EXPECT_EQ(DaclText(tree.Path()), "D:PAI(D;OICIIO;FX;;;BG)(A;OICI;FA;;;CO)(A;CINP;FR;;;BU)");
}

TEST_F(TreeSecurity, EveryEntryIsReachedOnce) {
    ASSERT_EQ(SetDescriptorText(tree.Path(), "D:P(A;OICI;FA;;;BA)"), 0U);
    std::vector<std::string> names;
    for (int folder = 0; folder < 3; ++folder) {
        const std::string parent = 'f' + std::to_string(folder);
        tree.MakeFolder(parent);
        names.push_back(parent);
        // More than one block of names.
        for (int i = 0; i < 400; ++i) {
            names.push_back(parent + "-" + std::to_string(i) + std::string(40, 'x'));
            tree.MakeFile(parent + "/" + names.back());
        }
    }
    ASSERT_EQ(Reset(tree.Path()), 0U);
    EXPECT_THAT(observer.begun, testing::UnorderedElementsAreArray(names));
    EXPECT_EQ(counts.changed, names.size());
}

// Enough for the walk to try what further threads bring.
TEST_F(TreeSecurity, ManyObjectsAreAllSetAndWhatIsTheMatterIsToldInOrder) {
    ASSERT_EQ(SetDescriptorText(tree.Path(), "D:P(A;OICI;FA;;;BA)"), 0U);
    std::vector<std::pair<std::string, DWORD>> damaged;
    for (int folder = 0; folder < 40; ++folder) {
        const std::string parent = std::to_string(folder);
        tree.MakeFolder(parent);
        for (int i = 0; i < 100; ++i) {
            const std::string name = std::to_string(i);
            const std::string path = tree.MakeFile(parent + "/" + name);
            if (i != folder) continue;
            ASSERT_EQ(setxattr(path.c_str(), "security.NTACL", "\x01\x00garbage", 9, 0), 0);
            damaged.emplace_back(parent + "\\" + name, ERROR_INVALID_SECURITY_DESCR);
        }
    }
    std::sort(damaged.begin(), damaged.end());
    for (const char* list : {"D:P(A;OICI;FA;;;BU)", "D:P(A;OICI;FA;;;BG)", "D:P(A;OICI;FA;;;WD)"}) {
        ASSERT_EQ(SetDescriptorText(tree.Path(), list), ERROR_INVALID_SECURITY_DESCR);
        observer = {};
        ASSERT_EQ(Reset(tree.Path()), 0U);
        EXPECT_EQ(observer.passedOver, damaged);
        EXPECT_EQ(observer.begun.size(), 4040U);
        EXPECT_EQ(counts.changed + counts.unchanged, 4000U);
        EXPECT_EQ(counts.passedOver, 40U);
        const std::string account = std::string(list).substr(std::string(list).size() - 3);
        for (const std::string& path : PathsBelow(tree.Path())) {
            const std::string text = DaclText(path);
            if (text == "error 1338") continue;
            ASSERT_EQ(text, std::string(std::filesystem::is_directory(path) ? "D:AI(A;OICIID;FA;;;"
                                                                            : "D:AI(A;ID;FA;;;") +
                                account)
                << path;
        }
    }
}

TEST_F(TreeSecurity, WhatCannotBeSetIsToldAndTheRestIsDone) {
    ASSERT_EQ(SetDescriptorText(tree.Path(), "D:P(A;OICI;FA;;;BA)"), 0U);
    for (const char* name : {"bad", "mounted", "bad/sub"})
        tree.MakeFolder(name);
    for (const char* name : {"bad/file", "bad/sub/file", "end."})
        tree.MakeFile(name);
    ASSERT_EQ(SetDescriptorText(tree.Path("bad/sub"), "D:P(A;OICI;FA;;;WD)"), 0U);
    for (const char* name : {"bad", "end."})
        ASSERT_EQ(setxattr(tree.Path(name).c_str(), "security.NTACL", "\x01\x00garbage", 9, 0), 0);
    ASSERT_EQ(mount("none", tree.Path("mounted").c_str(), "tmpfs", 0, nullptr), 0);
    const DWORD result = Reset(tree.Path());
    umount2(tree.Path("mounted").c_str(), MNT_DETACH);
    EXPECT_EQ(result, 0U);
    EXPECT_THAT(observer.passedOver, ElementsAre(Pair("bad", ERROR_INVALID_SECURITY_DESCR),
                                                 Pair("bad\\file", ERROR_INVALID_SECURITY_DESCR),
                                                 Pair("bad\\sub", ERROR_INVALID_SECURITY_DESCR),
                                                 Pair(host::EncodeName("end."), ERROR_INVALID_SECURITY_DESCR),
                                                 Pair("mounted", ERROR_NOT_SAME_DEVICE)));
    EXPECT_EQ(counts.passedOver, 5U);
    EXPECT_EQ(counts.changed, 1U);
    EXPECT_EQ(DaclText(tree.Path("bad/sub/file")), "D:AI(A;ID;FA;;;WD)");
    EXPECT_EQ(DaclText(tree.Path("bad")), "error 1338");
}

TEST_F(TreeSecurity, TheObserverEndsTheWalkBeforeAnObjectIsTouched) {
    ASSERT_EQ(SetDescriptorText(tree.Path(), "D:P(A;OICI;FA;;;BA)"), 0U);
    for (const char* name : {"a", "b", "c"})
        ASSERT_EQ(SetDescriptorText(tree.MakeFile(name), "D:P"), 0U);
    observer.limit = 1;
    EXPECT_EQ(Reset(tree.Path()), ERROR_OPERATION_ABORTED);
    EXPECT_EQ(counts.changed, 1U);
    EXPECT_EQ(DaclText(tree.Path(observer.begun[1])), "D:PAI");
}

TEST_F(TreeSecurity, AFolderSwappedForALinkLeavesWhatIsOutsideAlone) {
    const TemporaryFolder outside;
    ASSERT_EQ(SetDescriptorText(outside.Path(), "D:P(A;OICI;FA;;;BG)"), 0U);
    const std::string secret = outside.MakeFile("secret");
    ASSERT_EQ(SetDescriptorText(secret, "D:P(A;;FA;;;BG)"), 0U);
    const std::string before = DaclText(secret) + DaclText(outside.Path());
    ASSERT_EQ(SetDescriptorText(tree.Path(), "D:P(A;OICI;FA;;;WD)"), 0U);
    tree.MakeFolder("folder");
    tree.MakeFile("folder/secret");
    std::filesystem::create_directory_symlink(outside.Path(), tree.Path("link"));

    std::atomic<bool> isOver = false;
    std::thread swapper([&] {
        while (!isOver) {
            renameat2(AT_FDCWD, tree.Path("folder").c_str(), AT_FDCWD, tree.Path("link").c_str(),
                      RENAME_EXCHANGE);
        }
    });
    std::size_t timesEntered = 0;
    constexpr int kRounds = 500;
    for (int i = 0; i < kRounds; ++i) {
        observer.begun.clear();
        EXPECT_EQ(Reset(tree.Path()), 0U);
        timesEntered +=
            static_cast<std::size_t>(std::count(observer.begun.begin(), observer.begun.end(), "secret"));
    }
    isOver = true;
    swapper.join();
    EXPECT_GT(timesEntered, 0U);
    EXPECT_EQ(DaclText(secret) + DaclText(outside.Path()), before);
    EXPECT_THAT(observer.passedOver, IsEmpty());
}

TEST_F(TreeSecurity, OwnersChangeBelowAndNowhereElse) {
    const TemporaryFolder outside;
    const std::string target = outside.MakeFile("target");
    tree.MakeFolder("folder");
    const std::string file = tree.MakeFile("folder/file");
    ASSERT_EQ(SetDescriptorText(file, "O:BUD:P(A;;FR;;;BG)"), 0U);
    const std::string damaged = tree.MakeFile("damaged");
    ASSERT_EQ(setxattr(damaged.c_str(), "security.NTACL", "\x01\x00garbage", 9, 0), 0);
    std::filesystem::create_symlink(target, tree.Path("link"));
    std::filesystem::create_directory_symlink(outside.Path(), tree.Path("folder/outside"));
    const auto ownerOf = [](const std::string& path) {
        struct stat status {};
        EXPECT_EQ(lstat(path.c_str(), &status), 0);
        return DescriptorText(path, OWNER_SECURITY_INFORMATION) + " " + std::to_string(status.st_uid);
    };
    const std::string before = ownerOf(tree.Path()) + ownerOf(outside.Path()) + ownerOf(target);

    ASSERT_EQ(Held(tree.Path())
                  .SetOwnersBelow(SidOfUser1(), LinkedFiles::kPassOver, TreeListMode::kWrite, Unrecorded(),
                                  observer, counts),
              0U);
    for (const char* name : {"folder", "folder/file", "link", "folder/outside"})
        EXPECT_EQ(ownerOf(tree.Path(name)), "O:S-1-22-1-1 1") << name;
    EXPECT_EQ(DaclText(file), "D:PAI(A;;FR;;;BG)");
    EXPECT_EQ(ownerOf(tree.Path()) + ownerOf(outside.Path()) + ownerOf(target), before);
    EXPECT_EQ(ownerOf(damaged), "error 1338 0");
    EXPECT_THAT(observer.passedOver, ElementsAre(Pair("damaged", ERROR_INVALID_SECURITY_DESCR)));
    EXPECT_EQ(counts.changed, 4U);
    ASSERT_EQ(Held(tree.Path())
                  .SetOwnersBelow(SidOfUser1(), LinkedFiles::kPassOver, TreeListMode::kWrite, Unrecorded(),
                                  observer, counts),
              0U);
    EXPECT_EQ(counts.unchanged, 4U);
    EXPECT_EQ(Held(tree.Path())
                  .SetOwnersBelow(nullptr, LinkedFiles::kPassOver, TreeListMode::kWrite, Unrecorded(),
                                  observer, counts),
              ERROR_INVALID_SID);
}

// Removing the name in the tree at the right moment leaves the file one name, which is elsewhere.
TEST_F(TreeSecurity, ALinkedFileWhoseNameGoesMeanwhileKeepsItsOwner) {
    class Intruder : public RecordingObserver {
      public:
        explicit Intruder(std::function<void()> act) : meanwhile(std::move(act)) {}
        bool Begin(const char* name) override {
            meanwhile();
            return RecordingObserver::Begin(name);
        }

      private:
        std::function<void()> meanwhile;
    };
    const TemporaryFolder outside;
    const std::string file = outside.MakeFile("file");
    const std::string link = tree.Path("link");
    ASSERT_EQ(SetDescriptorText(file, "O:BUD:P(A;;FR;;;BG)"), 0U);
    for (const bool isReplaced : {false, true}) {
        std::filesystem::create_hard_link(file, link);
        Intruder intruder([&] {
            std::filesystem::remove(link);
            if (isReplaced) tree.MakeFile("link");
        });
        ASSERT_EQ(Held(tree.Path())
                      .SetOwnersBelow(SidOfUser1(), LinkedFiles::kPassOver, TreeListMode::kWrite,
                                      Unrecorded(), intruder, counts),
                  0U);
        EXPECT_THAT(intruder.begun, ElementsAre("link"));
        EXPECT_EQ(counts.changed, 0U);
        EXPECT_EQ(DescriptorText(file, OWNER_SECURITY_INFORMATION), "O:BU");
        if (isReplaced) EXPECT_THAT(intruder.passedOver, ElementsAre(Pair("link", ERROR_FILE_INVALID)));
    }
}

}  // namespace
}  // namespace permora::test
