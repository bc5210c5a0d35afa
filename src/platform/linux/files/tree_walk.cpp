#include "platform/linux/files/tree_walk.h"

#include <dirent.h>
#include <fcntl.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/base/unique_fd.h"
#include "platform/linux/files/closed_folder.h"
#include "platform/linux/files/linux_volume.h"
#include "platform/linux/files/open_folder.h"
#include "platform/linux/files/unmounted_entry.h"
#include "platform/thread_tuner.h"
#include "platform/volume_loss.h"

namespace permora::host {
namespace {

// A server with a latency wants many requests at a time, whatever the processors.
constexpr std::size_t kLeastLimit = 16;
constexpr std::size_t kOpenLevels = 64;  // of one thread

std::size_t MostThreads() {
    return std::max<std::size_t>(kLeastLimit, std::thread::hardware_concurrency());
}

// What the threads of a walk share.
class WalkShare {
  public:
    WalkShare(TreeVisitor& caller, std::optional<std::size_t> fixed, bool hasNoDevices)
        : isFixed(fixed.has_value()),
          areFilesOpened(hasNoDevices),
          visitor(caller),
          allowed(fixed.value_or(1)),
          tuner(MostThreads(), std::thread::hardware_concurrency(), std::chrono::steady_clock::now()) {}

    // Folders with names to come.
    void Add(const std::shared_ptr<OpenFolder>& folder);
    void Remove(const std::shared_ptr<OpenFolder>& folder);
    // Removes a folder that only the calling thread works on, and is then the only one to know. False when
    // others do.
    bool Withdraw(const std::shared_ptr<OpenFolder>& folder);

    // Waits until the thread with this number may work on a folder; null at the end of the walk.
    std::shared_ptr<OpenFolder> Join(std::size_t number);
    // The thread has nothing in work any more.
    void Rest();

    bool MayWork(std::size_t number) const { return number < allowed.load(std::memory_order_relaxed); }
    bool IsStopped() const { return isStopped.load(std::memory_order_relaxed); }
    void Stop() { isStopped = true; }
    // One object more is done. Whether further threads are to be started.
    bool CountObject();
    std::size_t Allowed() const { return allowed; }

    std::unique_ptr<VisitingThread> NewThread();
    void EndThread(std::unique_ptr<VisitingThread> thread);
    void Fail(DWORD error, const std::string& path);

    const bool isFixed;
    const bool areFilesOpened;  // rather than only named

  private:
    void SetAllowed(std::size_t threads);

    std::mutex visitorGuard;
    TreeVisitor& visitor;

    std::mutex guard;  // of the next ones
    std::condition_variable work;
    std::condition_variable permission;
    OpenFolders joinable;
    std::size_t busy = 0;
    bool isOver = false;

    std::atomic<bool> isStopped = false;
    std::atomic<std::size_t> allowed;
    std::atomic<std::uint64_t> objects = 0;

    std::mutex tunerGuard;
    ThreadTuner tuner;
};

void WalkShare::Add(const std::shared_ptr<OpenFolder>& folder) {
    {
        const std::lock_guard lock(guard);
        joinable.push_back(folder);
    }
    work.notify_one();
}

// From the back: what was opened last mostly ends first.
void WalkShare::Remove(const std::shared_ptr<OpenFolder>& folder) {
    const std::lock_guard lock(guard);
    const auto found = std::find(joinable.rbegin(), joinable.rend(), folder);
    if (found != joinable.rend()) joinable.erase(std::next(found).base());
}

bool WalkShare::Withdraw(const std::shared_ptr<OpenFolder>& folder) {
    const std::lock_guard lock(guard);
    const auto found = std::find(joinable.begin(), joinable.end(), folder);
    const bool isJoinable = found != joinable.end();
    if (folder.use_count() > (isJoinable ? 2 : 1)) return false;
    if (isJoinable) joinable.erase(found);
    return true;
}

std::shared_ptr<OpenFolder> WalkShare::Join(std::size_t number) {
    std::unique_lock lock(guard);
    for (;;) {
        if (isOver || IsStopped() || (busy == 0 && joinable.empty())) {
            isOver = true;
            work.notify_all();
            permission.notify_all();
            return nullptr;
        }
        if (!MayWork(number)) {
            work.notify_one();  // the call may have been for one that may
            permission.wait(lock);
        } else if (joinable.empty()) {
            work.wait(lock);
        } else {
            ++busy;
            return joinable.front();
        }
    }
}

void WalkShare::Rest() {
    {
        const std::lock_guard lock(guard);
        --busy;
    }
    work.notify_one();
}

void WalkShare::SetAllowed(std::size_t threads) {
    {
        const std::lock_guard lock(guard);
        allowed = threads;
    }
    permission.notify_all();
}

bool WalkShare::CountObject() {
    constexpr std::uint64_t kObjectsBetweenLooks = 4;
    const std::uint64_t done = objects.fetch_add(1, std::memory_order_relaxed) + 1;
    if (isFixed || (done > kObjectsBetweenLooks && done % kObjectsBetweenLooks != 0)) return false;
    const std::unique_lock lock(tunerGuard, std::try_to_lock);
    if (!lock.owns_lock()) return false;
    const std::size_t before = allowed;
    const std::size_t threads = tuner.Update(done, std::chrono::steady_clock::now());
    if (threads != before) SetAllowed(threads);
    return threads > before;
}

std::unique_ptr<VisitingThread> WalkShare::NewThread() {
    const std::lock_guard lock(visitorGuard);
    return visitor.NewThread();
}

void WalkShare::EndThread(std::unique_ptr<VisitingThread> thread) {
    const std::lock_guard lock(visitorGuard);
    thread.reset();
}

void WalkShare::Fail(DWORD error, const std::string& path) {
    const std::lock_guard lock(visitorGuard);
    visitor.Fail(error, path);
    if (IsVolumeLost(error)) Stop();
}

// The threads beside the caller's.
class Helpers {
  public:
    explicit Helpers(WalkShare& shared) : share(shared) {}
    // Only when the caller's thread has nothing left to do.
    ~Helpers() {
        {
            const std::lock_guard lock(guard);
            isEnded = true;
        }
        for (std::thread& thread : threads)
            thread.join();
    }

    // As many as may work now. A system that starts no more leaves the work to those that there are.
    void Start();

  private:
    WalkShare& share;
    std::mutex guard;
    bool isEnded = false;
    std::vector<std::thread> threads;
};

// One thread on its way down: the folders that it works on, each in the one before it.
class Descent {
  public:
    Descent(WalkShare& shared, Helpers& started, std::size_t ownNumber)
        : share(shared), helpers(started), number(ownNumber), visiting(share.NewThread()) {}
    ~Descent() { share.EndThread(std::move(visiting)); }

    void Run() {
        while (std::shared_ptr<OpenFolder> joined = share.Join(number)) {
            const FolderRef folder = joined->Folder();
            levels.push_back({.open = std::move(joined), .folder = folder, .isShared = true});
            while (!levels.empty() && !share.IsStopped() && (closed != 0 || share.MayWork(number)))
                Step();
            // What is left here is for the others.
            for (Level& level : levels)
                ShareLevel(level);
            levels.clear();
            closed = nextToClose = 0;
            visiting->Rest();
            share.Rest();
        }
    }

  private:
    // A folder that is in work, or closed for the time being.
    struct Level {
        std::shared_ptr<OpenFolder> open;
        FolderRef folder;
        bool isShared = false;                 // others may take names from it
        std::optional<ClosedFolder> way = {};  // to a closed one
        off_t position = 0;
    };

    void Step();
    void ShareLevel(Level& level);
    DWORD OpenEntry(int folder, unsigned char type, ObjectHandle& object) const;
    void VisitEntry(OpenFolder& folder, unsigned char type);
    void Enter(ObjectHandle& object, std::unique_ptr<FolderNotes> notes);
    void CloseHighLevel();
    void Reopen(int below);
    static DWORD OpenAbove(int below, Level& level);

    WalkShare& share;
    Helpers& helpers;
    const std::size_t number;
    std::unique_ptr<VisitingThread> visiting;
    std::vector<Level> levels;
    std::size_t closed = 0;       // how many of them are
    std::size_t nextToClose = 0;  // the lowest that was not tried
    std::string name;
};

void Descent::ShareLevel(Level& level) {
    if (!level.isShared && level.open) share.Add(level.open);
    level.isShared = true;
}

void Descent::Step() {
    OpenFolder& folder = *levels.back().open;
    DWORD error = ERROR_SUCCESS;
    if (unsigned char type = DT_UNKNOWN; folder.Next(name, type, error)) {
        // A single name is not worth waking another thread: in a chain of folders it would wait for this one
        // at each of them.
        if (folder.HasMore()) ShareLevel(levels.back());
        return VisitEntry(folder, type);
    }
    if (error != ERROR_SUCCESS) share.Fail(error, folder.Folder()->PathOf(""));
    const Level ended = std::move(levels.back());
    levels.pop_back();
    if (ended.isShared) share.Remove(ended.open);
    nextToClose = std::min(nextToClose, levels.size());
    if (!levels.empty() && !levels.back().open) Reopen(ended.open->Descriptor());
}

DWORD Descent::OpenEntry(int folder, unsigned char type, ObjectHandle& object) const {
    if (type == DT_DIR) return ObjectHandle::OpenUnmountedFolderAt(folder, name.c_str(), object);
    if (type == DT_REG && share.areFilesOpened)
        return ObjectHandle::OpenUnmountedFileAt(folder, name.c_str(), object);
    return ObjectHandle::OpenUnmountedAt(folder, name.c_str(), object);
}

void Descent::VisitEntry(OpenFolder& folder, unsigned char type) {
    ObjectHandle object;
    const DWORD error = OpenEntry(folder.Descriptor(), type, object);
    if (error == ERROR_FILE_NOT_FOUND) return;
    if (error != ERROR_SUCCESS) return share.Fail(error, folder.Folder()->PathOf(name));
    std::unique_ptr<FolderNotes> notes;
    const WalkDecision decision =
        visiting->Visit({object, name, folder.Folder(), folder.Descriptor()}, notes);
    if (decision == WalkDecision::kStop) return share.Stop();
    if (share.CountObject()) helpers.Start();
    if (decision == WalkDecision::kDescend && object.IsFolder()) Enter(object, std::move(notes));
}

void Descent::Enter(ObjectHandle& object, std::unique_ptr<FolderNotes> notes) {
    FolderRef entered = WalkedFolder::Make(levels.back().folder, name, std::move(notes));
    UniqueFd listing;
    const DWORD error = object.TakeForListing(listing);
    if (error == ERROR_FILE_NOT_FOUND) return;
    if (error != ERROR_SUCCESS) return share.Fail(error, entered->PathOf(""));
    levels.push_back(
        {.open = std::make_shared<OpenFolder>(entered, std::move(listing), 0), .folder = entered});
    if (levels.size() - closed > kOpenLevels) CloseHighLevel();
}

// The highest that no other thread works on.
void Descent::CloseHighLevel() {
    for (; nextToClose + 1 < levels.size(); ++nextToClose) {
        Level& level = levels[nextToClose];
        if (!level.open) continue;
        level.way = ClosedFolder::Of(level.open->Descriptor(), share.areFilesOpened);
        if (!level.way || !share.Withdraw(level.open)) continue;
        level.position = level.open->Position();
        level.open.reset();
        level.isShared = false;
        ++closed;
        ++nextToClose;
        return;
    }
}

DWORD Descent::OpenAbove(int below, Level& level) {
    UniqueFd opened;
    const DWORD error = level.way->Open(below, O_RDONLY, opened);
    if (error != ERROR_SUCCESS) return error;
    level.open = std::make_shared<OpenFolder>(level.folder, std::move(opened), level.position);
    return ERROR_SUCCESS;
}

// The folder that the walk comes back to, from the one that it has just ended. Without it the closed ones
// above are out of reach too.
void Descent::Reopen(int below) {
    const DWORD error = OpenAbove(below, levels.back());
    if (error == ERROR_SUCCESS) {
        --closed;
        nextToClose = std::min(nextToClose, levels.size() - 1);
        return;
    }
    while (!levels.empty() && !levels.back().open) {
        share.Fail(error, levels.back().folder->PathOf(""));
        levels.pop_back();
        --closed;
    }
    nextToClose = std::min(nextToClose, levels.size());
}

void Helpers::Start() {
    const std::lock_guard lock(guard);
    try {
        while (!isEnded && threads.size() + 1 < share.Allowed()) {
            const std::size_t number = threads.size() + 1;
            threads.emplace_back([this, number] { Descent(share, *this, number).Run(); });
        }
    } catch (const std::system_error&) {
        // The system has no more threads.
    }
}

}  // namespace

void WalkTree(const ObjectHandle& folder, std::unique_ptr<FolderNotes> notes, TreeVisitor& visitor,
              std::optional<std::size_t> threads) {
    RaiseDescriptorLimit();
    FolderRef top = WalkedFolder::Make({}, "", std::move(notes));
    std::optional<UniqueFd> view;
    if (visitor.WantsReadableFiles()) view = OpenWithoutDevices(folder);
    UniqueFd listing;
    const DWORD error = view ? ERROR_SUCCESS : folder.OpenForListing(listing);
    if (error == ERROR_FILE_NOT_FOUND) return;
    if (error != ERROR_SUCCESS) return visitor.Fail(error, "");
    WalkShare share(visitor, threads, view.has_value());
    if (view) listing = std::move(*view);
    share.Add(std::make_shared<OpenFolder>(std::move(top), std::move(listing), 0));
    Helpers helpers(share);
    helpers.Start();
    Descent(share, helpers, 0).Run();
}

}  // namespace permora::host
