#include "platform/linux/security/tree_change.h"

#include <sys/resource.h>

#include <algorithm>
#include <utility>

#include "platform/api/errors.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/linux/files/unmounted_entry.h"

namespace permora::host {
namespace {

using Stage = FolderState::Stage;

// Who wants a turn on one of the objects waits for no longer than two batches take. The time is that of the
// visits, so that slow volumes have small batches; writing one takes about as long once more.
constexpr std::chrono::milliseconds kLongestBatch(40);
constexpr std::size_t kLargestBatch = std::size_t{1} << 20;  // bytes of descriptors

FolderState& StateOf(const FolderRef& folder) {
    return *static_cast<const ChangedFolder&>(*folder->Notes()).state;
}

// The rest is for the folders of the walk, and for others.
std::size_t DescriptorsForBatches() {
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    return limit.rlim_cur / 4;
}

}  // namespace

std::shared_ptr<const nt::Acl> ShareList(nt::Acl& list, const std::shared_ptr<const nt::Acl>& above) {
    return above && *above == list ? above : std::make_shared<const nt::Acl>(std::move(list));
}

// While it is there, the other threads settle their batches at their next visit.
class TreeChange::Waiting {
  public:
    explicit Waiting(TreeChange& shared) : change(shared) { ++change.waiting; }
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;
    ~Waiting() { --change.waiting; }

  private:
    TreeChange& change;
};

DWORD TreeChange::Walk(const ObjectHandle& folder, HandedDown handedDown,
                       std::optional<std::size_t> threads) {
    RaiseDescriptorLimit();
    mostHeld = DescriptorsForBatches();
    WalkTree(folder,
             std::make_unique<ChangedFolder>(
                 std::make_shared<FolderState>(Stage::kAsAnnounced, std::move(handedDown), ObjectTurn())),
             *this, threads);
    return result;
}

void TreeChange::End(DWORD error) {
    {
        const std::lock_guard lock(guard);
        if (!hasEnded) result = error;
        hasEnded = true;
    }
    settled.notify_all();
}

bool TreeChange::BeginTold(TreeObserver& observer, const std::string& hostName) {
    // One that has been told to stop is not asked again.
    if (HasEnded()) return false;
    if (observer.Begin(EncodeName(hostName).c_str())) return true;
    End(ERROR_OPERATION_ABORTED);
    return false;
}

void TreeChange::Settle(FolderState& folder, Stage stage, HandedDown instead) {
    {
        const std::lock_guard lock(guard);
        folder.instead = std::move(instead);
        folder.stage.store(stage, std::memory_order_release);
    }
    if (IsAnybodyWaiting()) settled.notify_all();
}

DWORD TreeChange::Record(std::span<const DescriptorChange> records) {
    const DWORD error = records.empty() ? ERROR_SUCCESS : recordedTop.Record(records);
    if (error != ERROR_SUCCESS) End(error);
    return error;
}

bool TreeChange::Await(const FolderState& folder) {
    if (folder.Now() != Stage::kPending) return true;
    const Waiting counted(*this);
    std::unique_lock lock(guard);
    settled.wait(lock, [&] { return folder.Now() != Stage::kPending || hasEnded; });
    return !hasEnded;
}

TreeChangeThread::TreeChangeThread(TreeChange& shared)
    : store(shared.store),
      mode(shared.mode),
      change(shared),
      batchSize(shared.recordedTop.BatchSize()),
      batches{Batch(shared.folderTurns), Batch(shared.folderTurns)} {}

TreeChangeThread::~TreeChangeThread() {
    change.Add(counts);
}

WalkDecision TreeChangeThread::Visit(const VisitedObject& visited, std::unique_ptr<FolderNotes>& notes) {
    SettleWhatIsDue();
    if (!change.Begin(visited.hostName)) return WalkDecision::kStop;
    const Stage stage = StateOf(visited.place).Now();
    if (stage == Stage::kLeftAlone || !Concerns(visited.object)) return WalkDecision::kPassOver;
    Entry entry;
    entry.visited = &visited.object;
    entry.basis = stage;
    Consider(visited, entry);
    const std::shared_ptr<FolderState> state = entry.state;
    const bool isWritten = entry.error == ERROR_SUCCESS && entry.plan.changes && mode == TreeListMode::kWrite;
    if (isWritten || stage == Stage::kPending) {
        Put(visited, std::move(entry));
    } else {
        entry.place = visited.place;
        entry.hostName = visited.hostName;
        Settle(entry, filling->turns);
    }
    if (!state || state->Now() == Stage::kLeftAlone) {
        filling->turns.Leave();
        return WalkDecision::kPassOver;
    }
    notes = std::make_unique<ChangedFolder>(state);
    return WalkDecision::kDescend;
}

void TreeChangeThread::Rest() {
    SettleAll();
    filling->turns.LeaveAll();
}

// Makes the plan, and the state of a folder that is to be entered.
void TreeChangeThread::Consider(const VisitedObject& visited, Entry& entry) {
    entry.error = Allow(visited);
    if (entry.error == ERROR_SUCCESS && mode == TreeListMode::kWrite && !IsTakenLate(visited.object))
        entry.error = TakeTurn(visited.object);
    const HandedDown& inherited = StateOf(visited.place).HandsDown(entry.basis);
    if (entry.error == ERROR_SUCCESS) entry.error = MakePlan(visited.object, inherited, entry.plan);
    // The holder of the turn on a folder is at work on what is in it too.
    if (!visited.object.IsFolder() || !entry.plan.entersFolder || entry.error == ERROR_BUSY) return;
    const Stage first = DependsOnFolders() ? Stage::kPending : Stage::kAsAnnounced;
    entry.state = std::make_shared<FolderState>(
        first, HandedDown{.error = ERROR_SUCCESS, .list = entry.plan.list}, filling->turns.Keep());
}

DWORD TreeChangeThread::TakeTurn(const ObjectHandle& object) {
    if (filling->entries.empty() && filling->turns.AreMany()) filling->turns.LeaveAll();
    if (filling->turns.TryTake(object)) return ERROR_SUCCESS;
    // Others may wait for what is in the batches, and it may be one of the walk's own threads that has the
    // turn, or the batch that is being recorded.
    SettleAll();
    const TreeChange::Waiting counted(change);
    return filling->turns.Take(object);
}

bool TreeChangeThread::IsTakenLate(const ObjectHandle& object) {
    return batchSize > 0 && !object.IsFolder() && store.HasHostOwners(object);
}

// False when the change has ended.
bool TreeChangeThread::TakeLateTurn(Entry& entry, const HandedDown& inherited, WalkTurns& turns) {
    if (turns.AreMany()) turns.LeaveAll();
    const ObjectHandle& object = entry.Object();
    if (!turns.TryTake(object)) entry.error = turns.Take(object);
    if (entry.error != ERROR_SUCCESS || store.Has(object, entry.plan.before)) return true;
    return PlanAgain(inherited, entry);
}

void TreeChangeThread::Put(const VisitedObject& visited, Entry entry) {
    Batch& batch = *filling;
    if (batch.entries.empty()) batch.begin = std::chrono::steady_clock::now();
    entry.place = visited.place;
    entry.hostName = visited.hostName;
    batch.bytes += entry.plan.before.bytes.size() + entry.plan.after.bytes.size();
    batch.entries.push_back(std::move(entry));
    if (batchSize == 0 || !Keep(visited.object, batch.entries.back())) return SettleAll();
    if (batch.entries.size() >= batchSize || batch.bytes >= kLargestBatch) Advance();
}

// Keeps the object beyond its visit. The walk needs the handle of a folder itself.
bool TreeChangeThread::Keep(ObjectHandle& visited, Entry& entry) {
    if (change.held >= change.mostHeld) return false;
    if (!visited.IsFolder())
        entry.own = std::move(visited);
    else if (visited.Duplicate(entry.own) != ERROR_SUCCESS)
        return false;
    entry.visited = nullptr;
    ++change.held;
    return true;
}

void TreeChangeThread::SettleWhatIsDue() {
    const auto isOld = [](const Batch& batch) {
        return !batch.entries.empty() && std::chrono::steady_clock::now() - batch.begin > kLongestBatch;
    };
    const bool isEmpty = filling->entries.empty() && recorded->entries.empty();
    if (isEmpty) return;
    if (change.IsAnybodyWaiting())
        SettleAll();
    else if (isOld(*filling) || isOld(*recorded))
        Advance();
}

// First what is being recorded, then what is being filled.
void TreeChangeThread::SettleAll() {
    Advance();
    Advance();
}

// One step further: what is being recorded is written, and what was filled meanwhile is being recorded.
void TreeChangeThread::Advance() {
    const bool isToBeWritten = FinishRecording(*recorded);
    BeginRecording(*filling);
    std::swap(filling, recorded);
    if (isToBeWritten)
        for (Entry& entry : filling->entries)
            Settle(entry, filling->turns);
    Clear(*filling);
}

// The records of what is to be written, with the descriptors of the entries until they are given back.
std::vector<DescriptorChange> TreeChangeThread::Lend(std::span<Entry> entries) {
    std::vector<DescriptorChange> records;
    for (Entry& entry : entries)
        if (entry.error == ERROR_SUCCESS && entry.plan.changes)
            records.push_back({.path = entry.place->PathOf(entry.hostName),
                               .isFolder = entry.Object().IsFolder(),
                               .fileNumber = entry.Object().Status().st_ino,
                               .before = std::move(entry.plan.before),
                               .after = std::move(entry.plan.after)});
    return records;
}

void TreeChangeThread::GiveBack(std::vector<DescriptorChange> records, std::span<Entry> entries) {
    auto entry = entries.begin();
    for (DescriptorChange& record : records) {
        while (entry->error != ERROR_SUCCESS || !entry->plan.changes)
            ++entry;
        entry->plan.before = std::move(record.before);
        entry->plan.after = std::move(record.after);
        ++entry;
    }
}

void TreeChangeThread::BeginRecording(Batch& batch) {
    if (batchSize == 0 || change.HasEnded()) return;
    batch.begin = std::chrono::steady_clock::now();
    batch.records = Lend(batch.entries);
    if (batch.records.empty()) return;
    batch.recording = std::async([this, &batch] { return change.Record(batch.records); });
}

// Waits until the batch is durable. False when it must not be written.
bool TreeChangeThread::FinishRecording(Batch& batch) {
    if (batch.recording.valid()) batch.recording.get();
    GiveBack(std::exchange(batch.records, {}), batch.entries);
    return !change.HasEnded();
}

void TreeChangeThread::Clear(Batch& batch) {
    change.held -= static_cast<std::size_t>(
        std::ranges::count_if(batch.entries, [](const Entry& entry) { return entry.visited == nullptr; }));
    batch.entries.clear();
    batch.bytes = 0;
    if (batchSize > 0 || batch.turns.AreMany()) batch.turns.LeaveAll();
}

// Writes an object that has been recorded, or passes it over, as soon as it is certain what its folder has.
void TreeChangeThread::Settle(Entry& entry, WalkTurns& turns) {
    const FolderState& folder = StateOf(entry.place);
    const bool isTakenLate = IsTakenLate(entry.Object());
    // Who waits for another thread must have no turn that this may wait for.
    if (isTakenLate && folder.Now() == Stage::kPending) turns.LeaveAll();
    if (!change.Await(folder) || change.HasEnded()) return;
    if (folder.Now() == Stage::kLeftAlone) {
        if (entry.state) change.Settle(*entry.state, Stage::kLeftAlone);
        return;
    }
    const bool isJudgedAgain = entry.basis == Stage::kPending && folder.Now() == Stage::kOtherwise;
    if (isJudgedAgain && !PlanAgain(folder.HandsDown(Stage::kOtherwise), entry)) return;
    const auto isToBeWritten = [&] {
        return entry.error == ERROR_SUCCESS && entry.plan.changes && mode == TreeListMode::kWrite;
    };
    if (isTakenLate && isToBeWritten() && !TakeLateTurn(entry, folder.HandsDown(folder.Now()), turns)) return;
    if (isToBeWritten()) entry.error = store.Replace(entry.Object(), entry.plan.before, entry.plan.after);
    if (entry.error != ERROR_SUCCESS) return Fail(entry);
    ++(entry.plan.changes ? counts.changed : counts.unchanged);
    if (entry.plan.losesOwn) ++counts.losingOwn;
    if (entry.plan.isEmptied) ++counts.emptied;
    if (!entry.state) return;
    if (isJudgedAgain)
        change.Settle(*entry.state, Stage::kOtherwise, {.error = ERROR_SUCCESS, .list = entry.plan.list});
    else
        change.Settle(*entry.state, Stage::kAsAnnounced);
}

void TreeChangeThread::Fail(const Entry& entry) {
    change.PassOver(entry.error, entry.place->PathOf(entry.hostName));
    if (!entry.state || change.HasEnded()) return;
    std::optional<HandedDown> kept = KeptBy(entry.Object());
    if (kept)
        change.Settle(*entry.state, Stage::kOtherwise, std::move(*kept));
    else
        change.Settle(*entry.state, Stage::kLeftAlone);
}

// For an object whose folder has not got the list that was announced. False when the change has ended.
bool TreeChangeThread::PlanAgain(const HandedDown& inherited, Entry& entry) {
    if (entry.error != ERROR_SUCCESS) return true;
    entry.plan = {};
    entry.error = MakePlan(entry.Object(), inherited, entry.plan);
    if (batchSize == 0) return true;
    std::vector<DescriptorChange> records = Lend({&entry, 1});
    const DWORD error = change.Record(records);
    GiveBack(std::move(records), {&entry, 1});
    return error == ERROR_SUCCESS;
}

}  // namespace permora::host
