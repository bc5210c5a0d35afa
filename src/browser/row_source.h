// Where the rows of the browser's list come from: drives, a folder, or shares. A source knows no window.
//
// What asks a volume may never return, and is therefore called on threads that nobody waits for
// (PatientWork): Open and List before the source is shown to others, and the constant ones by several threads
// at a time. Those that only tell what the source is called or offers ask nothing.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/place.h"
#include "security/outcome.h"

namespace permora {

// The picture is the shell's for this very object, and none of RowSource::Images.
inline constexpr int kShellImage = -1;

// One row, by its columns. The name is what commands find the object by.
struct Row {
    std::string name;
    std::string type = {};
    std::string size = {};
    std::string modified = {};
    std::vector<std::string> more = {};  // by RowSource::MoreHeaders
    int image = 0;                       // in RowSource::Images, or kShellImage
    std::string shellIcon = {};          // with kShellImage: its kind (ShellIconKindOf)
    std::intptr_t position = 0;          // among all that the source has found, shown or not
};

enum class RowDetail {
    kName,  // the other columns stay empty where they take time to find out
    kAll,
};
enum class RowIcons {
    kOwn,
    kShell,
};
// Names that begin with a dot.
enum class DotNames {
    kLeftOut,
    kListed,
};
struct RowOptions {
    RowDetail detail = RowDetail::kName;
    RowIcons icons = RowIcons::kOwn;
    DotNames dots = DotNames::kLeftOut;
};

// Receives the rows in the order in which they are shown.
class RowReceiver {
  public:
    virtual ~RowReceiver() = default;
    virtual bool Add(Row row) = 0;          // false: no more rows, since nobody wants them or has room
    virtual void ShowCount(int count) = 0;  // how many objects were found so far
    // After each entry that was read, whether it becomes a row or not. False: nobody waits for the rows.
    virtual bool GoOn() { return true; }
};

class RowSource {
  public:
    virtual ~RowSource() = default;

    // The kind of the rows, and so of a selection of them (Place::kind).
    virtual PlaceKind Kind() const = 0;
    // As the address bar has it.
    virtual std::string Location() const = 0;
    // The full path of the folder shown, which the history remembers; empty: none.
    virtual std::string Folder() const { return {}; }
    // The volume that its calls ask (VolumeOfPath); empty: none that could hang.
    virtual std::string Volume() const { return {}; }
    // The volume that calls about this row ask.
    virtual std::string VolumeOf(const std::string& /*name*/) const { return Volume(); }
    // Of the columns behind those that all sources have. The texts live for the whole process.
    virtual std::span<const char* const> MoreHeaders() const { return {}; }
    virtual const char* TypeHeader() const { return "Type"; }
    // The pictures of the rows, as icon resources.
    virtual std::span<const unsigned int> Images() const = 0;
    // Whether the context menu offers a command that not all kinds of rows have.
    virtual bool Offers(unsigned int command) const = 0;

    // A source of the same location as it is now, not opened yet.
    virtual std::unique_ptr<RowSource> Anew() const = 0;
    // Finds the location. To be called once, before all that follows.
    virtual Outcome Open() { return {}; }
    // On failure, `receiver` has the rows before it.
    virtual Outcome List(const RowOptions& options, RowReceiver& receiver) = 0;

    // The tip of a row; empty: none.
    virtual std::string Tip(const std::string& /*name*/) const { return {}; }
    // The full path of a row's object.
    virtual Outcome FindPath(const std::string& name, std::string& path) const = 0;
    // The source for a row that is entered.
    virtual std::unique_ptr<RowSource> Enter(const std::string& name) const = 0;
    // Selected rows as a place to work on. On failure, `place` is untouched.
    virtual Outcome Hold(std::vector<std::string> names, Place& place) const;

    // For calls of the system that take bare names: makes the folder shown the current directory, whatever
    // its name is by now. Sources without a folder need none.
    virtual DWORD MakeCurrent() const { return ERROR_SUCCESS; }
    // The same for work by full paths: fails when the path of the folder shown leads elsewhere by now.
    virtual DWORD Verify() const { return ERROR_SUCCESS; }
};

}  // namespace permora
