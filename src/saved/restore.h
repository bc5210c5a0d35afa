// Putting the lists of a saved text back on a tree.
//
// Each object is found again below its held top, never through a link, and gets its descriptor as it was
// saved, with nothing inherited anew. What is replaced is recorded before.
#pragma once

#include <cstdint>
#include <string>

#include "platform/change_recorder.h"
#include "platform/folder_files.h"
#include "platform/held_object.h"
#include "platform/nt/account_exchange.h"
#include "saved/checked_list.h"
#include "saved/saved_list.h"

namespace permora {

enum class RestoreMode : std::uint8_t {
    kWrite,
    kDryRun,  // everything is read and nothing written: counts what kWrite would do
};

struct RestoreCounts {
    std::uint64_t changed = 0;
    std::uint64_t unchanged = 0;  // they had already what was saved
    std::uint64_t failed = 0;     // each was reported, or what is above it
    std::uint64_t missing = 0;    // saved, and not there; likewise
    std::uint64_t extra = 0;      // there, and not saved, without what is below them
};

// Why an object is as it was.
enum class RestoreFault : std::uint8_t {
    kError,          // a system error code says why
    kOtherKind,      // another kind of object has the name
    kNotSaved,       // it could not be read when the others were saved: the code says why
    kNotListed,      // the folder has its list, but what is in it could not be saved: likewise
    kHiddenAccount,  // nt::ExchangeResult::kHidden
    kAlikeNames,     // it may be any of several whose names differ in the case of letters alone
};

// Where the objects of a saved top are now.
struct RestoredTop {
    HeldObject object;
    FolderHandle folder;  // the same object, when it is a folder
};

// Texts live for the call. What was found is called by the name that it has now; on a volume that ignores the
// case of letters that is not always the one that was saved. All paths are below the top that comes last,
// with backslashes between the names; empty: the top itself.
class RestoreHost {
  public:
    virtual ~RestoreHost() = default;

    // The objects of this top come next. False: it is not there, which was reported; they all count as
    // missing.
    virtual bool FindTop(const SavedTop& saved, RestoredTop& top) = 0;
    // The system access lists of this top and what is below it cannot be read, and the text has them. Objects
    // that were saved with one fail; the others are put back, and keep those that they may have.
    virtual void LeaveSystemLists() = 0;
    // This object comes next. False ends the work; what was not written so far stays as it is.
    virtual bool Begin(const std::string& path) = 0;

    // It has what was saved, or would have.
    virtual void Change(const std::string& path) = 0;
    virtual void Fail(const std::string& path, RestoreFault fault, DWORD error) = 0;
    // What is below a missing or failed folder, and cannot be reached, is not reported one by one.
    virtual void Miss(const std::string& path) = 0;
    virtual void FindExtra(const std::string& path) = 0;
    // What is in this folder and was not saved is not known.
    virtual void FailExtra(const std::string& path, DWORD error) = 0;
};

struct RestoreOptions {
    RestoreMode mode = RestoreMode::kWrite;
    nt::AccountExchange* exchange = nullptr;  // borrowed
};

// 0 when every object was tried, with any number of failures. ERROR_OPERATION_ABORTED when the host ended it;
// ERROR_INVALID_DATA when the text is no longer what was checked (`fault` says more). Any other code is the
// recorder's, which could not keep what was to be replaced. What was done is added to `counts`, whatever the
// result. Memory does not grow with the number of objects, but for the names in the folders on the way to
// one.
[[nodiscard]] DWORD RestoreLists(CheckedList& list, const RestoreOptions& options, RestoreHost& host,
                                 ChangeRecorder& recorder, RestoreCounts& counts, SavedFault& fault);

}  // namespace permora
