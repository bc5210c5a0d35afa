// What differs between a tree as it was (saved, or another tree) and a tree as it is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "saved/tree_source.h"

namespace permora {

enum class DifferenceKind : std::uint8_t {
    kAdded,      // it is there and was not
    kMissing,    // it was there and is not
    kOtherKind,  // a folder that was a file, for example
    kSecurity,   // its descriptor is another one
    kUnread,     // it cannot be read now
    kUnlisted,   // the names in it cannot be read now, or not to their end
    kUnknown,    // it could not be read, or its names could not, when it was saved
};

// Lives for the call that it is handed to.
struct TreeDifference {
    DifferenceKind kind;
    std::string_view path;  // below the top, with backslashes; as it is called now where it is there
    SavedKind was = SavedKind::kUnknown;  // kUnknown: nothing was there, or nobody knows
    SavedKind is = SavedKind::kUnknown;
    std::span<const std::uint8_t> before = {};  // descriptors, empty where there is none
    std::span<const std::uint8_t> after = {};
    DWORD error = ERROR_SUCCESS;  // of kUnread, kUnlisted and kUnknown
};

class ComparisonObserver {
  public:
    virtual ~ComparisonObserver() = default;
    // Before each object; false ends the work.
    virtual bool Begin(std::string_view path) = 0;
    virtual void Differ(const TreeDifference& difference) = 0;
};

// The objects of the tree as it was come in the order of saved lists; names are compared as the volume of the
// tree as it is compares them. Folders may be left out: of those, only what came is compared. Descriptors are
// alike when their bytes are. Memory holds the names of one folder on each level.
class TreeComparison {
  public:
    // Compares what was, whose descriptors have `partsThen`, with the tree at `now`, whose descriptors are
    // read with `partsNow`: the same ones, or all but the system access lists, which then are not compared.
    // What had one counts as kUnread (ERROR_PRIVILEGE_NOT_HELD). All must outlive this.
    TreeComparison(SECURITY_INFORMATION partsThen, const HeldObject& now, SECURITY_INFORMATION partsNow,
                   ComparisonObserver& listener)
        : savedParts(partsThen), top(now), readParts(partsNow), observer(listener) {}

    // To be called first where the objects begin below the top, not with it: then what stands beside them is
    // not told as added. 0 or a system error code.
    DWORD BeginBelowTop();
    // The next object as it was. False when the observer has ended the work.
    bool Take(const ReadObject& was);
    // There are no more: tells what was added.
    bool End();

  private:
    static constexpr std::size_t kNowhere = ~std::size_t{0};

    // A folder that both trees have.
    struct Level {
        const FolderNames& Names() const;

        std::string path;  // as it was called in what was saved
        std::string pathNow;
        AheadFolder folder;
        std::vector<bool> areMatched;
        std::size_t next = 0;  // after the name that was found last
        // Names in capitals with their places, made when a name is not found as it stands.
        std::vector<std::pair<std::string, std::size_t>> capitals;
        bool isUnknown = false;   // not all that was in it is known: what is there now may have been
        bool isUnlisted = false;  // not all that is in it is known
    };

    bool TakeTop(const ReadObject& was);
    void EnterUnsaved(std::string_view folder);
    bool TakeFound(const ReadObject& was, const std::string& pathNow, const TreeObject& now, DWORD error,
                   AheadFolder below);
    void Compare(const ReadObject& was, const ReadObject& is);
    void CompareReadParts(TreeDifference difference);
    // Unless it is none.
    void Tell(const TreeDifference& difference);
    void Enter(const ReadObject& was, const std::string& pathNow, AheadFolder below);
    // The place of a name that was not found before, or kNowhere.
    static std::size_t Find(Level& level, std::string_view name);
    static std::size_t FindInOtherCase(Level& level, std::string_view name);
    // Tells once that names of a folder cannot be read any more.
    void NoteLoss(Level& level);
    bool Leave();
    bool TellAdded(Level& level, std::size_t index);

    const SECURITY_INFORMATION savedParts;
    const HeldObject& top;
    const SECURITY_INFORMATION readParts;
    ComparisonObserver& observer;
    std::vector<Level> levels;
    std::string lastTaken;  // the path of the object that came before, as it was called
};

}  // namespace permora
