// report --compare: who has gained and who has lost access between two saved reports.
#pragma once

#include <optional>

#include "cli/difference_output.h"
#include "cli/messages.h"
#include "cli/target.h"

namespace permora {

// Reads and compares the reports in two files and prints what differs. Whether nothing does and all could be
// compared; nothing when they cannot be compared at all: the reason was printed.
std::optional<bool> CompareReports(const Target& older, const Target& newer, DifferenceForm form,
                                   ConsoleMessages& messages);

}  // namespace permora
