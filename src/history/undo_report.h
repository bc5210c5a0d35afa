// What an undo came to, for people.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "history/undo.h"

namespace permora {

// The question before a change is taken back: what it was, when and by whom, and how many objects it is
// about.
std::string UndoQuestionText(const ChangeFacts& change);
// The question at the next start after a change that was cut off. `others`: how many more there are.
std::string InterruptedText(const ChangeFacts& change, std::size_t others);

struct UndoReport {
    static constexpr std::size_t kMostNamed = 5;

    DWORD error = ERROR_SUCCESS;  // of UndoChange
    UndoCounts counts;
    std::vector<std::string> left;  // the first ones that were left alone, each with the reason
    std::size_t leftCount = 0;      // all that were reported, a folder with all below it as one

    void AddLeft(const ChangedTop& top, const std::string& path, LeftAlone extent, DWORD reason);

    // Whether everything has what it had before the change.
    bool IsComplete() const { return error == ERROR_SUCCESS && counts.leftAlone == 0; }
    // What came of it, in sentences.
    std::string Text() const;
};

}  // namespace permora
