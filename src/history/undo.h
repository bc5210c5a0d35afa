// Taking a change back.
//
// Each object is found again below its held top, never through a link, and gets byte for byte what was
// recorded of it, the last one first. An object that was changed since, moved, or replaced by another is left
// alone. An undo is a change of its own: what it replaces is recorded before it is replaced, so it can be
// taken back too, and one that was cut off can be run again.
#pragma once

#include <cstdint>
#include <string>

#include "history/history.h"

namespace permora {

enum class UndoMode : std::uint8_t {
    kWrite,
    kDryRun,  // everything is read and nothing written; counts what kWrite would do
};

// What becomes of an object that no longer has what the change wrote.
enum class ChangedSince : std::uint8_t {
    kLeaveAlone,
    kOverwrite,  // still never of another object that has the name by now. Damaged bytes that the change has
                 // replaced come back too, where what it wrote is still there
};

struct UndoOptions {
    UndoMode mode = UndoMode::kWrite;
    ChangedSince changedSince = ChangedSince::kLeaveAlone;
};

// Records, not objects: one that was recorded twice counts twice.
struct UndoCounts {
    std::uint64_t restored = 0;
    std::uint64_t asBefore = 0;   // they had already what they had before the change
    std::uint64_t leftAlone = 0;  // each was reported, or what is above it
    std::int64_t change = 0;      // the number of the undo itself in the history; 0: nothing was recorded
};

enum class LeftAlone : std::uint8_t {
    kObject,
    kAllBelow,  // a folder, or a top, with everything of the change below it
};

// Texts live for the call. All calls come on the thread that undoes.
class UndoObserver {
  public:
    virtual ~UndoObserver() = default;

    // The object `path` below `top`, as DescriptorChange has it, comes next. False ends the undo; what was
    // not written so far stays as it is.
    virtual bool Begin(const ChangedTop& top, const std::string& path) = 0;
    // Stays as it is. `reason` is a system error code, for people: LeftAloneText.
    virtual void Leave(const ChangedTop& top, const std::string& path, LeftAlone extent, DWORD reason) = 0;
};

// Takes back the change `number`, which may be an undo itself, and marks it in the history: undone, or partly
// undone when something was left alone or the observer ended it. When an undo is taken back, the change that
// it was about counts as done again.
//
// 0 when everything recorded was tried, with any number of objects left alone. ERROR_OPERATION_ABORTED when
// the observer ended it, ERROR_NOT_FOUND without such a change, ERROR_BUSY while its program is still making
// it; any other code is the history's, which could not be read, or could not record what was to be replaced.
// What was done is added to `counts`, whatever the result. Memory does not grow with the change.
[[nodiscard]] DWORD UndoChange(History& history, std::int64_t number, const UndoOptions& options,
                               UndoObserver& observer, UndoCounts& counts);

// Why an object was left alone, in half a sentence: "it was changed since".
std::string LeftAloneText(DWORD reason);

}  // namespace permora
