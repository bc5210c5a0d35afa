// The object or share on which an undo finds what a change has recorded.
#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "history/history.h"
#include "platform/held_object.h"
#include "platform/share_turn.h"

namespace permora {

// Whether a record is about a share's list.
bool IsShare(const DescriptorChange& change);

// A record, and its object as an undo has found it.
struct FoundRecord {
    RecordedObject record;
    // Of finding and reading it; nothing: not tried yet.
    std::optional<DWORD> error{};
    // Whether the object was found, and is what was recorded, whatever came of reading it.
    bool isFound = false;
    std::optional<HeldObject> object{};  // nothing for the top itself, and for a share
    StoredSecurity now{};                // what it has
};

// All calls answer with 0 or a system error code. Its own thread's alone, but for Write.
class UndoneTop {
  public:
    // Of this record.
    explicit UndoneTop(const RecordedObject& record);

    const ChangedTop& Recorded() const { return top; }
    bool IsOfShare() const { return isShare; }
    bool Holds(const RecordedObject& record) const;

    // Finds the top again. ERROR_FILE_INVALID: it is another object by now.
    DWORD Hold();
    // Waits for the turn on it.
    DWORD TakeTurn();

    // Finds an object again, below the held top, and reads it. ERROR_FILE_INVALID: it is another object by
    // now.
    void Find(FoundRecord& record, DamagedBytes damaged);
    // The same for all those that were not tried yet, of different objects, on so many threads. Those that
    // are lost are left as they are, and all that are left once the volume is lost. Nothing for a share.
    void FindAll(std::span<FoundRecord> records, DamagedBytes damaged, std::size_t threads);
    // Where the way to an object that was not found ends: the first folder on it that is none any more, of
    // which `error` then says why; `path` itself when all are. What is below such a folder is lost.
    std::string FindEnd(const std::string& path, DWORD& error);
    bool IsLost(const std::string& path) const;

    // What an object that was found, or the top, gets. On any thread, for different objects.
    DWORD Write(const std::optional<HeldObject>& found, const DescriptorChange& change,
                DamagedBytes damaged) const;

  private:
    // One thread's way below the top.
    class Way {
      public:
        // Holds the top for itself.
        DWORD Begin(const HeldObject& recorded) { return recorded.HoldBelow("", start); }
        DWORD HoldBelow(const std::string& path, HeldObject& below);

      private:
        HeldObject start;
        // That of the object which was found last: records of one folder mostly come together.
        HeldObject folder;
        std::optional<std::string> folderPath;
    };

    DWORD HoldRecorded(const RecordedObject& record, Way& way, std::optional<HeldObject>& found) const;
    void Find(FoundRecord& record, DamagedBytes damaged, Way& way) const;

    const ChangedTop top;
    const bool isShare;
    HeldObject object;
    std::vector<Way> ways;  // the first is that of its own thread
    ShareTurn shareTurn;
    std::set<std::string> lost;
};

}  // namespace permora
