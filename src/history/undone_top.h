// The object or share on which an undo finds what a change has recorded.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include "history/history.h"
#include "platform/held_object.h"
#include "platform/share_turn.h"

namespace permora {

// Whether a record is about a share's list.
bool IsShare(const DescriptorChange& change);

// All calls answer with 0 or a system error code.
class UndoneTop {
  public:
    // Of this record.
    explicit UndoneTop(const RecordedObject& record);

    const ChangedTop& Recorded() const { return top; }
    bool Holds(const RecordedObject& record) const;

    // Finds the top again. ERROR_FILE_INVALID: it is another object by now.
    DWORD Hold();
    // Waits for the turn on it.
    DWORD TakeTurn();

    // Finds an object again below the held top. `found` stays empty for the top itself, and for a share.
    // ERROR_FILE_INVALID: it is another object by now.
    DWORD Find(const RecordedObject& record, std::optional<HeldObject>& found);
    // Where the way to an object that was not found ends: the first folder on it that is none any more, of
    // which `error` then says why; `path` itself when all are. What is below such a folder is lost.
    std::string FindEnd(const std::string& path, DWORD& error);
    bool IsLost(const std::string& path) const;

    // What an object that was found, or the top, has and gets.
    DWORD Read(const std::optional<HeldObject>& found, StoredSecurity& now, DamagedBytes damaged) const;
    DWORD Write(const std::optional<HeldObject>& found, const DescriptorChange& change,
                DamagedBytes damaged) const;

  private:
    DWORD HoldBelow(const std::string& path, HeldObject& below);

    const ChangedTop top;
    const bool isShare;
    HeldObject object;
    HeldObject folder;  // that of the object which was found last: records of one folder mostly come together
    std::optional<std::string> folderPath;
    ShareTurn shareTurn;
    std::set<std::string> lost;
};

}  // namespace permora
