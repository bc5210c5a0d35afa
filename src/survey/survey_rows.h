// The rows of a survey, kept for those who need them all: a million take some 60 bytes each.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "survey/survey.h"

namespace permora {

// In the order in which they were added, which is that of the walks. Names are kept once for each folder.
class SurveyRows {
  public:
    // The survey that made the row must outlive this.
    void Add(const SurveyRow& row);
    std::size_t Count() const { return rows.size(); }
    // `path` holds the row's path for as long as it is not changed.
    SurveyRow Row(std::size_t index, std::string& path) const;
    // Without the path.
    RemarkSet Remarks(std::size_t index) const { return rows[index].remarks; }

  private:
    static constexpr std::uint32_t kNoFolder = 0xFFFFFFFF;

    // One name of a path.
    struct Place {
        const char* name;
        std::uint32_t folder;  // the place of the folder that holds it
        std::uint16_t length;
    };
    struct KeptRow {
        const JudgedSecurity* security;
        std::uint32_t place;  // kNoFolder: the top
        std::uint32_t top;
        RemarkSet remarks;
        DWORD error;
        TreeObjectKind kind;
    };
    struct Level {
        std::uint32_t place;
        std::size_t pathLength;
    };

    const char* Keep(std::string_view name);
    std::uint32_t PlaceOf(std::string_view path);

    std::deque<KeptRow> rows;
    std::deque<Place> places;
    std::vector<std::unique_ptr<char[]>> blocks;
    std::size_t blockUsed = 0;
    // The place that was added last, with the folders above it.
    std::vector<Level> levels;
    std::string last;
    std::uint32_t lastTop = 0;
};

}  // namespace permora
