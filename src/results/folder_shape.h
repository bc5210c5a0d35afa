// The shape of the permissions of trees: a row for each folder whose list departs from what the folder above
// it hands down, with what is below. Pure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "survey/remark.h"
#include "survey/survey.h"

namespace permora {

// The remarks that say that an object has not just what its folder hands down.
inline constexpr RemarkSet kDepartures = {Remark::kOwnEntries, Remark::kProtected, Remark::kOtherOwner,
                                          Remark::kStale, Remark::kNullList};

struct ShapedFolder {
    std::size_t row;        // its place among the rows
    std::size_t level;      // how many of the folders above it are shown
    std::size_t nameBegin;  // in its path: what comes before is the path of the one shown above it
};

// Objects below a folder, shown or not.
struct FiguresBelow {
    std::size_t departing = 0;  // from what their folders hand down
    std::size_t remarked = 0;   // with another remark

    friend bool operator==(const FiguresBelow&, const FiguresBelow&) = default;
};

class FolderShape {
  public:
    enum class Listing : std::uint8_t {
        kListed,   // shown when it is a folder that departs or could not be read
        kCounted,  // only counted, as it is deeper than the user wants to see
        kLeftOut,  // not counted, as the user did not ask for it
    };
    // Rows come in the order of the walks, and `place` is theirs. Tops are shown in any case.
    void Add(const SurveyRow& row, std::size_t place, Listing listing);

    std::size_t Count() const { return folders.size(); }
    // In the order of the walks.
    const ShapedFolder& Folder(std::size_t index) const { return folders[index].shown; }
    // What has come so far.
    FiguresBelow Below(std::size_t index) const;

  private:
    // All that is below a folder comes between two moments, so the sums at these are enough.
    struct KeptFolder {
        ShapedFolder shown;
        FiguresBelow begin;
        FiguresBelow end;
        bool isOver = false;
    };
    // A shown folder that what comes next may be below.
    struct Level {
        std::size_t folder;
        std::size_t pathLength;
    };

    void CloseAllBut(std::string_view path);
    void Show(const SurveyRow& row, std::size_t place);

    std::deque<KeptFolder> folders;
    std::vector<Level> levels;
    std::string last;  // path
    FiguresBelow now;
};

}  // namespace permora
