// The history of changes: for each object that was changed, what was there before and what was written, in a
// database that belongs to the user.
//
// The layout of the database stands in history/schema.h. The database is never trusted: what is read from it
// is checked like any other file's contents.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/change_recorder.h"

namespace permora {

// What a change was about. The numbers are part of stored data.
enum class ChangeKind : std::uint8_t {
    kPermissions = 1,
    kOwner = 2,
    kReset = 3,
    kAssign = 4,  // the wizard's, and the terminal program's assign
    kShare = 5,   // the list of a share
    kUndo = 6,
    kRestore = 7,
    kReplace = 8,  // accounts by others
    kClone = 9,    // what one object has, given to others
    kPolicy = 10,  // what a policy file says
};

enum class ChangeState : std::uint8_t {
    kRunning,
    kDone,
    kInterrupted,  // its program ended in the middle
    kUndone,
    kPartlyUndone,
};

struct ChangeFacts {
    std::int64_t number = 0;  // grows from change to change
    std::int64_t began = 0;   // seconds since 1970, UTC
    std::string user;         // who made it, as the system writes the account's name
    ChangeKind kind = ChangeKind::kPermissions;
    ChangeState state = ChangeState::kDone;
    std::size_t tops = 0;       // what the user had named
    std::string firstTop;       // path or share name of the first
    std::uint64_t objects = 0;  // with a record
    std::int64_t undoes = 0;    // of kUndo: the number of the change that was taken back
};

// An object of a change, as it was recorded.
struct RecordedObject {
    ChangedTop top;
    DescriptorChange change;
    std::int64_t time = 0;  // when the record was made, or a little earlier: seconds since 1970, UTC
};

enum class RecordOrder { kAsMade, kReverse };

// A change that is being made. It gets its number and place in the history with its first record, so a change
// that writes nothing leaves no trace.
class Change : public ChangeRecorder {
  public:
    // The change is over: all that was to be written has been tried. Without this call it counts as
    // interrupted.
    virtual void End() = 0;
    // 0 as long as nothing was recorded.
    virtual std::int64_t Number() const = 0;
};

// One thread at a time, but for the changes that it begins. All calls answer with 0 or a system error code,
// and a failed one leaves its outputs untouched.
class History {
  public:
    // $XDG_STATE_HOME/permora/history.db; without that variable for root /var/lib/permora/history.db; on
    // Windows in the user's local application data (StateFolder).
    static std::string UsualPath();

    // Makes the database where there is none. What is there is never overwritten. ERROR_FILE_CORRUPT: it is
    // damaged or no history. ERROR_UNKNOWN_REVISION: a newer version of this program made it.
    // ERROR_CANT_RESOLVE_FILENAME: it or its folder is a link. ERROR_INVALID_OWNER: it or its folder belongs
    // to somebody else. ERROR_LOCK_VIOLATION: another program keeps it locked. ERROR_WRITE_PROTECT,
    // ERROR_DISK_FULL, ERROR_ACCESS_DENIED and others.
    static DWORD Open(const std::string& path, std::unique_ptr<History>& history);
    // To read alone: ERROR_FILE_NOT_FOUND where there is none.
    static DWORD OpenToRead(const std::string& path, std::unique_ptr<History>& history);

    virtual ~History() = default;

    // The newest first.
    virtual DWORD List(std::vector<ChangeFacts>& changes) = 0;
    // ERROR_NOT_FOUND: there is no such change (any more).
    virtual DWORD Find(std::int64_t number, ChangeFacts& facts) = 0;
    // The change that an undo without a number takes back: the newest that is neither undone nor itself an
    // undo. One that is still running, an undo too, is returned as such, although it cannot be taken back:
    // the one before it is not what the user means. ERROR_NOT_FOUND when there is none.
    virtual DWORD FindLast(ChangeFacts& facts) = 0;
    // Streams the objects of a change: memory does not grow with them. `visit` answers whether to go on.
    // ERROR_CANCELLED when it did not.
    virtual DWORD VisitObjects(std::int64_t number, RecordOrder order,
                               const std::function<bool(const RecordedObject&)>& visit) = 0;
    // The same as they were made, from the object `first` on, counted from 0.
    virtual DWORD VisitObjectsFrom(std::int64_t number, std::uint64_t first,
                                   const std::function<bool(const RecordedObject&)>& visit) = 0;

    // `undoes`: of ChangeKind::kUndo. The history must outlive the change.
    virtual std::unique_ptr<Change> Begin(ChangeKind kind, std::int64_t undoes = 0) = 0;
    // What an undo has come to.
    virtual DWORD MarkUndone(std::int64_t number, ChangeState state) = 0;

    // The changes that PruneOlder would remove, the oldest first.
    virtual DWORD FindOlder(std::int64_t time, std::vector<ChangeFacts>& changes) = 0;
    // Removes whole changes that ended before `time` (seconds since 1970). Running ones stay. `removed`
    // counts them.
    virtual DWORD PruneOlder(std::int64_t time, std::size_t& removed) = 0;
    // Removes the oldest changes until the database is below `bytes`. The newest stays, whatever its size: a
    // change can be undone at least until the next one.
    virtual DWORD PruneLarger(std::uint64_t bytes, std::size_t& removed) = 0;
};

}  // namespace permora
