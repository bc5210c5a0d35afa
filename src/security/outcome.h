// What became of a piece of work. The model returns it and says nothing; a window or the terminal speaks.
#pragma once

#include <string>
#include <vector>

#include "platform/api/errors.h"

namespace permora {

// What was being done. StepText has the words for each.
enum class Step {
    kNone,  // the system's text for the code says it all
};

struct [[nodiscard]] Outcome {
    DWORD code = ERROR_SUCCESS;  // a system error code
    Step step = Step::kNone;
    std::string object = {};  // the path of what it concerns, for people; empty: what the caller named

    bool IsDone() const { return code == ERROR_SUCCESS; }
};

// Of work on several objects: what failed, in the order in which it happened. Empty: all was done.
using Outcomes = std::vector<Outcome>;

}  // namespace permora
