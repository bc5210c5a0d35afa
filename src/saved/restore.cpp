#include "saved/restore.h"

#include <algorithm>
#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <utility>

#include "history/stored_writes.h"
#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/security_change.h"
#include "platform/tree_reading.h"
#include "platform/volume_loss.h"
#include "saved/name_case.h"
#include "saved/saved_folders.h"
#include "saved/tree_saving.h"

namespace permora {
namespace {

// An object that another program keeps changing is given up after so many attempts.
constexpr int kMostAttempts = 3;

// Of folders that were reported missing or failed, so that nothing below them is looked for.
constexpr std::size_t kMostLostFolders = 1024;

// What was saved whole also has the rest of the control word.
void TakeSaved(nt::SecurityDescriptor& descriptor, const nt::SecurityDescriptor& saved,
               SECURITY_INFORMATION parts) {
    if ((parts & kDescriptorParts) == kDescriptorParts)
        descriptor = saved;
    else
        TakeParts(descriptor, saved, parts);
}

bool IsOfKind(const HeldObject& object, SavedKind kind) {
    switch (kind) {
        case SavedKind::kFile:
            return object.Kind() == FolderEntryKind::kFile;
        case SavedKind::kFolder:
            return object.Kind() == FolderEntryKind::kFolder;
        case SavedKind::kLink:
        case SavedKind::kOther:
            return object.Kind() == FolderEntryKind::kOther;
        case SavedKind::kUnknown:
            // A link has a list of its own where it was saved; where it was not, nobody knows.
            return object.Kind() != FolderEntryKind::kOther;
        case SavedKind::kMounted:
        case SavedKind::kUnread:
        case SavedKind::kUnlisted:
            return true;
    }
    return false;
}

bool IsMissing(DWORD error) {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND || error == ERROR_INVALID_NAME;
}

// What was saved below one top.
class TopRestore {
  public:
    struct Work {
        const CheckedList& list;
        const RestoreOptions& options;
        SECURITY_INFORMATION parts;
        bool looksForExtra;
        RestoreHost& host;
        ChangeRecorder& recorder;
        RestoreCounts& counts;
    };
    // `topNumber` is that of the saved top, from 0.
    TopRestore(const Work& toDo, std::size_t topNumber)
        : work(toDo), parts(toDo.parts), number(topNumber), folders(WhenComplete()) {}

    // Where the objects are now. Without this they are all missing.
    void Enter(RestoredTop found);
    // The next object. A result but 0, of this and of End, ends the whole restore.
    DWORD Put(const SavedObject& saved);
    DWORD End();
    // What is being written comes to its end, and nothing more is begun.
    void BreakOff() {
        if (writes) (void)writes->Finish();
    }

  private:
    struct Attempt {
        SavedObject saved;
        int number = 1;
    };

    SavedFolders::Complete WhenComplete();
    DWORD Try(Attempt attempt);
    DWORD TryOutOfDate();
    DWORD FindInAnyCase(const std::string& path, std::string& present, bool& areAlike);
    DWORD Hold(const std::string& path, std::optional<HeldObject>& object) const;
    bool IsThere(const SavedObject& saved, const std::optional<HeldObject>& object, DWORD error);
    bool Prepare(const SavedObject& saved, const HeldObject& object, DescriptorChange& change);
    void LookForExtra(const SavedFolders::Folder& folder);
    bool MakeWanted(const SavedObject& saved, nt::SecurityDescriptor& wanted);
    void Settle(const DescriptorChange& change, DWORD error);
    bool Fail(const std::string& path, RestoreFault fault, DWORD error = ERROR_SUCCESS);
    void Lose(const std::string& path);
    bool IsLost(const std::string& path) const;
    bool IsDryRun() const { return work.options.mode == RestoreMode::kDryRun; }

    Work work;
    SECURITY_INFORMATION parts;  // those of `work` that can be read
    const std::size_t number;
    SavedFolders folders;
    std::optional<RestoredTop> top;
    std::optional<NamesInAnyCase> names;  // of `top`, where the volume ignores the case of letters
    std::deque<Attempt> batched;          // what is in `writes`, in its order
    std::deque<Attempt> outOfDate;        // what another program has changed in the middle
    std::set<std::string> lost;           // what is missing, or another kind of object now
    std::optional<StoredWrites> writes;
    DWORD lossOfVolume = ERROR_SUCCESS;  // why nothing more can be put back
};

bool TopRestore::Fail(const std::string& path, RestoreFault fault, DWORD error) {
    ++work.counts.failed;
    if (fault == RestoreFault::kError && IsVolumeLost(error)) lossOfVolume = error;
    work.host.Fail(path, fault, error);
    return false;
}

void TopRestore::Lose(const std::string& path) {
    if (lost.size() == kMostLostFolders) lost.clear();
    lost.insert(path);
}

bool TopRestore::IsLost(const std::string& path) const {
    if (lost.empty()) return false;
    for (std::size_t end = path.find('\\'); end != path.npos; end = path.find('\\', end + 1))
        if (lost.contains(path.substr(0, end))) return true;
    return false;
}

SavedFolders::Complete TopRestore::WhenComplete() {
    return [this](const SavedFolders::Folder& folder) {
        const bool isThere =
            top && top->object.IsFolder() && !lost.contains(folder.path) && !IsLost(folder.path);
        if (isThere && folder.isKnown) LookForExtra(folder);
    };
}

void TopRestore::LookForExtra(const SavedFolders::Folder& folder) {
    std::string present = folder.path;
    SavedFolders::Names capitals;
    if (names) {
        NamesInAnyCase::Answer answer{};
        if (!folder.path.empty() && (names->Find(folder.path, present, answer) != ERROR_SUCCESS ||
                                     answer != NamesInAnyCase::Answer::kOne))
            present = folder.path;
        for (const std::string& name : folder.contents)
            capitals.insert(InCapitals(name));
    }
    const auto isSaved = [&](const std::string& name) {
        return names ? capitals.contains(InCapitals(name)) : folder.contents.contains(name);
    };
    const DWORD error = FindExtra(top->folder, present, isSaved, [this](const std::string& path) {
        ++work.counts.extra;
        work.host.FindExtra(path);
    });
    if (error != ERROR_SUCCESS) work.host.FailExtra(present, error);
}

void TopRestore::Enter(RestoredTop found) {
    ChangedTop changed;
    DWORD error = IsDryRun() ? ERROR_SUCCESS : found.object.TakeTurn();
    if (error == ERROR_SUCCESS && !IsDryRun()) error = found.object.FindTop(changed);
    if (error != ERROR_SUCCESS) {
        work.host.Fail("", RestoreFault::kError, error);
        return;
    }
    found.object.ExpectManyBelow();
    top = std::move(found);
    if (SystemListFor(parts) == SystemList::kIncluded) parts &= ReadableParts(top->object);
    if (parts != work.parts) work.host.LeaveSystemLists();
    TreeObject read;
    TreeFolder folder;
    if (top->object.IsFolder())
        (void)TreeFolder::ReadTop(top->object, DACL_SECURITY_INFORMATION, read, folder);
    if (folder && folder.IgnoresCase() && work.list.IsInOrder()) names.emplace(top->folder);
    writes.emplace(
        work.recorder, std::move(changed),
        [this](const std::optional<HeldObject>& object, const DescriptorChange& change) {
            return (object ? *object : top->object).WriteStored(change.before, change.after);
        },
        [this](const DescriptorChange& change, DWORD result) { Settle(change, result); });
}

// The path that something has now which is not found by its saved one, or may be by that of another.
// `areAlike`: nobody knows which object it is. An error code when it is not there, or cannot be looked for.
DWORD TopRestore::FindInAnyCase(const std::string& path, std::string& present, bool& areAlike) {
    NamesInAnyCase::Answer answer{};
    if (const DWORD error = names->Find(path, present, answer); error != ERROR_SUCCESS) return error;
    if (answer == NamesInAnyCase::Answer::kNone) return ERROR_FILE_NOT_FOUND;
    const auto nameIn = [](const std::string& whole) { return whole.substr(whole.rfind('\\') + 1); };
    areAlike = answer == NamesInAnyCase::Answer::kSeveral ||
               (work.list.HasAlikeName(number, path) && nameIn(present) != nameIn(path));
    return ERROR_SUCCESS;
}

// The top itself stays in `top`.
DWORD TopRestore::Hold(const std::string& path, std::optional<HeldObject>& object) const {
    return path.empty() ? ERROR_SUCCESS : top->object.HoldBelow(path, object.emplace());
}

// Whether the object was found, by the result of Hold, and is of the saved kind; else that was reported.
bool TopRestore::IsThere(const SavedObject& saved, const std::optional<HeldObject>& object, DWORD error) {
    const bool isFound = error == ERROR_SUCCESS;
    if (isFound && IsOfKind(object ? *object : top->object, saved.kind)) return true;
    Lose(saved.path);
    if (!IsMissing(error))
        return Fail(saved.path, isFound ? RestoreFault::kOtherKind : RestoreFault::kError, error);
    ++work.counts.missing;
    work.host.Miss(saved.path);
    return false;
}

// Gives `wanted`, which is the present descriptor, what was saved.
bool TopRestore::MakeWanted(const SavedObject& saved, nt::SecurityDescriptor& wanted) {
    nt::AccountExchange* exchange = work.options.exchange;
    if (exchange == nullptr || exchange->IsEmpty()) {
        TakeSaved(wanted, saved.descriptor->value, parts);
        return true;
    }
    nt::SecurityDescriptor exchanged = saved.descriptor->value;
    if (exchange->Apply(exchanged) == nt::ExchangeResult::kHidden)
        return Fail(saved.path, RestoreFault::kHiddenAccount);
    TakeSaved(wanted, exchanged, parts);
    return true;
}

// Whether the object is to be changed; else it has been counted.
bool TopRestore::Prepare(const SavedObject& saved, const HeldObject& object, DescriptorChange& change) {
    nt::SecurityDescriptor present;
    const bool isHidden = parts != work.parts && !saved.descriptor->value.saclBytes.empty();
    DWORD error = isHidden ? DWORD{ERROR_PRIVILEGE_NOT_HELD} : ReadDescriptor(object, parts, present);
    if (error != ERROR_SUCCESS) return Fail(saved.path, RestoreFault::kError, error);
    nt::SecurityDescriptor wanted = present;
    if (!MakeWanted(saved, wanted)) return false;
    // Its undo takes a privilege on other servers, so what is kept has it only where it changes.
    const SystemList systemList =
        HasSameSystemList(wanted, present) ? SystemList::kLeftOut : SystemList::kIncluded;
    error = object.ReadStored(change.before, DamagedBytes::kRefused, systemList);
    if (error != ERROR_SUCCESS) return Fail(saved.path, RestoreFault::kError, error);
    error = object.PrepareStored(change.before, wanted, change.after);
    // Where nothing can be kept, nothing may be as it was, too.
    const bool isSo = wanted == present &&
                      (error == ERROR_NOT_SUPPORTED || change.before.hostOwner == change.after.hostOwner);
    if (isSo) {
        ++work.counts.unchanged;
        return false;
    }
    if (error != ERROR_SUCCESS) return Fail(saved.path, RestoreFault::kError, error);
    change.path = saved.path;
    change.isFolder = object.IsFolder();
    change.fileNumber = object.FileNumber();
    return true;
}

DWORD TopRestore::Try(Attempt attempt) {
    const SavedObject& saved = attempt.saved;
    if (!top || IsLost(saved.path)) {
        ++work.counts.missing;
        return ERROR_SUCCESS;
    }
    std::optional<HeldObject> object;
    DWORD found = Hold(saved.path, object);
    if (found == ERROR_TOO_MANY_OPEN_FILES) {
        if (const DWORD error = writes->Flush(); error != ERROR_SUCCESS) return error;
        found = Hold(saved.path, object);
    }
    SavedObject present = saved;  // by the name that it has now
    if (names && !saved.path.empty() && (IsMissing(found) || work.list.HasAlikeName(number, saved.path))) {
        bool areAlike = false;
        found = FindInAnyCase(saved.path, present.path, areAlike);
        if (areAlike) {
            Lose(saved.path);
            Fail(saved.path, RestoreFault::kAlikeNames);
            return ERROR_SUCCESS;
        }
        if (found == ERROR_SUCCESS) found = Hold(present.path, object);
    }
    if (!IsThere(saved, object, found)) return ERROR_SUCCESS;
    const HeldObject& held = object ? *object : top->object;
    if (writes->Holds(held.FileNumber())) {
        if (const DWORD error = writes->Flush(); error != ERROR_SUCCESS) return error;
    }
    DescriptorChange change;
    if (!Prepare(present, held, change)) return ERROR_SUCCESS;
    if (IsDryRun()) {
        ++work.counts.changed;
        work.host.Change(present.path);
        return ERROR_SUCCESS;
    }
    batched.push_back(std::move(attempt));
    return writes->Add(std::move(object), std::move(change));
}

// An object has been written, or could not be.
void TopRestore::Settle(const DescriptorChange& change, DWORD error) {
    Attempt attempt = std::move(batched.front());
    batched.pop_front();
    if (lossOfVolume != ERROR_SUCCESS && error != ERROR_SUCCESS) return;
    if (error == ERROR_REVISION_MISMATCH && attempt.number < kMostAttempts) {
        ++attempt.number;
        outOfDate.push_back(std::move(attempt));
    } else if (error != ERROR_SUCCESS) {
        Fail(change.path, RestoreFault::kError, error);
    } else {
        ++work.counts.changed;
        work.host.Change(change.path);
    }
}

DWORD TopRestore::TryOutOfDate() {
    DWORD error = ERROR_SUCCESS;
    while (error == ERROR_SUCCESS && !outOfDate.empty()) {
        Attempt attempt = std::move(outOfDate.front());
        outOfDate.pop_front();
        error = Try(std::move(attempt));
    }
    return error;
}

DWORD TopRestore::Put(const SavedObject& saved) {
    if (!work.host.Begin(saved.path)) return ERROR_OPERATION_ABORTED;
    if (work.looksForExtra) folders.Pass(saved);
    switch (saved.kind) {
        case SavedKind::kMounted:
            return ERROR_SUCCESS;
        case SavedKind::kUnread:
            Fail(saved.path, RestoreFault::kNotSaved, saved.error);
            return ERROR_SUCCESS;
        case SavedKind::kUnlisted:
            Fail(saved.path, RestoreFault::kNotListed, saved.error);
            return ERROR_SUCCESS;
        default:
            break;
    }
    const DWORD error = Try({saved});
    if (lossOfVolume != ERROR_SUCCESS) return lossOfVolume;
    return error == ERROR_SUCCESS ? TryOutOfDate() : error;
}

DWORD TopRestore::End() {
    DWORD error = ERROR_SUCCESS;
    do {
        if (writes) error = writes->Flush();
        if (error == ERROR_SUCCESS) error = TryOutOfDate();
    } while (error == ERROR_SUCCESS && lossOfVolume == ERROR_SUCCESS && !batched.empty());
    if (error == ERROR_SUCCESS) error = lossOfVolume;
    if (error == ERROR_SUCCESS && work.looksForExtra) folders.End();
    return error;
}

// 0, or ERROR_INVALID_DATA when the text is not read to its end: `fault` says why.
DWORD Conclude(const CheckedList& list, SavedFault& fault) {
    if (list.HasChanged()) fault = {0, "it was changed after it had been checked"};
    return fault.reason.empty() ? ERROR_SUCCESS : ERROR_INVALID_DATA;
}

}  // namespace

DWORD RestoreLists(CheckedList& list, const RestoreOptions& options, RestoreHost& host,
                   ChangeRecorder& recorder, RestoreCounts& counts, SavedFault& fault) {
    fault = {};
    const std::unique_ptr<SavedListReader> reader = list.Read(fault);
    if (!reader) return Conclude(list, fault);
    const TopRestore::Work work = {list,     options, list.Head().parts, list.IsInOrder(), host,
                                   recorder, counts};
    std::unique_ptr<TopRestore> top;
    std::size_t topCount = 0;
    DWORD error = ERROR_SUCCESS;
    SavedObject object;
    while (error == ERROR_SUCCESS && reader->Next(object, fault)) {
        if (topCount < reader->TopCount()) {
            topCount = reader->TopCount();
            if (top) error = top->End();
            if (error != ERROR_SUCCESS) break;
            top = std::make_unique<TopRestore>(work, topCount - 1);
            RestoredTop found;
            if (host.FindTop(reader->Top(), found)) top->Enter(std::move(found));
        }
        error = top->Put(object);
    }
    if (error == ERROR_SUCCESS) error = Conclude(list, fault);
    if (error == ERROR_SUCCESS && top) return top->End();
    if (top) top->BreakOff();
    return error;
}

}  // namespace permora
