// The rows of a survey, kept for those who need them all: a million take some 60 bytes each.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

#include "survey/survey.h"
#include "survey/tree_paths.h"

namespace permora {

// In the order in which they were added, which is that of the walks.
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
    struct KeptRow {
        const JudgedSecurity* security;
        std::uint32_t place;
        std::uint32_t top;
        RemarkSet remarks;
        DWORD error;
        TreeObjectKind kind;
    };

    std::deque<KeptRow> rows;
    TreePaths paths;
};

}  // namespace permora
