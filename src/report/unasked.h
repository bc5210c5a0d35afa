// What a report does not know since nobody could be asked for it.
#pragma once

#include <string>
#include <vector>

#include "report/report.h"

namespace permora {

// A line for each thing that is missing, without a stop; none: the report is whole. Accounts that nobody here
// knows are answered for, as there is no more to say about them. It is otherwise where who knows did not
// answer, or did not answer this user.
std::vector<std::string> UnaskedLines(const Report& report);

}  // namespace permora
