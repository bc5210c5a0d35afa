// Where a program keeps what nobody else may read or change, and which process is at work there: services of
// our own beside the system's.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/api/errors.h"

namespace permora {

// Paths here are the host's own, in UTF-8.

// The folder for what programs remember of their work: $XDG_STATE_HOME/permora or .local/state/permora in the
// home of the user; for root /var/lib/permora without that variable, of which PrepareProcess leaves root no
// place that is not root's alone; on Windows "Permora" in the user's local application data. Empty when there
// is none.
std::string StateFolder();

enum class MissingFolder { kMake, kLeave };

// A folder that belongs to this process's user, in which nobody else decides what there is. It is held: what
// becomes of its name, or of those above it, leads nobody astray.
class PrivateFolder {
  public:
    // ERROR_CANT_RESOLVE_FILENAME: it is a link. ERROR_INVALID_OWNER: it belongs to somebody else, or others
    // may write in it. ERROR_PATH_NOT_FOUND. Who holds it already shares it.
    static DWORD Hold(const std::string& path, MissingFolder missing,
                      std::shared_ptr<const PrivateFolder>& folder);
    ~PrivateFolder();

    // A path to the entry with this bare name, for this process and as long as the folder is held: on Linux
    // through the open folder, on Windows by the names, which stay as long as something below is open.
    std::string PathOf(std::string_view name) const;

  private:
    PrivateFolder();
    struct Inside;
    std::unique_ptr<Inside> inside;
};

// Whether a file in such a folder is this process's user's alone, as the folder is. ERROR_FILE_NOT_FOUND.
DWORD CheckPrivateFile(const std::string& path);
// Makes an empty file there that this process's user alone may read and write; one that is there stays.
DWORD MakePrivateFile(const std::string& path);

// Whether others than root decide what a file of this path (of files.h) says, or what is found by it. Only
// root is told, whose work they must not steer; false for other users, and on Windows.
bool MayOthersSteerBy(const std::string& path);

// Whether this process may write to a file; nothing is changed. ERROR_WRITE_PROTECT: its volume takes no
// writing.
DWORD CheckWritable(const std::string& path);

// The code for a number by which the system has told a library of a failure (errno; on Windows the code
// itself).
DWORD ErrorOfHost(int number);

// A process, as opposed to a later one that got its number.
struct ProcessMark {
    std::int64_t number = 0;
    std::int64_t start =
        0;  // its time, in the system's own unit, and where that counts from the machine's start, this too

    bool operator==(const ProcessMark&) const = default;
};
ProcessMark ThisProcess();
bool IsRunning(const ProcessMark& process);

}  // namespace permora
