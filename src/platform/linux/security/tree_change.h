// The common part of changes to many objects below a folder: the order of reading, recording and writing,
// what a folder hands down, the turns and the counts.
//
// A change is recorded before it is written, and making a record durable takes as long for hundreds of
// objects as for one. So each thread collects a batch: the objects that it has visited and that are to
// change. They are recorded together and then written in the order of the visits. While a batch is being
// recorded, on a thread of its own, the one before is written and the next one is filled, so that the walk
// waits for the disk only when that takes longer. A folder is visited before what is in it, but may be
// written later than that is read: its contents are judged by the list that it is about to get, and wait with
// their own write until the folder has been written. Should it keep its old list, they are judged again, or
// left alone.
//
// A folder may be in a batch of another thread, which the thread that is at its contents then waits for.
// Nobody waits for ever: of all objects in batches, take the one that was visited first. Its folder was
// visited earlier, so it is written. The thread that has it in a batch therefore waits for nobody at it, and
// writes nothing before it, since it writes in the order of its visits. And it comes to writing: a thread
// settles its batches before it waits for a turn or for work, and at its next visit when others wait.
//
// The turn on a folder is taken before it is read, and kept while the walk is in it. That on a file waits for
// the write where a second look at the file is cheap: then it is read again, and judged again if others have
// changed it. The kernel looks through all turns for each new one, so hundreds at a time would take longer.
// On NTFS a look costs as much as a write, so the turns on the files of a batch are kept until it is written.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/linux/files/object_handle.h"
#include "platform/linux/files/tree_walk.h"
#include "platform/linux/security/descriptor_store.h"
#include "platform/linux/security/object_turn.h"
#include "platform/linux/security/recorded_top.h"
#include "platform/nt/acl.h"
#include "platform/tree_security.h"

namespace permora::host {

// What the objects in a folder inherit.
struct HandedDown {
    DWORD error = ERROR_SUCCESS;          // why it is not known; then nothing in the folder can be set
    std::shared_ptr<const nt::Acl> list;  // the folder's; null where nobody needs it
};

// The list of a folder. Most folders have the list of their parent, so deep trees then need one list in
// memory.
std::shared_ptr<const nt::Acl> ShareList(nt::Acl& list, const std::shared_ptr<const nt::Acl>& above);

// What a walk knows of a folder that it enters. Used on any thread.
class FolderState {
  public:
    enum class Stage {
        kPending,      // it is not certain yet whether the folder gets the list that was announced
        kAsAnnounced,  // it has that list
        kOtherwise,    // it has another one
        kLeftAlone,    // and so must be what is in it
    };

    FolderState(Stage first, HandedDown list, ObjectTurn taken)
        : turn(std::move(taken)), announced(std::move(list)), stage(first) {}

    Stage Now() const { return stage.load(std::memory_order_acquire); }
    // In that stage, which the folder has reached.
    const HandedDown& HandsDown(Stage reached) const {
        return reached == Stage::kOtherwise ? instead : announced;
    }

  private:
    friend class TreeChange;
    const ObjectTurn turn;  // nobody else changes the folder while the walk is in it
    const HandedDown announced;
    HandedDown instead;  // set once, before the stage
    std::atomic<Stage> stage;
};

struct ChangedFolder : FolderNotes {
    explicit ChangedFolder(std::shared_ptr<FolderState> known) : state(std::move(known)) {}
    const std::shared_ptr<FolderState> state;
};

// The state that all threads share.
class TreeChange : public TreeVisitor {
  public:
    // `volume` is the store of what is changed.
    TreeChange(TreeListMode writing, const RecordedTop& top, const DescriptorStore& volume)
        : mode(writing), store(volume), recordedTop(top) {}

  protected:
    // Walks what is below `folder`. 0, or the code with which the change was ended.
    DWORD Walk(const ObjectHandle& folder, HandedDown handedDown, std::optional<std::size_t> threads);

    // Called before each object. False ends the walk.
    virtual bool Begin(const std::string& /*hostName*/) { return !HasEnded(); }
    // An object that stays as it is. On any thread.
    virtual void PassOver(DWORD error, const std::string& path) = 0;
    // What a thread has done, at its end; one call at a time.
    virtual void Add(const TreeCounts& /*done*/) {}

    // From here on nothing is visited, recorded or written. The first code is the result.
    void End(DWORD error);
    bool HasEnded() const { return hasEnded.load(std::memory_order_relaxed); }
    // Begin for an observer, which ends the change with its "false". One call at a time.
    bool BeginTold(TreeObserver& observer, const std::string& hostName);

    const TreeListMode mode;
    const DescriptorStore store;  // each thread has a copy

  private:
    friend class TreeChangeThread;
    class Waiting;
    bool WantsReadableFiles() const override { return true; }

    void Settle(FolderState& folder, FolderState::Stage stage, HandedDown instead = {});
    // 0 or the code of the recorder, which then has ended the change. On any thread.
    DWORD Record(std::span<const DescriptorChange> records);
    // Waits until the folder is settled. False when the change has ended before.
    bool Await(const FolderState& folder);
    // Whether a thread waits for others to settle their batches.
    bool IsAnybodyWaiting() const { return waiting.load(std::memory_order_relaxed) > 0; }

    const RecordedTop recordedTop;
    const std::shared_ptr<LockFiles> folderTurns = std::make_shared<LockFiles>();
    std::size_t mostHeld = 0;           // objects held open in batches
    std::atomic<std::size_t> held = 0;  // are now
    std::atomic<int> waiting = 0;
    std::atomic<bool> hasEnded = false;

    std::mutex guard;  // of what follows, and of the stages of folders
    std::condition_variable settled;
    DWORD result = ERROR_SUCCESS;
};

// The work of one thread.
class TreeChangeThread : public VisitingThread {
  public:
    explicit TreeChangeThread(TreeChange& shared);
    ~TreeChangeThread() override;

  protected:
    // What is to become of an object.
    struct Plan {
        bool changes = false;
        bool losesOwn = false;  // as TreeCounts counts them
        bool isEmptied = false;
        StoredSecurity before;  // of an object that changes
        StoredSecurity after;
        bool entersFolder = true;
        std::shared_ptr<const nt::Acl> list;  // what a folder then has
    };

    // Whether the walk is about this kind of object at all. What is not is passed over with all below it.
    virtual bool Concerns(const ObjectHandle& /*object*/) { return true; }
    // 0 when the object may be changed, else an error code.
    virtual DWORD Allow(const VisitedObject& /*visited*/) { return ERROR_SUCCESS; }
    // Reads the object and decides. An error code leaves it as it is.
    virtual DWORD MakePlan(const ObjectHandle& object, const HandedDown& inherited, Plan& plan) = 0;
    // What is in a folder that could not be changed inherits this; nothing: it is left alone.
    virtual std::optional<HandedDown> KeptBy(const ObjectHandle& folder) = 0;
    // Whether what is in a folder depends on what becomes of the folder.
    virtual bool DependsOnFolders() const { return true; }

    DescriptorStore store;
    const TreeListMode mode;

  private:
    // A visited object.
    struct Entry {
        const ObjectHandle& Object() const { return visited != nullptr ? *visited : own; }

        const ObjectHandle* visited = nullptr;  // during its visit
        ObjectHandle own;                       // after it
        FolderRef place;
        std::string hostName;
        FolderState::Stage basis = FolderState::Stage::kPending;  // of its folder, when the plan was made
        DWORD error = ERROR_SUCCESS;
        Plan plan;
        std::shared_ptr<FolderState> state;  // of a folder that is entered
    };

    // Objects that are recorded together.
    struct Batch {
        explicit Batch(const std::shared_ptr<LockFiles>& folderTurns) : turns(folderTurns) {}

        std::vector<Entry> entries;
        std::size_t bytes = 0;                        // of descriptors
        std::chrono::steady_clock::time_point begin;  // of filling it, then of recording it
        WalkTurns turns;
        std::vector<DescriptorChange> records;
        std::future<DWORD> recording;
    };

    WalkDecision Visit(const VisitedObject& visited, std::unique_ptr<FolderNotes>& notes) override;
    void Rest() override;
    void Consider(const VisitedObject& visited, Entry& entry);
    DWORD TakeTurn(const ObjectHandle& object);
    bool IsTakenLate(const ObjectHandle& object);
    bool TakeLateTurn(Entry& entry, const HandedDown& inherited, WalkTurns& turns);
    void Put(const VisitedObject& visited, Entry entry);
    bool Keep(ObjectHandle& visited, Entry& entry);
    void SettleWhatIsDue();
    void SettleAll();
    void Advance();
    static std::vector<DescriptorChange> Lend(std::span<Entry> entries);
    static void GiveBack(std::vector<DescriptorChange> records, std::span<Entry> entries);
    void BeginRecording(Batch& batch);
    bool FinishRecording(Batch& batch);
    void Clear(Batch& batch);
    void Settle(Entry& entry, WalkTurns& turns);
    void Fail(const Entry& entry);
    bool PlanAgain(const HandedDown& inherited, Entry& entry);

    TreeChange& change;
    TreeCounts counts;
    const std::size_t batchSize;
    std::array<Batch, 2> batches;
    Batch* filling = &batches[0];
    Batch* recorded = &batches[1];  // or about to be
};

}  // namespace permora::host
