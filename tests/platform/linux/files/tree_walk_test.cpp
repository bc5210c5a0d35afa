#include "platform/linux/files/tree_walk.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/command.h"
#include "tests/support/patience.h"
#include "tests/support/temporary_folder.h"

namespace permora::host {
namespace {

using test::TemporaryFolder;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

ObjectHandle OpenFolder(const std::string& path) {
    ObjectHandle handle;
    EXPECT_EQ(ObjectHandle::OpenAt(AT_FDCWD, path.c_str(), handle), ERROR_SUCCESS);
    return handle;
}

// Keeps the paths of what a walk visits and what it reports, in one order whatever that of the walk.
class Recorder : public TreeVisitor {
  public:
    std::unique_ptr<VisitingThread> NewThread() override {
        ++threads;
        return std::make_unique<Thread>(*this);
    }
    void Fail(DWORD error, const std::string& path) override { failures.emplace(path, error); }

    // Called for each object, on the threads of the walk.
    std::function<WalkDecision(const VisitedObject&)> onVisit = [](const VisitedObject&) {
        return WalkDecision::kDescend;
    };

    int threads = 0;
    std::multiset<std::string> visited;
    std::multimap<std::string, DWORD> failures;

  private:
    class Thread : public VisitingThread {
      public:
        explicit Thread(Recorder& shared) : recorder(shared) {}
        ~Thread() override { recorder.visited.merge(visited); }
        WalkDecision Visit(const VisitedObject& object, std::unique_ptr<FolderNotes>&) override {
            visited.insert(object.Path());
            return recorder.onVisit(object);
        }

      private:
        Recorder& recorder;
        std::multiset<std::string> visited;
    };
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
    Recorder visitor;
    WalkTree(OpenFolder(tree.Path()), nullptr, visitor);
    umount2(tree.Path("bound").c_str(), MNT_DETACH);
    umount2(tree.Path("volume").c_str(), MNT_DETACH);
    EXPECT_THAT(visitor.visited, ElementsAre("a", "a\\inside"));
    EXPECT_THAT(visitor.failures,
                ElementsAre(Pair("bound", ERROR_NOT_SAME_DEVICE), Pair("volume", ERROR_NOT_SAME_DEVICE)));
}

TEST(TreeWalk, AFolderThatMayNotBeListedIsToldByItsPath) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can become somebody else";
    const TemporaryFolder tree;
    ASSERT_EQ(chmod(tree.Path().c_str(), 0755), 0);
    tree.MakeFolder("a");
    ASSERT_EQ(chmod(tree.MakeFolder("a/closed").c_str(), 0711), 0);
    const auto failuresBelow = [&](const std::string& folder) {
        return test::AsOrdinaryUser([&] {
            Recorder visitor;
            WalkTree(OpenFolder(folder), nullptr, visitor);
            std::string failures;
            for (const auto& [path, error] : visitor.failures)
                failures += std::to_string(error) + " \"" + path + "\" ";
            return failures;
        });
    };
    EXPECT_EQ(failuresBelow(tree.Path()), "5 \"a\\closed\" ");
    EXPECT_EQ(failuresBelow(tree.Path("a/closed")), "5 \"\" ");
}

// Some tree of folders and files, the same for the same seed.
void MakeRandomTree(const TemporaryFolder& tree, unsigned seed, std::multiset<std::string>& paths) {
    std::mt19937 random(seed);
    std::vector<std::string> folders = {""};
    for (int i = 0; i < 600; ++i) {
        const std::string& parent = folders[random() % folders.size()];
        const std::string name = parent + std::to_string(i);
        std::string shown = name;
        std::ranges::replace(shown, '/', '\\');
        paths.insert(shown);
        if (random() % 3 == 0) {
            tree.MakeFolder(name);
            folders.push_back(name + '/');
        } else {
            tree.MakeFile(name);
        }
    }
}

TEST(TreeWalk, EveryNameIsVisitedOnceAfterItsFolderWhateverTheThreads) {
    for (const unsigned seed : {1U, 2U, 3U, 4U}) {
        const TemporaryFolder tree;
        std::multiset<std::string> paths;
        MakeRandomTree(tree, seed, paths);
        for (const std::size_t threads : {1U, 2U, 4U, 16U}) {
            Recorder visitor;
            std::mutex guard;
            std::set<std::string> begun = {""};
            visitor.onVisit = [&](const VisitedObject& object) {
                const std::lock_guard lock(guard);
                EXPECT_EQ(begun.count(object.place->PathOf("")), 1U);
                begun.insert(object.Path());
                return WalkDecision::kDescend;
            };
            WalkTree(OpenFolder(tree.Path()), nullptr, visitor, threads);
            EXPECT_EQ(visitor.visited, paths) << threads << " threads, seed " << seed;
            EXPECT_THAT(visitor.failures, IsEmpty());
            EXPECT_EQ(visitor.threads, static_cast<int>(threads));
        }
    }
}

// Both in one folder and in folders of one, all threads find something to do.
TEST(TreeWalk, OneFolderOfFilesAndFoldersWithOneFileOccupyAllThreads) {
    const TemporaryFolder files;
    const TemporaryFolder folders;
    for (int i = 0; i < 64; ++i) {
        files.MakeFile(std::to_string(i));
        folders.MakeFile(folders.MakeFolder(std::to_string(i)).substr(folders.Path().size() + 1) + "/file");
    }
    for (const std::string& tree : {files.Path(), folders.Path()}) {
        Recorder visitor;
        std::mutex guard;
        std::condition_variable allHere;
        std::set<std::thread::id> atWork;
        visitor.onVisit = [&](const VisitedObject&) {
            std::unique_lock lock(guard);
            atWork.insert(std::this_thread::get_id());
            allHere.notify_all();
            allHere.wait_for(lock, test::kPatience, [&] { return atWork.size() == 4; });
            return WalkDecision::kDescend;
        };
        WalkTree(OpenFolder(tree), nullptr, visitor, 4);
        EXPECT_EQ(atWork.size(), 4U);
    }
}

// Keeps count of those that there are.
struct CountedNotes : FolderNotes {
    explicit CountedNotes(std::atomic<int>& counted) : count(counted) { ++count; }
    ~CountedNotes() override { --count; }
    std::atomic<int>& count;
};

TEST(TreeWalk, NotesLiveAsLongAsSomethingBelowIsInWork) {
    const TemporaryFolder tree;
    std::multiset<std::string> paths;
    MakeRandomTree(tree, 5, paths);
    class Noting : public TreeVisitor {
      public:
        class Thread : public VisitingThread {
          public:
            explicit Thread(std::atomic<int>& counted) : count(counted) {}
            WalkDecision Visit(const VisitedObject& object, std::unique_ptr<FolderNotes>& notes) override {
                for (FolderRef folder = object.place; folder; folder = folder->Above())
                    EXPECT_GT(static_cast<CountedNotes&>(*folder->Notes()).count, 0);
                notes = std::make_unique<CountedNotes>(count);
                return object.hostName.back() == '7' ? WalkDecision::kPassOver : WalkDecision::kDescend;
            }
            std::atomic<int>& count;
        };
        std::unique_ptr<VisitingThread> NewThread() override { return std::make_unique<Thread>(count); }
        void Fail(DWORD, const std::string&) override {}
        std::atomic<int> count = 0;
    };
    Noting visitor;
    WalkTree(OpenFolder(tree.Path()), std::make_unique<CountedNotes>(visitor.count), visitor, 4);
    EXPECT_EQ(visitor.count, 0);
}

TEST(TreeWalk, AStopReachesAllThreadsAtOnce) {
    const TemporaryFolder tree;
    for (int i = 0; i < 1000; ++i)
        tree.MakeFile(std::to_string(i));
    for (const std::size_t threads : {1U, 4U, 16U}) {
        Recorder visitor;
        std::atomic<int> calls = 0;
        visitor.onVisit = [&](const VisitedObject&) {
            const int call = ++calls;
            if (call == 40) return WalkDecision::kStop;
            // The thread with the decision may have to wait for a processor before it tells the others.
            std::this_thread::sleep_for(std::chrono::milliseconds(call < 40 ? 1 : 500));
            return WalkDecision::kDescend;
        };
        WalkTree(OpenFolder(tree.Path()), nullptr, visitor, threads);
        EXPECT_LT(calls, 40 + static_cast<int>(threads)) << "visits that have begun may end";
    }
}

// Threads come where a request takes long whatever the processors.
TEST(TreeWalk, LatencyIsHiddenByThreads) {
    const TemporaryFolder tree;
    for (int i = 0; i < 3000; ++i)
        tree.MakeFile(std::to_string(i));
    Recorder visitor;
    visitor.onVisit = [](const VisitedObject&) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        return WalkDecision::kDescend;
    };
    WalkTree(OpenFolder(tree.Path()), nullptr, visitor);
    EXPECT_GE(visitor.threads, 4);
    EXPECT_EQ(visitor.visited.size(), 3000U);
}

// Makes `depth` folders inside one another with a file in each; no path is long enough to name the last one.
void MakeDeepFolders(const std::string& top, int depth) {
    UniqueFd folder(open(top.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    for (int i = 0; i < depth; ++i) {
        ASSERT_EQ(mkdirat(folder.Get(), "d", 0755), 0);
        ASSERT_EQ(mknodat(folder.Get(), "file", S_IFREG | 0644, 0), 0);
        folder.Reset(openat(folder.Get(), "d", O_PATH | O_DIRECTORY | O_CLOEXEC));
    }
}

// What a walk counts without keeping the paths, which are long here.
class Counter : public TreeVisitor {
  public:
    class Thread : public VisitingThread {
      public:
        explicit Thread(Counter& shared) : counter(shared) {}
        WalkDecision Visit(const VisitedObject& object, std::unique_ptr<FolderNotes>&) override {
            ++counter.objects;
            if (counter.onVisit) counter.onVisit(object);
            return WalkDecision::kDescend;
        }
        Counter& counter;
    };
    std::unique_ptr<VisitingThread> NewThread() override { return std::make_unique<Thread>(*this); }
    bool WantsReadableFiles() const override { return isInView; }
    void Fail(DWORD error, const std::string&) override { errors.insert(error); }

    std::function<void(const VisitedObject&)> onVisit;
    bool isInView = false;
    std::atomic<std::size_t> objects = 0;
    std::multiset<DWORD> errors;
};

TEST(TreeWalk, ADeepTreeNeedsFewOpenFolders) {
    constexpr int kDepth = 600;
    const TemporaryFolder tree;
    MakeDeepFolders(tree.Path(), kDepth);
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit before = limit;
    limit.rlim_cur = limit.rlim_max = 400;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    for (const bool isInView : {false, true}) {
        for (const std::size_t threads : {1U, 4U}) {
            Counter visitor;
            visitor.isInView = isInView;
            WalkTree(OpenFolder(tree.Path()), nullptr, visitor, threads);
            EXPECT_EQ(visitor.objects, std::size_t{2 * kDepth});
            EXPECT_THAT(visitor.errors, IsEmpty());
        }
    }
    setrlimit(RLIMIT_NOFILE, &before);
}

// Handing each of its folders to another thread would take longer than visiting it.
TEST(TreeWalk, AChainOfFoldersIsWalkedByOneThread) {
    const TemporaryFolder tree;
    std::string path;
    for (int i = 0; i < 300; ++i)
        tree.MakeFolder(path += (i == 0 ? "d" : "/d"));
    Counter visitor;
    std::mutex guard;
    std::set<std::thread::id> atWork;
    visitor.onVisit = [&](const VisitedObject&) {
        const std::lock_guard lock(guard);
        atWork.insert(std::this_thread::get_id());
        std::this_thread::yield();
    };
    WalkTree(OpenFolder(tree.Path()), nullptr, visitor, 4);
    EXPECT_EQ(visitor.objects, 300U);
    EXPECT_EQ(atWork.size(), 1U);
}

// The way back up leads nowhere but to the folder that was left. In a view without devices that is found
// wherever it is by then, as if it were open still; elsewhere only from below.
TEST(TreeWalk, AFolderMovedAwayMeanwhileLeadsTheWalkNowhereElse) {
    constexpr std::size_t kDepth = 200;
    const bool hasView = test::CannotMountReason().empty();
    for (const bool isInView : {false, true}) {
        if (isInView && !hasView) continue;
        const TemporaryFolder outside;
        outside.MakeFile("secret");
        const TemporaryFolder tree;
        MakeDeepFolders(tree.Path(), kDepth);
        Counter visitor;
        visitor.isInView = isInView;
        std::atomic<bool> hasSeenSecret = false;
        visitor.onVisit = [&](const VisitedObject& object) {
            if (object.hostName == "secret") hasSeenSecret = true;
            std::size_t depth = 0;
            for (FolderRef folder = object.place; folder; folder = folder->Above())
                ++depth;
            // The walk is at the lowest folder, and the highest ones are closed.
            if (depth == kDepth && object.hostName == "d")
                std::filesystem::rename(tree.Path("d/d/d"), outside.Path("d"));
        };
        WalkTree(OpenFolder(tree.Path()), nullptr, visitor, 1);
        EXPECT_FALSE(hasSeenSecret);
        EXPECT_GE(visitor.objects, 2 * kDepth - 3);
        if (isInView) {
            EXPECT_THAT(visitor.errors, IsEmpty());
        } else {
            EXPECT_THAT(visitor.errors,
                        testing::AllOf(testing::Not(IsEmpty()), testing::Each(ERROR_FILE_INVALID)));
        }
    }
}

// Folders are swapped for links to another place all the time.
TEST(TreeWalk, SwappedNamesLeadNowhereElse) {
    const TemporaryFolder outside;
    outside.MakeFile("secret");
    const TemporaryFolder tree;
    for (int i = 0; i < 8; ++i) {
        const std::string name = std::to_string(i);
        tree.MakeFolder(name);
        tree.MakeFile(name + "/file");
        std::filesystem::create_directory_symlink(outside.Path(), tree.Path(name + "link"));
    }
    std::atomic<bool> isOver = false;
    std::thread swapper([&] {
        for (unsigned i = 0; !isOver; i = (i + 1) % 8) {
            const std::string name = tree.Path(std::to_string(i));
            renameat2(AT_FDCWD, name.c_str(), AT_FDCWD, (name + "link").c_str(), RENAME_EXCHANGE);
        }
    });
    for (int round = 0; round < 100; ++round) {
        Recorder visitor;
        visitor.onVisit = [](const VisitedObject& object) {
            EXPECT_NE(object.hostName, "secret");
            return WalkDecision::kDescend;
        };
        WalkTree(OpenFolder(tree.Path()), nullptr, visitor, 4);
        EXPECT_THAT(visitor.failures, IsEmpty());
    }
    isOver = true;
    swapper.join();
}

}  // namespace
}  // namespace permora::host
