#include "saved/tree_source.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <functional>
#include <optional>
#include <random>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/base/unique_fd.h"
#include "tests/support/access_lists.h"
#include "tests/support/command.h"
#include "tests/support/descriptor_texts.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/patience.h"
#include "tests/support/temporary_folder.h"

namespace permora {
namespace {

using test::TemporaryFolder;
using testing::ElementsAre;
using Threads = std::optional<std::size_t>;

constexpr SECURITY_INFORMATION kParts =
    OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;

std::string KindText(SavedKind kind) {
    switch (kind) {
        case SavedKind::kFile:
            return "file";
        case SavedKind::kFolder:
            return "folder";
        case SavedKind::kLink:
            return "link";
        case SavedKind::kMounted:
            return "mounted";
        case SavedKind::kUnread:
            return "unread";
        case SavedKind::kUnlisted:
            return "unlisted";
        default:
            return "other";
    }
}

// Keeps a row for each object: "a\\b file stored O:BAG:BUD:" or "a\\b unread 5".
class Recorder : public TreeVisitor {
  public:
    bool Visit(const ReadObject& object) override {
        paths.emplace_back(object.path);
        const bool isRead = object.error == ERROR_SUCCESS && !object.descriptor.empty();
        rows.push_back(
            RowOf(paths.back(), object.kind, object.isStored,
                  isRead ? test::SddlOfParts(const_cast<std::uint8_t*>(object.descriptor.data()), kParts)
                         : std::to_string(object.error)));
        return !onVisit || onVisit(object);
    }

    static std::string RowOf(const std::string& path, SavedKind kind, bool isStored,
                             const std::string& text) {
        return path + ' ' + KindText(kind) + (isStored ? " stored " : " made ") + text;
    }

    std::function<bool(const ReadObject&)> onVisit;
    std::vector<std::string> paths;
    std::vector<std::string> rows;
};

DWORD Read(const std::string& top, Recorder& visitor, Threads threads) {
    const HeldObject held = test::Held(top);
    return ReadTree(held, kParts, visitor, threads);
}

SavedKind KindOf(const std::filesystem::path& path) {
    const std::filesystem::file_status status = std::filesystem::symlink_status(path);
    if (std::filesystem::is_symlink(status)) return SavedKind::kLink;
    if (std::filesystem::is_directory(status)) return SavedKind::kFolder;
    return std::filesystem::is_regular_file(status) ? SavedKind::kFile : SavedKind::kOther;
}

// The same by the simplest means, one object after the other.
void ReadPlainly(const std::string& hostPath, const std::string& path, std::vector<std::string>& rows) {
    const SavedKind kind = KindOf(hostPath);
    const bool isStored = lgetxattr(hostPath.c_str(), "security.NTACL", nullptr, 0) > 0;
    rows.push_back(Recorder::RowOf(path, kind, isStored, test::DescriptorText(hostPath, kParts)));
    if (kind != SavedKind::kFolder) return;
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(hostPath))
        names.push_back(entry.path().filename());
    std::ranges::sort(names);
    for (const std::string& name : names)
        ReadPlainly(hostPath + "/" + name, path.empty() ? name : path + "\\" + name, rows);
}

// Folders, files, links and pipes with lists of several kinds, among them a folder with more names than are
// listed ahead; the same for the same seed.
void MakeRandomTree(const TemporaryFolder& tree, unsigned seed) {
    std::mt19937 random(seed);
    const char* const lists[] = {"O:BUD:", "O:BAD:(A;OICI;FR;;;WD)", "O:BUD:P(A;OICI;FA;;;WD)",
                                 "O:BUD:NO_ACCESS_CONTROL"};
    std::vector<std::string> folders = {""};
    for (int i = 0; i < 500; ++i) {
        // Where one name is the beginning of another, the order of names is not the order of paths.
        const std::string name = folders[random() % folders.size()] + "Aa-"[random() % 3] + std::to_string(i);
        const std::string path = tree.Path(name);
        switch (random() % 6) {
            case 0:
            case 1:
                tree.MakeFolder(name);
                folders.push_back(name + "/");
                break;
            case 2:
                std::filesystem::create_symlink(random() % 2 == 0 ? "/" : "nowhere", path);
                continue;
            case 3:
                ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
                break;
            default:
                tree.MakeFile(name);
        }
        if (random() % 2 == 0)
            ASSERT_EQ(test::SetDescriptorText(path, lists[random() % std::size(lists)]), ERROR_SUCCESS);
    }
    const std::string large = folders[random() % folders.size()] + "large";
    tree.MakeFolder(large);
    for (int i = 0; i < 1100; ++i)
        tree.MakeFile(large + "/" + std::string(240, 'n') + std::to_string(i));
}

TEST(TreeSource, OrderAndContentsAreThoseOfAPlainRecursionWhateverTheThreads) {
    for (const unsigned seed : {1U, 2U}) {
        const TemporaryFolder tree;
        MakeRandomTree(tree, seed);
        std::vector<std::string> expected;
        ReadPlainly(tree.Path(), "", expected);
        for (const Threads threads : {Threads(1), Threads(2), Threads(16), Threads()}) {
            Recorder visitor;
            EXPECT_EQ(Read(tree.Path(), visitor, threads), ERROR_SUCCESS);
            EXPECT_EQ(visitor.rows, expected) << "seed " << seed;
        }
    }
}

// A caller who takes names in any order, passes some by and leaves folders in the middle gets the right ones.
TEST(TreeSource, AnyOrderOfTheNamesIsRight) {
    const TemporaryFolder tree;
    MakeRandomTree(tree, 4);
    const HeldObject top = test::Held(tree.Path());
    for (unsigned seed = 0; seed < 20; ++seed) {
        std::mt19937 random(seed);
        std::size_t count = 0;
        std::function<void(AheadFolder, const std::string&)> readSome = [&](AheadFolder folder,
                                                                            const std::string& path) {
            ASSERT_EQ(folder.List(), ERROR_SUCCESS);
            std::vector<std::size_t> order(folder.Names().Count());
            for (std::size_t i = 0; i < order.size(); ++i)
                order[i] = i;
            for (std::size_t swaps = order.size() / 8; swaps != 0; --swaps)
                std::swap(order[random() % order.size()], order[random() % order.size()]);
            if (random() % 3 == 0) order.resize(order.size() / 2);
            for (const std::size_t index : order) {
                const std::string inside = path + "/" + std::string(folder.Names().Name(index));
                TreeObject object;
                AheadFolder below;
                ASSERT_EQ(folder.Read(index, object, below), ERROR_SUCCESS);
                if (++count % 16 == 0)
                    ASSERT_EQ(test::SddlOfParts(object.descriptor.data(), kParts),
                              test::DescriptorText(inside, kParts))
                        << inside;
                if (below && random() % 8 != 0) readSome(std::move(below), inside);
            }
        };
        TreeObject object;
        AheadFolder folder;
        ASSERT_EQ(AheadFolder::ReadTop(top, kParts, object, folder, 4), ERROR_SUCCESS);
        readSome(std::move(folder), tree.Path());
        EXPECT_GT(count, 0U);
    }
}

TEST(TreeSource, WhatIsMountedBelowIsNotRead) {
    if (const std::string reason = test::CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    const TemporaryFolder tree;
    tree.MakeFolder("a");
    tree.MakeFile("a/inside");
    tree.MakeFolder("volume");
    tree.MakeFile("bound");
    ASSERT_EQ(mount("none", tree.Path("volume").c_str(), "tmpfs", 0, nullptr), 0);
    ASSERT_EQ(mount(tree.Path("a/inside").c_str(), tree.Path("bound").c_str(), nullptr, MS_BIND, nullptr), 0);
    for (const std::size_t threads : {1U, 4U}) {
        Recorder visitor;
        std::vector<std::string> mounted;
        visitor.onVisit = [&](const ReadObject& object) {
            if (object.kind == SavedKind::kMounted) mounted.emplace_back(object.path);
            return true;
        };
        EXPECT_EQ(Read(tree.Path(), visitor, threads), ERROR_SUCCESS);
        EXPECT_THAT(visitor.paths, ElementsAre("", "a", "a\\inside", "bound", "volume"));
        EXPECT_THAT(mounted, ElementsAre("bound", "volume"));
    }
    umount2(tree.Path("bound").c_str(), MNT_DETACH);
    umount2(tree.Path("volume").c_str(), MNT_DETACH);
}

// While the tree is read, its names vanish, and folders become links that lead out of it.
TEST(TreeSource, WhateverHappensMeanwhileNothingOutsideIsRead) {
    const TemporaryFolder outside;
    outside.MakeFile("secret");
    for (const std::size_t threads : {1U, 2U, 16U}) {
        const TemporaryFolder tree;
        for (int i = 0; i < 120; ++i) {
            const std::string name = "f" + std::to_string(i);
            tree.MakeFolder(name);
            tree.MakeFile(name + "/inside");
            tree.MakeFile("n" + std::to_string(i));
        }
        std::thread other([&] {
            std::mt19937 random(5);
            for (int i = 0; i < 120; ++i) {
                const std::string folder = tree.Path("f" + std::to_string(random() % 120));
                std::filesystem::remove_all(folder);
                std::filesystem::create_directory_symlink(outside.Path(), folder);
                std::filesystem::remove(tree.Path("n" + std::to_string(random() % 120)));
            }
        });
        for (int run = 0; run < 5; ++run) {
            Recorder visitor;
            EXPECT_EQ(Read(tree.Path(), visitor, threads), ERROR_SUCCESS);
            EXPECT_TRUE(std::ranges::none_of(
                visitor.paths, [](const std::string& path) { return path.ends_with("secret"); }));
            // Folder by folder: nothing comes before the end of a name.
            for (std::string& path : visitor.paths)
                std::ranges::replace(path, '\\', '\1');
            EXPECT_TRUE(std::ranges::is_sorted(visitor.paths));
            EXPECT_EQ(std::ranges::adjacent_find(visitor.paths), visitor.paths.end());
        }
        other.join();
    }
}

TEST(TreeSource, AStopIsAtOnce) {
    const TemporaryFolder tree;
    for (int i = 0; i < 200; ++i)
        tree.MakeFile(std::to_string(i));
    for (const std::size_t threads : {1U, 4U, 16U}) {
        Recorder visitor;
        visitor.onVisit = [&](const ReadObject&) { return visitor.paths.size() != 100; };
        EXPECT_EQ(Read(tree.Path(), visitor, threads), ERROR_OPERATION_ABORTED);
        EXPECT_EQ(visitor.paths.size(), 100U);
    }
}

std::size_t OpenDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

// Threads run ahead of a caller who takes his time, but not far.
TEST(TreeSource, FewFoldersAreOpenedAhead) {
    const TemporaryFolder tree;
    for (int i = 0; i < 300; ++i) {
        tree.MakeFolder(std::to_string(i));
        tree.MakeFile(std::to_string(i) + "/file");
    }
    Recorder visitor;
    const std::size_t before = OpenDescriptors();
    std::size_t most = 0;
    visitor.onVisit = [&](const ReadObject&) {
        if (visitor.paths.size() % 200 == 10) {
            const auto isAhead = [&] {
                most = std::max(most, OpenDescriptors());
                return most > before + 20;
            };
            test::Await(isAhead, std::chrono::seconds(10));
            std::this_thread::sleep_for(std::chrono::milliseconds(50));  // for those that go too far
        }
        if (visitor.paths.size() % 50 == 10) most = std::max(most, OpenDescriptors());
        return true;
    };
    EXPECT_EQ(Read(tree.Path(), visitor, 16), ERROR_SUCCESS);
    EXPECT_EQ(visitor.paths.size(), 601U);
    EXPECT_GT(most, before + 20) << "nothing was read ahead";
    EXPECT_LT(most, before + 100);
}

// Makes `depth` folders inside one another with a file before and after each; no path is long enough to name
// the last one.
void MakeDeepFolders(const std::string& top, int depth) {
    host::UniqueFd folder(open(top.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    for (int i = 0; i < depth; ++i) {
        ASSERT_EQ(mkdirat(folder.Get(), "d", 0755), 0);
        for (const char* const name : {"before", "file"})
            ASSERT_EQ(mknodat(folder.Get(), name, S_IFREG | 0644, 0), 0);
        folder.Reset(openat(folder.Get(), "d", O_PATH | O_DIRECTORY | O_CLOEXEC));
    }
}

// With something mounted in it, a tree is read without the view in which folders are found by their keys.
class MountIn {
  public:
    explicit MountIn(const TemporaryFolder& tree) : place(tree.MakeFolder("a mount")) {
        EXPECT_EQ(mount("none", place.c_str(), "tmpfs", 0, nullptr), 0);
    }
    ~MountIn() { umount2(place.c_str(), MNT_DETACH); }
    MountIn(const MountIn&) = delete;
    MountIn& operator=(const MountIn&) = delete;

  private:
    const std::string place;
};

TEST(TreeSource, ADeepTreeNeedsFewOpenFolders) {
    if (const std::string reason = test::CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    constexpr int kDepth = 600;
    const TemporaryFolder tree;
    MakeDeepFolders(tree.Path(), kDepth);
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit before = limit;
    limit.rlim_cur = limit.rlim_max = 300;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    const auto readAll = [&](std::size_t objects) {
        for (const std::size_t threads : {1U, 4U}) {
            Recorder visitor;
            visitor.onVisit = [&](const ReadObject& object) { return object.error == ERROR_SUCCESS; };
            EXPECT_EQ(Read(tree.Path(), visitor, threads), ERROR_SUCCESS);
            EXPECT_EQ(visitor.paths.size(), objects);
            EXPECT_EQ(visitor.paths.back(), "file");
        }
    };
    readAll(3 * kDepth + 1);
    const MountIn mounted(tree);
    readAll(3 * kDepth + 2);
    setrlimit(RLIMIT_NOFILE, &before);
}

// The way back up leads nowhere but to the folder that was left.
TEST(TreeSource, AFolderMovedAwayMeanwhileIsToldWhenTheReadingComesBack) {
    if (const std::string reason = test::CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    constexpr std::size_t kDepth = 200;
    for (const bool isMoved : {false, true}) {
        for (const std::size_t threads : {1U, 4U}) {
            const TemporaryFolder outside;
            outside.MakeFile("secret");
            const TemporaryFolder tree;
            MakeDeepFolders(tree.Path(), kDepth);
            const MountIn mounted(tree);
            Recorder visitor;
            std::vector<std::size_t> lost;  // lengths of paths
            visitor.onVisit = [&](const ReadObject& object) {
                // The reading is at the lowest folder, and the highest ones are closed.
                if (isMoved && object.path.size() == 2 * kDepth - 1 && object.kind == SavedKind::kFolder)
                    std::filesystem::rename(tree.Path("d/d/d"), outside.Path("moved"));
                if (object.kind == SavedKind::kUnlisted && object.error == ERROR_FILE_INVALID)
                    lost.push_back(object.path.size());
                return true;
            };
            EXPECT_EQ(Read(tree.Path(), visitor, threads), ERROR_SUCCESS);
            // The moved one is found from those below it, the two above it and the top are not.
            EXPECT_EQ(lost, isMoved ? (std::vector<std::size_t>{3, 1, 0}) : std::vector<std::size_t>());
            EXPECT_TRUE(std::ranges::none_of(
                visitor.paths, [](const std::string& path) { return path.ends_with("secret"); }));
        }
    }
}

// Each further object might take as long to fail.
TEST(TreeSource, TheLossOfTheVolumeEndsTheReading) {
    using test::NtfsVolume;
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    std::filesystem::create_directories(volume.Path("a/b"));
    for (int file = 0; file < 1000; ++file)
        std::filesystem::create_directory(volume.Path("a/b/" + std::to_string(file)));
    Recorder visitor;
    visitor.onVisit = [&](const ReadObject& object) {
        return object.path != "a\\b\\0" || kill(volume.Driver(), SIGKILL) == 0;
    };
    EXPECT_EQ(Read(volume.Root(), visitor, {}), ERROR_SUCCESS);
    ASSERT_GE(visitor.rows.size(), std::size_t{7});
    EXPECT_LT(visitor.rows.size(), std::size_t{1000});
    EXPECT_THAT(std::span(visitor.rows).last(4),
                ElementsAre(testing::MatchesRegex("a.b.[0-9]+ un(read|listed) stored 1167"),
                            "a\\b unlisted stored 1167", "a unlisted stored 1167", " unlisted stored 1167"));
}

}  // namespace
}  // namespace permora
