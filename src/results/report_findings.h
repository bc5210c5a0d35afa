// What a report in a window has come to: its worker adds, its pages read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/nt/sid.h"
#include "results/departure_texts.h"
#include "results/folder_shape.h"
#include "survey/survey_rows.h"

namespace permora {

enum class RowText : std::uint8_t {
    kKind,
    kOwner,       // empty: it could not be read, as with the next two
    kOwnEntries,  // of an object
    kDeparture,   // of a folder of the shape
    kRemarks,
};

// Where a row's object is.
struct RowPlace {
    std::string path;     // below its top
    std::size_t top = 0;  // of all that were asked for
    TreeObjectKind kind = TreeObjectKind::kFile;
};

// Any thread.
class ReportFindings {
  public:
    // The rows are lent, and read and written here alone until the last row is there.
    explicit ReportFindings(SurveyRows& surveyRows) : rows(surveyRows) {}

    // The worker's: the rows that follow are below this top, of all that were asked for.
    void BeginTop(std::size_t top);
    // The worker's. `nameOf` waits where it must; it is asked for each account once.
    void Add(const SurveyRow& row, FolderShape::Listing listing, const NameOfSid& nameOf);

    std::size_t ListedCount() const;
    std::size_t FolderCount() const;
    // A folder of the shape, and what has come below it so far.
    ShapedFolder Folder(std::size_t index, FiguresBelow& below) const;
    // The place among all rows of one that is listed.
    std::size_t Listed(std::size_t index) const;
    std::string Text(std::size_t place, RowText text) const;
    RowPlace Place(std::size_t place) const;

  private:
    void LearnNames(const DistinctSecurity& own, const NameOfSid& nameOf);
    std::string KnownName(const nt::Sid& sid) const;

    mutable std::mutex lock;
    SurveyRows& rows;
    std::vector<std::size_t> walkedTops;  // by SurveyRow::top, since some are not found
    std::deque<std::uint32_t> listed;
    FolderShape shape;
    // By SidKey. Those that the owners and own entries of rows name.
    std::unordered_map<std::string, std::string> names;
    std::vector<bool> areNamesKnown;  // by DistinctSecurity::number; the worker's alone
};

}  // namespace permora
