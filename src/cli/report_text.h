// A report as a person reads it in a terminal.
#pragma once

#include "report/report.h"

namespace permora {

// Prints the summary, then the chosen objects.
void PrintReport(const Report& report);

}  // namespace permora
