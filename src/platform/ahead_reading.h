// The inside of AheadFolder: what several threads read of a tree, in the order of the tree.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/api/errors.h"
#include "platform/thread_tuner.h"
#include "platform/tree_reading.h"

namespace permora::ahead {

struct Folder {
    Folder(TreeFolder opened, std::size_t ownDepth) : open(std::move(opened)), depth(ownDepth) {}

    TreeFolder open;
    const std::size_t depth;
    FolderNames names;
    DWORD listError = ERROR_SUCCESS;
    bool isListed = false;
    bool isSuspended = false;
    bool isLost = false;
    std::size_t users = 0;  // threads that read ahead in it just now
    std::size_t left = 0;   // names that the caller has not asked for
};

struct FoundObject {
    DWORD error;
    TreeObjectKind kind;
    bool isStored;
    bool isFolderNow;  // and was listed as something else: the caller reads it once more
    std::uint32_t begin;
    std::uint32_t end;  // of its descriptor in the piece
};

// Names that follow each other in one folder: a single one that is a folder's, or several that are not.
struct Piece {
    enum class State : std::uint8_t { kIdle, kBusy, kDone };

    bool IsOfFolder() const { return folder->names.Kind(begin) == TreeObjectKind::kFolder; }
    bool Has(const Folder& wanted, std::size_t index) const {
        return folder.get() == &wanted && index >= begin && index < end;
    }
    // Where the piece ends that is cut from this one, begins with that name, and has at most so many.
    std::size_t EndOfCut(std::size_t first, std::size_t count) const;
    void Add(DWORD error, const TreeObject& object, bool isFolderNow);
    std::size_t Bytes() const;

    std::shared_ptr<Folder> folder;
    std::size_t begin;
    std::size_t end;  // of an idle one: all that is left of the folder; pieces are cut from its front
    State state = State::kIdle;
    bool isDropped = false;
    std::vector<FoundObject> found = {};
    std::vector<std::uint8_t> bytes = {};
    std::size_t countedBytes = 0;
    std::shared_ptr<Folder> below = {};  // what that folder is
};

// In the order of the tree, from the caller's place on. Threads add to the places of what they have read.
using Pieces = std::list<Piece>;

// What a thread reads with.
struct Reader {
    explicit Reader(const TreeFolder& folder) : buffers(folder) {}

    DWORD Read(const Folder& folder, std::size_t index, TreeObject& into, TreeFolder& below);

    TreeBuffers buffers;
    TreeObject object;
    std::string name;
};

// What all folders of a tree share.
class Reading {
  public:
    Reading(const std::shared_ptr<Folder>& first, std::optional<std::size_t> fixed);
    ~Reading();
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

    // What follows is for the caller's thread.

    // The caller goes into a folder, at the place that is returned, and out of it.
    std::size_t Enter(Folder& folder);
    void Leave(Folder& folder, std::size_t place);
    void List(const std::shared_ptr<Folder>& folder);

    // The caller wants this name. It gets the piece that has it, or is to read the names from there on to the
    // end that is returned itself.
    std::size_t Fetch(const Folder& folder, std::size_t index, Pieces& piece);
    // The caller does not need the piece any more.
    void Return(Pieces& piece);
    DWORD Read(const Folder& folder, std::size_t index, TreeObject& object, TreeFolder& below);

  private:
    using Clock = std::chrono::steady_clock;

    void Work(std::size_t number);
    Clock::duration ReadPiece(Piece& piece, Reader& reader) const;

    // With the lock held.
    Pieces::iterator Claim();
    Pieces::iterator Cut(Pieces::iterator idle);
    void Finish(Pieces::iterator piece, Clock::duration took);
    void Measure(std::size_t read, Clock::duration took);
    void InsertRest(Pieces::iterator next, const std::shared_ptr<Folder>& folder, std::size_t begin,
                    std::size_t end);
    void Help(std::unique_lock<std::mutex>& lock);
    void Drop(Pieces::iterator piece);
    void DropBelow(const Folder& folder);
    void Pass(Pieces::iterator piece);
    void WakeForRoom();
    void WakeOne();
    void Tune();
    void StartThreads();

    bool SuspendHighest();
    void Resume(Folder& folder, const Folder& below);

    const std::shared_ptr<Folder> top;
    const bool isFixed;
    std::atomic<bool> isEnded = false;
    // The folder that the caller has entered and not listed. What follows it waits until it is, or that would
    // fill the room for what the caller wants first.
    std::atomic<const Folder*> unlisted = nullptr;

    // The caller's alone.
    Reader callers;
    std::size_t callersObjects = 0;  // that are not counted yet
    Clock::time_point callersBegin;  // of reading them
    std::vector<Folder*> path;       // null: one that was left before those below it
    std::size_t suspended = 0;       // so many of them, from the top
    std::size_t wanted = 0;          // so many of those have names left

    std::mutex guard;  // of the next ones
    std::condition_variable work;
    std::condition_variable permission;
    std::condition_variable progress;
    Pieces pieces;
    Pieces dropped;              // the caller has passed them by while they were read
    Pieces::iterator firstIdle;  // no idle piece comes before it
    std::size_t namesOfPiece = 1;
    std::size_t aheadBytes = 0;
    std::size_t aheadPieces = 0;
    std::size_t openAhead = 0;
    bool isFull = false;  // so that a thread has gone to sleep
    std::size_t sleeping = 0;
    bool isCallerWaiting = false;
    std::size_t allowed;
    std::uint64_t objects = 0;
    ThreadTuner tuner;
    std::vector<std::thread> threads;
};

}  // namespace permora::ahead
