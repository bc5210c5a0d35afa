#include "history/undo.h"

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <thread>
#include <unordered_set>
#include <utility>
#include <vector>

#include "history/stored_writes.h"
#include "history/undone_top.h"
#include "platform/api/errors.h"
#include "platform/stored_security.h"
#include "platform/system_message.h"
#include "platform/thread_tuner.h"
#include "platform/volume_loss.h"
#include "shares/share_security.h"

namespace permora {
namespace {

// Of a dry run, whose memory does not grow with the change either.
constexpr std::size_t kMostUnclear = 65536;

// Objects that are found at once, and are all held open. The first are few, as the first that are written.
constexpr std::size_t kFirstNext = 16;
constexpr std::size_t kMostNext = 256;
constexpr std::size_t kMostNextBytes = std::size_t{1} << 20;
constexpr std::size_t kMostThreads = 16;

enum class Judgement : std::uint8_t { kRestore, kAsBefore, kChangedSince };

bool HasDescriptorOf(const StoredSecurity& now, const StoredSecurity& other) {
    return now.form == other.form && now.bytes == other.bytes;
}

Judgement Judge(const DescriptorChange& change, const StoredSecurity& now) {
    const StoredSecurity& before = change.before;
    const StoredSecurity& after = change.after;
    if (now == before) return Judgement::kAsBefore;
    if (IsShare(change)) {
        if (HaveSameList(now, after)) return Judgement::kRestore;
        return HaveSameList(now, before) ? Judgement::kAsBefore : Judgement::kChangedSince;
    }
    // The host's owner is written by itself, so a program that died in between leaves one of each.
    const bool isOfChange = (HasDescriptorOf(now, after) || HasDescriptorOf(now, before)) &&
                            (now.hostOwner == after.hostOwner || now.hostOwner == before.hostOwner);
    return isOfChange ? Judgement::kRestore : Judgement::kChangedSince;
}

bool IsDamaged(const StoredSecurity& stored) {
    std::optional<nt::SecurityDescriptor> descriptor;
    return DescriptorIn(stored, descriptor) == ERROR_INVALID_SECURITY_DESCR;
}

class Undo {
  public:
    Undo(History& from, const ChangeFacts& about, const UndoOptions& chosen, UndoObserver& watching,
         UndoCounts& result)
        : history(from), facts(about), options(chosen), observer(watching), counts(result) {}

    DWORD Run();

  private:
    using Visit = bool (Undo::*)(const RecordedObject& record);

    bool IsDryRun() const { return options.mode == UndoMode::kDryRun; }
    bool IsForced() const { return options.changedSince == ChangedSince::kOverwrite; }
    DamagedBytes Damaged() const { return IsForced() ? DamagedBytes::kTaken : DamagedBytes::kRefused; }
    DWORD VisitAll(Visit visit);
    // All of these answer whether to go on; `ending` says why not.
    bool Take(const RecordedObject& record);
    bool TakeNext();
    bool TakeFound(FoundRecord& found);
    bool TakeUnclear(const RecordedObject& record);
    bool Enter(const RecordedObject& record);
    bool Put(FoundRecord& found);
    bool Flush() { return !writes || GoOn(writes->Flush()); }
    bool GoOn(DWORD recordError);
    bool EndWith(DWORD error);

    bool HasRoomFor(const RecordedObject& record) const;
    void LetGoOfNext();
    // Whether the object was found and read; else it was left alone, or the undo ends.
    bool Find(FoundRecord& found);
    DWORD Refusal(const DescriptorChange& undone, const StoredSecurity& now, Judgement judgement) const;
    void LeaveUnfound(const std::string& path, DWORD error);
    void Leave(const std::string& path, LeftAlone extent, DWORD reason);
    void BeginWrites();

    History& history;
    const ChangeFacts& facts;
    const UndoOptions& options;
    UndoObserver& observer;
    UndoCounts& counts;

    std::unique_ptr<Change> change;  // the undo's own; null in a dry run
    std::optional<UndoneTop> top;
    DWORD topError = ERROR_SUCCESS;
    std::optional<StoredWrites> writes;  // below `top`; nothing in a dry run
    DWORD ending = ERROR_SUCCESS;

    // What is found at once: records of `top` in their order, of different objects, none of which is waiting
    // to be written.
    std::vector<FoundRecord> next;
    std::unordered_set<std::uint64_t> nextNumbers;
    std::size_t nextBytes = 0;
    std::size_t roomForNext = kFirstNext;
    std::size_t mostNext = kMostNext;
    std::uint64_t taken = 0;
    ThreadTuner tuner{kMostThreads, std::thread::hardware_concurrency(), ThreadTuner::Time::clock::now()};

    // Of a dry run. An object that was recorded twice has neither list of its first record as long as nothing
    // is written. So those that have neither are looked at again, as they would be by then.
    std::set<std::uint64_t> unclear;
    std::map<std::uint64_t, StoredSecurity> byThen;
};

bool Undo::EndWith(DWORD error) {
    ending = error;
    return false;
}

bool Undo::GoOn(DWORD recordError) {
    return recordError == ERROR_SUCCESS || EndWith(recordError);
}

void Undo::Leave(const std::string& path, LeftAlone extent, DWORD reason) {
    if (IsVolumeLost(ending)) return;  // so is all the rest
    ++counts.leftAlone;
    observer.Leave(top->Recorded(), path, extent, reason);
    if (IsVolumeLost(reason) && !top->IsOfShare()) ending = reason;
}

// A folder that is gone is reported once for all that was below it.
void Undo::LeaveUnfound(const std::string& path, DWORD error) {
    const std::string end = path.empty() ? path : top->FindEnd(path, error);
    Leave(end, end == path ? LeftAlone::kObject : LeftAlone::kAllBelow, error);
}

bool Undo::Enter(const RecordedObject& record) {
    if (!Flush()) return false;
    writes.reset();
    top.emplace(record);
    topError = top->Hold();
    if (topError == ERROR_SUCCESS && !IsDryRun()) topError = top->TakeTurn();
    if (topError == ERROR_SUCCESS && !IsDryRun()) BeginWrites();
    if (topError != ERROR_SUCCESS) observer.Leave(record.top, "", LeftAlone::kAllBelow, topError);
    return true;
}

void Undo::BeginWrites() {
    writes.emplace(
        *change, top->Recorded(),
        [this](const std::optional<HeldObject>& object, const DescriptorChange& undoing) {
            return top->Write(object, undoing, Damaged());
        },
        [this](const DescriptorChange& undoing, DWORD result) {
            if (result == ERROR_SUCCESS)
                ++counts.restored;
            else
                Leave(undoing.path, LeftAlone::kObject, result);
        });
}

bool Undo::HasRoomFor(const RecordedObject& record) const {
    const std::uint64_t number = record.change.fileNumber;
    return next.size() < roomForNext && nextBytes < kMostNextBytes && !nextNumbers.contains(number) &&
           !(writes && writes->Holds(number));
}

// So many cannot be held open: from here on it is one at a time.
void Undo::LetGoOfNext() {
    for (FoundRecord& found : next)
        found = FoundRecord{.record = std::move(found.record)};
    roomForNext = mostNext = 1;
}

bool Undo::Find(FoundRecord& found) {
    const std::string& path = found.record.change.path;
    if (topError != ERROR_SUCCESS || top->IsLost(path)) {
        ++counts.leftAlone;
        return false;
    }
    if (!found.error) top->Find(found, Damaged());
    if (found.error == ERROR_TOO_MANY_OPEN_FILES) {
        LetGoOfNext();
        if (!Flush()) return false;
        top->Find(found, Damaged());
    }
    if (found.error == ERROR_SUCCESS) return true;
    if (found.isFound)
        Leave(path, LeftAlone::kObject, *found.error);
    else
        LeaveUnfound(path, *found.error);
    return false;
}

// Damaged bytes come back to who asks for them by force, and take the place of nothing but what the change
// wrote; in others' place damaged ones are not overwritten. Writing refuses them by itself, so they are
// looked for only where it would not, or does not come about.
DWORD Undo::Refusal(const DescriptorChange& undone, const StoredSecurity& now, Judgement judgement) const {
    if (IsShare(undone)) return ERROR_SUCCESS;
    if (!IsForced()) {
        const bool isRefused = IsDryRun() && judgement == Judgement::kRestore && IsDamaged(undone.before);
        return isRefused ? DWORD{ERROR_INVALID_SECURITY_DESCR} : DWORD{ERROR_SUCCESS};
    }
    if (judgement == Judgement::kRestore) return ERROR_SUCCESS;
    if (IsDamaged(now)) return ERROR_INVALID_SECURITY_DESCR;
    return IsDamaged(undone.before) ? DWORD{ERROR_REVISION_MISMATCH} : DWORD{ERROR_SUCCESS};
}

bool Undo::Take(const RecordedObject& record) {
    if (IsVolumeLost(ending)) return false;
    const bool isOfNextTop = !top || !top->Holds(record);
    if ((isOfNextTop || !HasRoomFor(record)) && !TakeNext()) return false;
    if (isOfNextTop && !Enter(record)) return false;
    // What a later record of the same object says comes first.
    if (writes && writes->Holds(record.change.fileNumber) && !Flush()) return false;
    nextNumbers.insert(record.change.fileNumber);
    nextBytes += record.change.before.bytes.size() + record.change.after.bytes.size();
    next.push_back({.record = record});
    return true;
}

bool Undo::TakeNext() {
    if (topError == ERROR_SUCCESS && top) top->FindAll(next, Damaged(), tuner.Threads());
    for (FoundRecord& found : next)
        if (!TakeFound(found)) return false;
    taken += next.size();
    tuner.Update(taken, ThreadTuner::Time::clock::now());
    next.clear();
    nextNumbers.clear();
    nextBytes = 0;
    roomForNext = std::min(2 * roomForNext, mostNext);
    return true;
}

bool Undo::TakeFound(FoundRecord& found) {
    if (IsVolumeLost(ending)) return false;
    const DescriptorChange& undone = found.record.change;
    if (!observer.Begin(found.record.top, undone.path)) return EndWith(ERROR_OPERATION_ABORTED);
    if (!Find(found)) return ending == ERROR_SUCCESS;
    const Judgement judgement = Judge(undone, found.now);
    if (judgement == Judgement::kAsBefore)
        ++counts.asBefore;
    else if (const DWORD refusal = Refusal(undone, found.now, judgement); refusal != ERROR_SUCCESS)
        Leave(undone.path, LeftAlone::kObject, refusal);
    else if (judgement == Judgement::kRestore || IsForced())
        return Put(found);
    else if (IsDryRun() && unclear.size() < kMostUnclear)
        unclear.insert(undone.fileNumber);
    else
        Leave(undone.path, LeftAlone::kObject, ERROR_REVISION_MISMATCH);
    return true;
}

// The second time. The records of an unclear object that fit it as it is have been counted.
bool Undo::TakeUnclear(const RecordedObject& record) {
    const DescriptorChange& undone = record.change;
    if (!unclear.contains(undone.fileNumber)) return true;
    if (!observer.Begin(record.top, undone.path)) return EndWith(ERROR_OPERATION_ABORTED);
    if ((!top || !top->Holds(record)) && !Enter(record)) return false;
    FoundRecord found{.record = record};
    if (topError != ERROR_SUCCESS || top->IsLost(undone.path)) return true;
    top->Find(found, Damaged());
    if (found.error != ERROR_SUCCESS) return true;
    const StoredSecurity& now = found.now;
    const auto known = byThen.find(undone.fileNumber);
    const Judgement judgement = Judge(undone, known != byThen.end() ? known->second : now);
    if (Judge(undone, now) == Judgement::kChangedSince) {
        if (judgement == Judgement::kRestore) ++counts.restored;
        if (judgement == Judgement::kAsBefore) ++counts.asBefore;
        if (judgement == Judgement::kChangedSince)
            Leave(undone.path, LeftAlone::kObject, ERROR_REVISION_MISMATCH);
    }
    if (judgement == Judgement::kRestore) byThen[undone.fileNumber] = undone.before;
    return true;
}

// From what the object has to what it had.
bool Undo::Put(FoundRecord& found) {
    const DescriptorChange& undone = found.record.change;
    if (!IsDryRun())
        return GoOn(writes->Add(std::move(found.object), {undone.path, undone.isFolder, undone.fileNumber,
                                                          std::move(found.now), undone.before}));
    ++counts.restored;
    return true;
}

DWORD Undo::VisitAll(Visit visit) {
    const DWORD error =
        history.VisitObjects(facts.number, RecordOrder::kReverse,
                             [this, visit](const RecordedObject& record) { return (this->*visit)(record); });
    return ending != ERROR_SUCCESS ? ending : error;
}

DWORD Undo::Run() {
    if (!IsDryRun()) change = history.Begin(ChangeKind::kUndo, facts.number);
    DWORD error = VisitAll(&Undo::Take);
    if (error == ERROR_SUCCESS && TakeNext()) Flush();
    if (writes) GoOn(writes->Finish());
    if (error == ERROR_SUCCESS) error = ending;
    if (error == ERROR_SUCCESS && !unclear.empty()) {
        top.reset();
        error = VisitAll(&Undo::TakeUnclear);
    }
    if (change) {
        change->End();
        counts.change = change->Number();
    }
    return error;
}

// --- What the history says of the changes afterwards.

// Whether another undo of the change `number` than `undo` has not been taken back.
DWORD FindOtherUndo(History& history, std::int64_t number, std::int64_t undo, bool& isThere) {
    std::vector<ChangeFacts> changes;
    const DWORD error = history.List(changes);
    if (error != ERROR_SUCCESS) return error;
    isThere = std::ranges::any_of(changes, [=](const ChangeFacts& other) {
        return other.kind == ChangeKind::kUndo && other.undoes == number && other.number != undo &&
               other.state != ChangeState::kUndone;
    });
    return ERROR_SUCCESS;
}

// What the change that `undo` has taken back is, once `undo` is in `state`.
DWORD FindStateOfUndone(History& history, const ChangeFacts& undo, ChangeState state,
                        ChangeState& undoneState) {
    undoneState = ChangeState::kPartlyUndone;
    if (state == ChangeState::kUndone) {
        bool isOtherThere = false;
        const DWORD error = FindOtherUndo(history, undo.undoes, undo.number, isOtherThere);
        if (error == ERROR_SUCCESS && !isOtherThere) undoneState = ChangeState::kDone;
        return error;
    }
    ChangeFacts undone;
    const DWORD error = history.Find(undo.undoes, undone);
    if (error == ERROR_SUCCESS && state == ChangeState::kDone && undo.objects >= undone.objects)
        undoneState = ChangeState::kUndone;
    return error;
}

DWORD Mark(History& history, ChangeFacts facts, ChangeState state) {
    for (;;) {
        if (const DWORD error = history.MarkUndone(facts.number, state); error != ERROR_SUCCESS) return error;
        // A change is older than its undo, whatever the file says.
        if (facts.kind != ChangeKind::kUndo || facts.undoes <= 0 || facts.undoes >= facts.number)
            return ERROR_SUCCESS;
        ChangeState undoneState = state;
        DWORD error = FindStateOfUndone(history, facts, state, undoneState);
        if (error == ERROR_SUCCESS) error = history.Find(facts.undoes, facts);
        if (error == ERROR_NOT_FOUND) return ERROR_SUCCESS;  // it was old enough to be removed
        if (error != ERROR_SUCCESS) return error;
        state = undoneState;
    }
}

}  // namespace

DWORD UndoChange(History& history, std::int64_t number, const UndoOptions& options, UndoObserver& observer,
                 UndoCounts& counts) {
    ChangeFacts facts;
    if (const DWORD error = history.Find(number, facts); error != ERROR_SUCCESS) return error;
    if (facts.state == ChangeState::kRunning) return ERROR_BUSY;
    UndoCounts own;
    const DWORD error = Undo(history, facts, options, observer, own).Run();
    counts.restored += own.restored;
    counts.asBefore += own.asBefore;
    counts.leftAlone += own.leftAlone;
    counts.change = own.change;
    // Where nothing is as it was before, the change is as undone as it was.
    if (options.mode == UndoMode::kDryRun || own.restored + own.asBefore == 0) return error;
    const bool isWhole = error == ERROR_SUCCESS && own.leftAlone == 0;
    const DWORD markError = Mark(history, facts, isWhole ? ChangeState::kUndone : ChangeState::kPartlyUndone);
    return error != ERROR_SUCCESS ? error : markError;
}

std::string LeftAloneText(DWORD reason) {
    switch (reason) {
        case ERROR_REVISION_MISMATCH:
            return "it was changed since";
        case ERROR_FILE_INVALID:
            return "another object is there now";
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
            return "it is gone, or has another name";
        case ERROR_CANT_RESOLVE_FILENAME:
            return "a link leads there now";
        case ERROR_NOT_SAME_DEVICE:
            return "something else is mounted there now";
        case ERROR_INVALID_SECURITY_DESCR:
            return "a damaged descriptor was there before, or is there now";
        case ERROR_BUSY:
            return "another program of yours is still changing it";
        default:
            return SystemMessageLine(reason);
    }
}

}  // namespace permora
